#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "support/service_process.h"

namespace Orvel::Support {

namespace {

constexpr int kPatience = 60'000;

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), what);
}

/// Both ends of a pipe; whatever end is still here is closed at last.
class Pipe {
  public:
    Pipe() {
        if (::pipe2(ends_.data(), O_CLOEXEC) != 0) {
            fail("cannot make a pipe");
        }
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    ~Pipe() {
        for (const int end : ends_) {
            if (end >= 0) {
                ::close(end);
            }
        }
    }
    int takeReading() { return std::exchange(ends_[0], -1); }
    int writing() const { return ends_[1]; }

  private:
    std::array<int, 2> ends_{-1, -1};
};

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> all;
    for (std::string& text : texts) {
        all.push_back(text.data());
    }
    all.push_back(nullptr);
    return all;
}

std::vector<std::string> mergedEnvironment(const std::vector<std::string>& additions) {
    std::vector<std::string> all = additions;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string line = *entry;
        const std::string name = line.substr(0, line.find('=') + 1);
        bool replaced = false;
        for (const std::string& addition : additions) {
            replaced = replaced || addition.starts_with(name);
        }
        if (!replaced) {
            all.push_back(line);
        }
    }
    return all;
}

/// Appends what there is to read. @return false at the end.
bool readSome(int descriptor, std::string& buffer) {
    std::array<char, 65536> bytes;
    const auto count = ::read(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno != EINTR) {
        fail("cannot read from a program");
    }
    if (count > 0) {
        buffer.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return count != 0;
}

}  // namespace

Process::Process(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                 const std::vector<std::string>& environment) {
    std::vector<std::string> words = {program.string()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables = mergedEnvironment(environment);
    const auto argv = pointers(words);
    const auto envp = pointers(variables);
    Pipe out;
    Pipe error;
    const pid_t parent = ::getpid();
    pid_ = ::fork();
    if (pid_ < 0) {
        fail("cannot start a process");
    }
    if (pid_ == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        // The parent may have died before that took effect.
        if (::getppid() == parent && ::dup2(out.writing(), STDOUT_FILENO) >= 0 &&
            ::dup2(error.writing(), STDERR_FILENO) >= 0) {
            ::execve(argv[0], argv.data(), envp.data());
        }
        ::_exit(127);
    }
    out_ = out.takeReading();
    error_ = error.takeReading();
}

Process::~Process() {
    if (pid_ > 0) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    ::close(out_);
    ::close(error_);
}

std::string Process::errorLine() {
    while (errorBuffer_.find('\n') == std::string::npos) {
        pollfd waiting{error_, POLLIN, 0};
        if (::poll(&waiting, 1, kPatience) == 0) {
            throw std::runtime_error("a program is silent: " + errorBuffer_);
        }
        if (!readSome(error_, errorBuffer_)) {
            return std::exchange(errorBuffer_, {});
        }
    }
    const std::size_t end = errorBuffer_.find('\n');
    std::string line = errorBuffer_.substr(0, end);
    errorBuffer_.erase(0, end + 1);
    return line;
}

void Process::signal(int number) {
    if (pid_ > 0) {
        ::kill(pid_, number);
    }
}

void Process::signalUntilItEnds(int number) {
    siginfo_t state{};
    while (state.si_pid == 0) {
        signal(number);
        if (::waitid(P_PID, static_cast<id_t>(pid_), &state, WEXITED | WNOHANG | WNOWAIT) != 0) {
            throw std::system_error(errno, std::generic_category(), "waitid");
        }
    }
}

int Process::wait() { return finish().status; }

Process::Output Process::finish() {
    Output output{0, {}, std::exchange(errorBuffer_, {})};
    std::array<pollfd, 2> pipes = {pollfd{out_, POLLIN, 0}, pollfd{error_, POLLIN, 0}};
    // Both pipes end when the process has ended.
    while (pipes[0].fd >= 0 || pipes[1].fd >= 0) {
        if (::poll(pipes.data(), pipes.size(), kPatience) == 0) {
            throw std::runtime_error("a program does not end: " + output.error);
        }
        if (pipes[0].revents != 0 && !readSome(out_, output.out)) {
            pipes[0].fd = -1;
        }
        if (pipes[1].revents != 0 && !readSome(error_, output.error)) {
            pipes[1].fd = -1;
        }
    }
    int status = 0;
    if (::waitpid(std::exchange(pid_, -1), &status, 0) < 0) {
        fail("cannot wait for a program");
    }
    output.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    return output;
}

Process::Output runProgram(const std::filesystem::path& program,
                           const std::vector<std::string>& arguments,
                           const std::vector<std::string>& environment) {
    return Process(program, arguments, environment).finish();
}

ServiceProcess::ServiceProcess(std::filesystem::path program) : program_(std::move(program)) {}

std::vector<std::string> ServiceProcess::environment() const {
    return {"ORVEL_RPC_DIRECTORY=" + endpointFolder().string()};
}

void ServiceProcess::writeSettings() const {
    std::ofstream file(settingsFile(), std::ios::binary);
    file << settings_;
    if (!file.flush()) {
        throw std::runtime_error("cannot write " + settingsFile().string());
    }
}

void ServiceProcess::start() {
    writeSettings();
    process_ =
        std::make_unique<Process>(program_,
                                  std::vector<std::string>{"serve", "--data", dataFolder().string(),
                                                           "--settings", settingsFile().string()},
                                  environment());
    for (;;) {
        if (nextLine().empty()) {
            throw std::runtime_error("the service does not listen: " +
                                     (log_.size() > 1 ? log_[log_.size() - 2] : "no log"));
        }
        if (log_.back().find(R"("event":"listening")") != std::string::npos) {
            return;
        }
    }
}

const std::string& ServiceProcess::nextLine() { return log_.emplace_back(process_->errorLine()); }

int ServiceProcess::stop(int signal) {
    process_->signal(signal);
    const auto output = process_->finish();
    process_.reset();
    for (std::size_t begin = 0; begin < output.error.size();) {
        const std::size_t end = output.error.find('\n', begin);
        log_.push_back(output.error.substr(begin, end - begin));
        begin = end == std::string::npos ? output.error.size() : end + 1;
    }
    return output.status;
}

int ServiceProcess::stopInsistently(int signal) {
    process_->signalUntilItEnds(signal);
    return stop(signal);
}

void ServiceProcess::kill() {
    process_->signal(SIGKILL);
    process_->wait();
    process_.reset();
}

void ServiceProcess::useEndpoint() const {
    ::setenv("ORVEL_RPC_DIRECTORY", endpointFolder().c_str(), 1);
}

Process::Output ServiceProcess::run(std::vector<std::string> arguments) const {
    arguments.insert(arguments.end(), {"--data", dataFolder().string()});
    return runProgram(program_, arguments, environment());
}

}  // namespace Orvel::Support
