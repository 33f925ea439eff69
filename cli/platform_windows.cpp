#include <fcntl.h>
#include <io.h>
#include <windows.h>

// It needs the types of windows.h.
#include <shellapi.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <system_error>

#include "cli/platform.h"
#include "orvel/analytics/text.h"

namespace Orvel::Tool {

namespace {

constexpr std::size_t kBufferSize = std::size_t{64} << 10;

/// How the tool found what it has changed of the console.
std::optional<UINT> codePageFound;
std::optional<DWORD> modeFound;

std::string_view environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string_view() : std::string_view(value);
}

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

HANDLE standardError() { return ::GetStdHandle(STD_ERROR_HANDLE); }

std::optional<DWORD> consoleMode(HANDLE stream) {
    DWORD mode = 0;
    return ::GetConsoleMode(stream, &mode) != 0 ? std::optional(mode) : std::nullopt;
}

/// A console outlives the programs that use it.
void restoreConsole() {
    if (codePageFound) {
        ::SetConsoleOutputCP(*codePageFound);
    }
    if (modeFound) {
        ::SetConsoleMode(standardError(), *modeFound);
    }
}

void prepareConsole() {
    const auto errorMode = consoleMode(standardError());
    if (errorMode || consoleMode(::GetStdHandle(STD_OUTPUT_HANDLE))) {
        codePageFound = ::GetConsoleOutputCP();
        ::SetConsoleOutputCP(CP_UTF8);
    }
    if (errorMode &&
        ::SetConsoleMode(standardError(), *errorMode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0) {
        modeFound = errorMode;
    }
    std::atexit(restoreConsole);
}

bool isHighSurrogate(wchar_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }

bool isLowSurrogate(wchar_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

/// An unpaired surrogate, which has no UTF-8, becomes a byte that is none either.
std::string toArgument(WideStringView wide) {
    std::string argument;
    while (!wide.empty()) {
        const bool high = isHighSurrogate(wide.front());
        const bool pair = high && wide.size() > 1 && isLowSurrogate(wide[1]);
        const std::size_t units = pair ? 2 : 1;
        if (!pair && (high || isLowSurrogate(wide.front()))) {
            argument += '\xFF';
        } else {
            argument += toUtf8(wide.substr(0, units));
        }
        wide.remove_prefix(units);
    }
    return argument;
}

}  // namespace

void prepareStandardStreams() {
    // The C library keeps the numbers of streams that were closed by the caller, so that no file
    // takes their place, and fails to write to them.
    for (std::FILE* const stream : {stdin, stdout, stderr}) {
        const int descriptor = ::_fileno(stream);
        if (descriptor >= 0) {
            static_cast<void>(::_setmode(descriptor, _O_BINARY));
        }
        // Without a buffer, as a console has none, the bytes of one character may come one by one.
        static_cast<void>(std::setvbuf(stream, nullptr, _IOFBF, kBufferSize));
    }
    prepareConsole();
}

bool standardErrorIsTerminal() {
    const auto mode = consoleMode(standardError());
    return mode && (*mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0 &&
           environment("TERM") != "dumb";
}

bool colourIsWelcome() { return environment("NO_COLOR").empty(); }

std::vector<std::string> commandLine(int /*argc*/, char** /*argv*/) {
    // What main is handed has lost every character that the system's code page does not have.
    int count = 0;
    const std::unique_ptr<LPWSTR, decltype(&::LocalFree)> texts(
        ::CommandLineToArgvW(::GetCommandLineW(), &count), ::LocalFree);
    if (texts == nullptr) {
        throw std::bad_alloc();
    }
    std::vector<std::string> arguments;
    std::transform(texts.get(), texts.get() + count, std::back_inserter(arguments), toArgument);
    return arguments;
}

std::filesystem::path toPath(const std::string& argument) { return toWide(argument); }

int openForReading(const std::filesystem::path& path) {
    const int descriptor = ::_wopen(path.c_str(), _O_RDONLY | _O_BINARY | _O_NOINHERIT);
    if (descriptor < 0) {
        const int reason = errno;
        std::error_code ignored;
        errno = std::filesystem::is_directory(path, ignored) ? EISDIR : reason;
        fail("open");
    }
    return descriptor;
}

int standardInput() { return ::_fileno(stdin); }

std::size_t readSome(int descriptor, char* bytes, std::size_t size) {
    if (descriptor < 0) {
        return 0;  // Standard input, when the caller has closed it.
    }
    constexpr std::size_t kMost = std::numeric_limits<int>::max();
    const int count = ::_read(descriptor, bytes, static_cast<unsigned>(std::min(size, kMost)));
    if (count < 0) {
        fail("read");
    }
    return static_cast<std::size_t>(count);
}

void closeFile(int descriptor) { ::_close(descriptor); }

int lastReportableYear() { return 3000; }

std::string_view absentServiceHint() { return "is the service running?"; }

}  // namespace Orvel::Tool
