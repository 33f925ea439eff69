#ifndef ORVEL_SERVER_DESCRIPTOR_H
#define ORVEL_SERVER_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace Orvel::Relay::Server {

/// A file descriptor with an owner.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int value) : value_(value) {}
    Descriptor(Descriptor&& other) noexcept : value_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(value_, other.value_);
        return *this;
    }
    ~Descriptor() {
        if (value_ >= 0) {
            ::close(value_);
        }
    }

    int get() const { return value_; }
    int release() { return std::exchange(value_, -1); }

  private:
    int value_ = -1;
};

}  // namespace Orvel::Relay::Server

#endif
