#ifndef ORVEL_SUPPORT_SERVICE_PROCESS_H
#define ORVEL_SUPPORT_SERVICE_PROCESS_H

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/temporary_folder.h"

namespace Orvel::Support {

/// A program that a test has started. It ends with the object, and with the test, at the latest.
class Process {
  public:
    /// @param environment lines NAME=VALUE that replace or add to this process's own.
    /// @throws std::system_error when it cannot be started.
    Process(const std::filesystem::path& program, const std::vector<std::string>& arguments,
            const std::vector<std::string>& environment = {});
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process();

    /// The next line of what it writes to standard error, without its end; empty at the end of it.
    /// @throws std::runtime_error when none comes for a minute.
    std::string errorLine();

    /// Sends a signal.
    void signal(int number);

    /// Sends a signal again and again for as long as it has not ended.
    void signalUntilItEnds(int number);

    /// Waits for its end. @return its exit status, or the negative number of the signal that ended
    ///     it. @throws std::runtime_error when it does not end within a minute.
    int wait();

    /// Everything that it writes to standard output and error until it ends; then as `wait`.
    struct Output {
        int status;
        std::string out;
        std::string error;
    };
    Output finish();

  private:
    int pid_ = -1;
    int out_ = -1;
    int error_ = -1;
    std::string errorBuffer_;
};

/// Runs a program to its end.
Process::Output runProgram(const std::filesystem::path& program,
                           const std::vector<std::string>& arguments,
                           const std::vector<std::string>& environment = {});

/// The analytics service with an endpoint and a data folder of its own.
///
/// A test's own client finds it after `useEndpoint`.
class ServiceProcess {
  public:
    /// Nothing runs yet. @param program the service's program.
    explicit ServiceProcess(std::filesystem::path program);

    /// What the service's settings file holds from its next start on; at first it is empty, so that
    /// every setting has its default whatever this machine's own settings are.
    void useSettings(std::string toml) { settings_ = std::move(toml); }

    /// Starts the service and returns when it listens.
    /// @throws std::runtime_error with what it logged when it does not.
    void start();

    /// Ends it with a signal that it obeys. @return its exit status. Every line that it logged is
    ///     in `log` then.
    int stop(int signal = SIGTERM);

    /// As `stop`, with the signal sent again and again until it has ended.
    int stopInsistently(int signal);

    /// Ends it with SIGKILL, so that it can do nothing more.
    void kill();

    /// Makes clients in this process, and programs that it starts, find this service.
    void useEndpoint() const;

    /// The folder that the service's socket is in: ORVEL_RPC_DIRECTORY of whoever looks for it.
    std::filesystem::path endpointFolder() const { return folder_.path() / "endpoint"; }
    std::filesystem::path dataFolder() const { return folder_.path() / "data"; }
    std::filesystem::path settingsFile() const { return folder_.path() / "settings.toml"; }
    const std::filesystem::path& program() const { return program_; }

    /// Waits for the next line that the running service logs; it is in `log` then. Empty at the
    /// end.
    const std::string& nextLine();

    /// The lines that the service has logged, as far as they have been read.
    const std::vector<std::string>& log() const { return log_; }

    /// Starts the program with other arguments and waits for its end, such as {"events", "--json"};
    /// the endpoint and the data folder are the same.
    Process::Output run(std::vector<std::string> arguments) const;

  private:
    std::vector<std::string> environment() const;
    void writeSettings() const;

    TemporaryFolder folder_;
    std::filesystem::path program_;
    std::string settings_;
    std::unique_ptr<Process> process_;
    std::vector<std::string> log_;
};

}  // namespace Orvel::Support

#endif
