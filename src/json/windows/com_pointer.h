#ifndef ORVEL_JSON_WINDOWS_COM_POINTER_H
#define ORVEL_JSON_WINDOWS_COM_POINTER_H

#include <utility>

namespace Orvel::Analytics::Json {

/// Owns one reference to an object of the platform.
template <typename Interface>
class ComPointer {
  public:
    ComPointer() = default;

    /// @param object a reference that is taken over, or null.
    explicit ComPointer(Interface* object) noexcept : object_(object) {}

    ComPointer(ComPointer&& other) noexcept : object_(other.detach()) {}
    ComPointer& operator=(ComPointer&& other) noexcept {
        ComPointer(std::move(other)).swap(*this);
        return *this;
    }
    ComPointer(const ComPointer&) = delete;
    ComPointer& operator=(const ComPointer&) = delete;
    ~ComPointer() {
        if (object_ != nullptr) {
            object_->Release();
        }
    }

    Interface* get() const noexcept { return object_; }
    Interface* operator->() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    /// Where a call puts the reference that it gives; nothing is owned before.
    Interface** receive() noexcept { return &object_; }

    /// Gives the reference up.
    [[nodiscard]] Interface* detach() noexcept { return std::exchange(object_, nullptr); }

    void swap(ComPointer& other) noexcept { std::swap(object_, other.object_); }

  private:
    Interface* object_ = nullptr;
};

}  // namespace Orvel::Analytics::Json

#endif
