#ifndef ORVEL_BENCH_SERVICE_PROCESS_H
#define ORVEL_BENCH_SERVICE_PROCESS_H

#include <sys/types.h>

#include <filesystem>
#include <functional>

namespace Orvel::Bench {

/// A process of its own that serves at a socket in a folder of its own. It is killed, and the
/// folder removed, at the end of this object's life, or with this process.
class ServiceProcess {
  public:
    /// Serves for ever; says that it is listening as soon as it is.
    using Service = std::function<void(const std::filesystem::path& socket,
                                       const std::function<void()>& isListening)>;

    /// Returns when the service is listening. To be called before this process has threads.
    /// @throws std::runtime_error when it does not come to that.
    explicit ServiceProcess(const Service& service);
    ServiceProcess(const ServiceProcess&) = delete;
    ServiceProcess& operator=(const ServiceProcess&) = delete;
    ~ServiceProcess();

    /// The folder in which RPC clients have to look.
    const std::filesystem::path& folder() const { return folder_; }

    /// The endpoint's socket.
    std::filesystem::path socket() const;

  private:
    std::filesystem::path folder_;
    pid_t process_ = -1;
};

}  // namespace Orvel::Bench

#endif
