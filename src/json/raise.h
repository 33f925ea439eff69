#ifndef ORVEL_JSON_RAISE_H
#define ORVEL_JSON_RAISE_H

#include <cstdint>
#include <string>

namespace Orvel::Analytics::Json {

/// The statuses that the JSON layer itself gives (platform documentation, winerror.h).
namespace Status {
inline constexpr std::uint32_t kInvalidJsonString = 0x83750007;
inline constexpr std::uint32_t kInvalidJsonNumber = 0x83750008;
inline constexpr std::uint32_t kValueNotFound = 0x83750009;
inline constexpr std::uint32_t kImplementationLimit = 0x8007050C;
inline constexpr std::uint32_t kOutOfBounds = 0x8000000B;
inline constexpr std::uint32_t kIllegalMethodCall = 0x8000000E;
inline constexpr std::uint32_t kInvalidArgument = 0x80070057;
inline constexpr std::uint32_t kOutOfMemory = 0x8007000E;
}  // namespace Status

/// Raises a failing status: out of memory as `std::bad_alloc`, a well-known status as its subclass
/// of `hresult_error`, any other as `hresult_error` itself.
[[noreturn]] void raise(std::uint32_t status, const std::string& message);

}  // namespace Orvel::Analytics::Json

#endif
