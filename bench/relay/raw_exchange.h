#ifndef ORVEL_BENCH_RAW_EXCHANGE_H
#define ORVEL_BENCH_RAW_EXCHANGE_H

#include <cstddef>
#include <filesystem>
#include <span>
#include <vector>

#include "bench/relay/service_process.h"

/// @file
/// The least that client and server do who exchange messages over a stream socket: both know the
/// length of every message beforehand and block until all of it is through.

namespace Orvel::Bench {

/// A message and its answer, in bytes.
struct Exchange {
    std::size_t message = 0;
    std::size_t answer = 0;
};

/// The bytes that the relay's frames have beside their texts.
inline constexpr std::size_t kHeader = 32;
/// The greeting that begins each of the relay's connections.
inline constexpr Exchange kGreeting{kHeader, kHeader};

/// Where a service receives.
enum class Memory {
    kReused,  ///< in memory that it has had from the beginning
    kFresh,   ///< in memory that it takes for each message, as who hands the message on has to
};

/// A service that carries out these exchanges on each connection, one connection after the other.
ServiceProcess::Service rawService(std::vector<Exchange> exchanges,
                                   Memory memory = Memory::kReused);

/// The client's side: a connection, for as long as this object lives.
class RawConnection {
  public:
    /// @throws std::system_error when nobody listens.
    explicit RawConnection(const std::filesystem::path& socket);
    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;
    ~RawConnection();

    /// @throws std::system_error when the connection is lost.
    void exchange(std::span<const std::byte> message, std::span<std::byte> answer) const;

  private:
    int socket_;
};

}  // namespace Orvel::Bench

#endif
