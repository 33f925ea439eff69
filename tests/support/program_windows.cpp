#include "support/program_windows.h"

#include <windows.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "support/temporary_folder.h"

namespace Orvel::Support {
namespace {

constexpr DWORD kPatience = 60'000;

[[noreturn]] void fail(const char* what) {
    throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), what);
}

class Handle {
  public:
    Handle() = default;
    explicit Handle(HANDLE handle) : handle_(handle) {}
    Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    Handle& operator=(Handle&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~Handle() {
        if (handle_ != nullptr) {
            ::CloseHandle(handle_);
        }
    }

    HANDLE get() const { return handle_; }

  private:
    HANDLE handle_ = nullptr;
};

SECURITY_ATTRIBUTES inheritable() { return {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE}; }

/// The two ends of a pipe: first the one to read from.
std::pair<Handle, Handle> makePipe() {
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;
    SECURITY_ATTRIBUTES attributes = inheritable();
    constexpr DWORD kBuffer = 65536;
    if (::CreatePipe(&reading, &writing, &attributes, kBuffer) == 0) {
        fail("cannot make a pipe");
    }
    return {Handle(reading), Handle(writing)};
}

Handle openInput(const std::optional<std::string>& input) {
    if (!input) {
        return {};
    }
    auto [reading, writing] = makePipe();
    DWORD written = 0;
    if (::WriteFile(writing.get(), input->data(), static_cast<DWORD>(input->size()), &written,
                    nullptr) == 0) {
        fail("cannot write to a pipe");
    }
    return std::move(reading);
}

Handle openOutput(Program::Stream stream, const std::filesystem::path& file) {
    if (stream == Program::Stream::Closed) {
        return {};
    }
    if (stream == Program::Stream::WithoutReader) {
        return makePipe().second;
    }
    SECURITY_ATTRIBUTES attributes = inheritable();
    const HANDLE handle =
        ::CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &attributes,
                      CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        fail("cannot make a file");
    }
    return Handle(handle);
}

/// An argument so that the program's C library reads it as it is here.
std::wstring quoted(const std::wstring& argument) {
    std::wstring text = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t unit : argument) {
        backslashes = unit == L'\\' ? backslashes + 1 : 0;
        text.append(unit == L'"' ? backslashes + 1 : 0, L'\\');
        text += unit;
    }
    return text.append(backslashes, L'\\') + L'"';
}

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

Handle start(const Program& program, HANDLE in, HANDLE out, HANDLE error) {
    std::wstring line = quoted(program.path.wstring());
    for (const std::wstring& argument : program.arguments) {
        line += L' ' + quoted(argument);
    }
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = in;
    startup.hStdOutput = out;
    startup.hStdError = error;
    PROCESS_INFORMATION process{};
    if (::CreateProcessW(program.path.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                         nullptr, &startup, &process) == 0) {
        fail("cannot start a program");
    }
    ::CloseHandle(process.hThread);
    return Handle(process.hProcess);
}

}  // namespace

ProgramOutcome run(const Program& program) {
    const TemporaryFolder folder;
    const auto outFile = folder.path() / "out";
    const auto errorFile = folder.path() / "error";
    Handle process;
    {
        const Handle in = openInput(program.input);
        const Handle out = openOutput(program.out, outFile);
        const Handle error = openOutput(program.error, errorFile);
        process = start(program, in.get(), out.get(), error.get());
    }
    if (::WaitForSingleObject(process.get(), kPatience) != WAIT_OBJECT_0) {
        ::TerminateProcess(process.get(), 255);
        throw std::runtime_error("a program does not end: " + contentOf(errorFile));
    }
    DWORD status = 0;
    ::GetExitCodeProcess(process.get(), &status);
    return {static_cast<int>(status), contentOf(outFile), contentOf(errorFile)};
}

}  // namespace Orvel::Support
