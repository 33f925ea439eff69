#ifndef ORVEL_ANALYTICS_HRESULT_ERROR_H
#define ORVEL_ANALYTICS_HRESULT_ERROR_H

#include <cstdint>
#include <exception>
#include <stdexcept>
#include <string>

#include "orvel/analytics/export.h"
#include "orvel/analytics/text.h"

/// @file
/// The error that the JSON layer and the device information raise. It leaves the public operation:
/// a reply of the service that cannot be read, for example, is not a result code but this error.
///
/// On Windows this is the library's own class, not the one of the same name in the platform's
/// C++ projection.

namespace Orvel::Analytics {

/// A failed operation with its status, an HRESULT of the platform documentation. Copying one takes
/// no memory.
class ORVEL_ANALYTICS_EXPORT hresult_error : public std::exception {
  public:
    /// @param code the failing status; negative, as every failing HRESULT is.
    /// @param message what failed, in words for a person.
    /// @throws std::bad_alloc
    hresult_error(std::int32_t code, const std::string& message);
    /// Shares the message with the other error; takes no memory.
    hresult_error(const hresult_error&) = default;
    /// Shares the message with the other error; takes no memory.
    hresult_error& operator=(const hresult_error&) = default;
    /// Releases the message.
    ~hresult_error() override;

    /// The status that the failing operation gave.
    [[nodiscard]] std::int32_t code() const noexcept;

    /// What failed, in words, and the status in hexadecimal. @throws std::bad_alloc
    [[nodiscard]] WideString message() const;

    /// The text of `message` in UTF-8; owned by the error.
    [[nodiscard]] const char* what() const noexcept override;

  private:
    std::int32_t code_;
    // Unlike a string, it is copied without taking memory, as whoever catches an error copies it.
    std::runtime_error message_;
};

/// Declares the error of one well-known status.
// NOLINTBEGIN(bugprone-macro-parentheses): a class's name cannot stand in parentheses.
#define ORVEL_DECLARE_HRESULT_ERROR(name, status)                        \
    class ORVEL_ANALYTICS_EXPORT name : public hresult_error {           \
      public:                                                            \
        /** The status of every error of this class. */                  \
        static constexpr std::uint32_t kStatus = (status);               \
        /** @param message what failed, in words for a person. */        \
        explicit name(const std::string& message);                       \
        /** Shares the message with the other error; takes no memory. */ \
        name(const name&) = default;                                     \
        /** Shares the message with the other error; takes no memory. */ \
        name& operator=(const name&) = default;                          \
        /** Releases the message. */                                     \
        ~name() override;                                                \
    }

/// Access denied (E_ACCESSDENIED).
ORVEL_DECLARE_HRESULT_ERROR(hresult_access_denied, 0x80070005U);
/// The object belongs to another thread (RPC_E_WRONG_THREAD).
ORVEL_DECLARE_HRESULT_ERROR(hresult_wrong_thread, 0x8001010EU);
/// Not implemented (E_NOTIMPL).
ORVEL_DECLARE_HRESULT_ERROR(hresult_not_implemented, 0x80004001U);
/// Invalid argument (E_INVALIDARG).
ORVEL_DECLARE_HRESULT_ERROR(hresult_invalid_argument, 0x80070057U);
/// Past the end (E_BOUNDS).
ORVEL_DECLARE_HRESULT_ERROR(hresult_out_of_bounds, 0x8000000BU);
/// The object has not that interface (E_NOINTERFACE).
ORVEL_DECLARE_HRESULT_ERROR(hresult_no_interface, 0x80004002U);
/// The class is not available (CLASS_E_CLASSNOTAVAILABLE).
ORVEL_DECLARE_HRESULT_ERROR(hresult_class_not_available, 0x80040111U);
/// The object changed meanwhile (E_CHANGED_STATE).
ORVEL_DECLARE_HRESULT_ERROR(hresult_changed_state, 0x8000000CU);
/// The operation is not allowed on this value, such as reading a number as a string
/// (E_ILLEGAL_METHOD_CALL).
ORVEL_DECLARE_HRESULT_ERROR(hresult_illegal_method_call, 0x8000000EU);
/// The state does not allow the change (E_ILLEGAL_STATE_CHANGE).
ORVEL_DECLARE_HRESULT_ERROR(hresult_illegal_state_change, 0x8000000DU);
/// The delegate may not be assigned (E_ILLEGAL_DELEGATE_ASSIGNMENT).
ORVEL_DECLARE_HRESULT_ERROR(hresult_illegal_delegate_assignment, 0x80000018U);
/// Canceled (HRESULT of ERROR_CANCELLED).
ORVEL_DECLARE_HRESULT_ERROR(hresult_canceled, 0x800704C7U);

// NOLINTEND(bugprone-macro-parentheses)
#undef ORVEL_DECLARE_HRESULT_ERROR

}  // namespace Orvel::Analytics

#endif
