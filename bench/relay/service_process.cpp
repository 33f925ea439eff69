#include "bench/relay/service_process.h"

#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <exception>
#include <stdexcept>
#include <string>
#include <system_error>

namespace Orvel::Bench {
namespace {

std::filesystem::path newFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "orvel-bench-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("cannot make a folder for the socket");
    }
    return name;
}

// Does not return. Nothing of the parent is cleaned up twice.
void serve(const ServiceProcess::Service& service, const std::filesystem::path& socket,
           int listening) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    try {
        service(socket,
                [listening] { [[maybe_unused]] const auto written = ::write(listening, "", 1); });
    } catch (const std::exception&) {
        // The parent sees that nobody is listening.
    }
    ::_exit(1);
}

}  // namespace

ServiceProcess::ServiceProcess(const Service& service) : folder_(newFolder()) {
    std::array<int, 2> listening{};
    if (::pipe(listening.data()) != 0) {
        throw std::runtime_error("cannot make a pipe");
    }
    process_ = ::fork();
    if (process_ == 0) {
        serve(service, socket(), listening[1]);
    }
    ::close(listening[1]);
    char said = 0;
    const bool isListening = process_ > 0 && ::read(listening[0], &said, 1) == 1;
    ::close(listening[0]);
    if (!isListening) {
        throw std::runtime_error("the service did not start");
    }
}

ServiceProcess::~ServiceProcess() {
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::filesystem::path ServiceProcess::socket() const {
    return folder_ / "OrvelAnalyticsRpcEndpoint.sock";
}

}  // namespace Orvel::Bench
