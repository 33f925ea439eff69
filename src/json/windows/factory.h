#ifndef ORVEL_JSON_WINDOWS_FACTORY_H
#define ORVEL_JSON_WINDOWS_FACTORY_H

#include <atomic>
#include <cstdint>

#include "json/windows/abi.h"
#include "json/windows/com_pointer.h"
#include "json/windows/runtime.h"
#include "orvel/analytics/text.h"

/// The activation factories of the platform's classes, each asked for once and then kept.
///
/// Threads: any thread may use any class at any time.
namespace Orvel::Analytics::Json {

/// A class of the platform and the slot for its factory. There is one a class, for the life of the
/// library.
class RuntimeClass {
  public:
    /// @param name the class's full name, a literal.
    constexpr explicit RuntimeClass(WideStringView name) : name_(name) {}
    RuntimeClass(const RuntimeClass&) = delete;
    RuntimeClass& operator=(const RuntimeClass&) = delete;
    ~RuntimeClass() = default;

    /// A new object of the class, made by its default activation.
    [[nodiscard]] ComPointer<IInspectable> activate();

    /// The class's static operations.
    template <typename Statics>
    [[nodiscard]] ComPointer<Statics> statics() {
        const Use use(*this);
        return query<Statics>(use.factory());
    }

  private:
    friend void releaseFactories() noexcept;

    /// The factory, for as long as a use lives.
    class Use {
      public:
        explicit Use(RuntimeClass& runtimeClass);
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;
        ~Use();

        Abi::ActivationFactory* factory() const { return factory_; }

      private:
        RuntimeClass& class_;
        Abi::ActivationFactory* factory_;
        /// A factory that is not kept.
        ComPointer<Abi::ActivationFactory> own_;
    };

    void keep(ComPointer<Abi::ActivationFactory>& factory) noexcept;
    void enterList() noexcept;
    void release() noexcept;

    WideStringView name_;
    std::atomic<Abi::ActivationFactory*> factory_ = nullptr;
    /// How many calls may hold the factory without a reference of their own.
    std::atomic<std::uint32_t> uses_ = 0;
    /// In the list of filled slots.
    RuntimeClass* next_ = nullptr;
};

/// Releases the factories of all classes that are not in use at this moment; one in use stays, and
/// can be released later. A class whose factory was released asks for it anew.
void releaseFactories() noexcept;

}  // namespace Orvel::Analytics::Json

#endif
