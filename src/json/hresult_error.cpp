#include "orvel/analytics/hresult_error.h"

#include <array>
#include <cstdio>
#include <new>

#include "json/raise.h"
#include "text/unicode.h"

namespace Orvel::Analytics {
namespace {

std::string withStatus(const std::string& message, std::int32_t code) {
    std::array<char, sizeof " (0x00000000)"> suffix;
    std::snprintf(suffix.data(), suffix.size(), " (0x%08X)", static_cast<std::uint32_t>(code));
    return message + suffix.data();
}

}  // namespace

// The message is kept as an error that copies without throwing; nobody throws it.
hresult_error::hresult_error(std::int32_t code, const std::string& message)
    : code_(code), message_(withStatus(message, code)) {}  // NOLINT(bugprone-throw-keyword-missing)

hresult_error::~hresult_error() = default;

std::int32_t hresult_error::code() const noexcept { return code_; }

WideString hresult_error::message() const {
    WideString wide;
    Text::appendUtf8(wide, what());
    return wide;
}

const char* hresult_error::what() const noexcept { return message_.what(); }

#define ORVEL_DEFINE_HRESULT_ERROR(name)                                \
    name::name(const std::string& message)                              \
        : hresult_error(static_cast<std::int32_t>(kStatus), message) {} \
    name::~name() = default

ORVEL_DEFINE_HRESULT_ERROR(hresult_access_denied);
ORVEL_DEFINE_HRESULT_ERROR(hresult_wrong_thread);
ORVEL_DEFINE_HRESULT_ERROR(hresult_not_implemented);
ORVEL_DEFINE_HRESULT_ERROR(hresult_invalid_argument);
ORVEL_DEFINE_HRESULT_ERROR(hresult_out_of_bounds);
ORVEL_DEFINE_HRESULT_ERROR(hresult_no_interface);
ORVEL_DEFINE_HRESULT_ERROR(hresult_class_not_available);
ORVEL_DEFINE_HRESULT_ERROR(hresult_changed_state);
ORVEL_DEFINE_HRESULT_ERROR(hresult_illegal_method_call);
ORVEL_DEFINE_HRESULT_ERROR(hresult_illegal_state_change);
ORVEL_DEFINE_HRESULT_ERROR(hresult_illegal_delegate_assignment);
ORVEL_DEFINE_HRESULT_ERROR(hresult_canceled);

#undef ORVEL_DEFINE_HRESULT_ERROR

namespace Json {
namespace {

template <typename Error>
void raiseIf(std::uint32_t status, const std::string& message) {
    if (status == Error::kStatus) {
        throw Error(message);
    }
}

template <typename... Errors>
void raiseAnyOf(std::uint32_t status, const std::string& message) {
    (raiseIf<Errors>(status, message), ...);
}

}  // namespace

void raise(std::uint32_t status, const std::string& message) {
    if (status == Status::kOutOfMemory) {
        throw std::bad_alloc();
    }
    raiseAnyOf<hresult_access_denied, hresult_wrong_thread, hresult_not_implemented,
               hresult_invalid_argument, hresult_out_of_bounds, hresult_no_interface,
               hresult_class_not_available, hresult_changed_state, hresult_illegal_method_call,
               hresult_illegal_state_change, hresult_illegal_delegate_assignment, hresult_canceled>(
        status, message);
    throw hresult_error(static_cast<std::int32_t>(status), message);
}

}  // namespace Json

}  // namespace Orvel::Analytics
