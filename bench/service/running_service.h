#ifndef ORVEL_BENCH_SERVICE_RUNNING_SERVICE_H
#define ORVEL_BENCH_SERVICE_RUNNING_SERVICE_H

#include <filesystem>
#include <memory>

#include "bench/service/sample_batch.h"
#include "orvel/relay/rpc_client.h"
#include "support/service_process.h"
#include "support/temporary_folder.h"

namespace Orvel::Bench {

/// A folder of its own in the build folder, which is on a disk wherever the system's folder for
/// temporary files may be; removed with all that is in it.
class DiskFolder {
  public:
    DiskFolder();
    DiskFolder(const DiskFolder&) = delete;
    DiskFolder& operator=(const DiskFolder&) = delete;
    ~DiskFolder();

    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

/// The analytics service as it is shipped, in a process of its own, with its data on a disk.
class RunningService {
  public:
    /// Returns when it listens. Clients of this process then find it.
    /// @throws std::runtime_error when it does not.
    RunningService();

    /// Ends it, so that all it has written is in the database.
    /// @throws std::runtime_error when it does not end well.
    void stop();

    std::filesystem::path database() const { return data_.path() / "analytics.db"; }

  private:
    DiskFolder data_;
    Support::TemporaryFolder endpoint_;
    std::unique_ptr<Support::Process> process_;
};

/// One application's connection to it.
class ServiceClient {
  public:
    /// Connects, and registers the data class.
    /// @throws std::runtime_error when the service does not answer as it must.
    explicit ServiceClient(const SampleCommands& commands);

    /// Sends the batch. @return whether it was acknowledged.
    bool sendBatch();

  private:
    bool says(const WideString& command, const WideString& reply);

    const SampleCommands& commands_;
    std::shared_ptr<Relay::Client::Core::RpcClient> client_;
    WideString reply_;
};

}  // namespace Orvel::Bench

#endif
