#ifndef ORVEL_STAND_IN_RUNTIME_COM_OBJECT_H
#define ORVEL_STAND_IN_RUNTIME_COM_OBJECT_H

#include <objbase.h>

#include <array>
#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

#include "support/stand_in_runtime/runtime.h"

namespace Orvel::StandIn {

/// A counted reference.
template <typename Interface>
class Reference {
  public:
    Reference() = default;
    /// Takes over a reference that the caller holds.
    static Reference adopt(Interface* object) {
        Reference reference;
        reference.object_ = object;
        return reference;
    }
    /// Holds one more reference.
    static Reference share(Interface* object) {
        object->AddRef();
        return adopt(object);
    }
    Reference(const Reference&) = delete;
    Reference(Reference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Reference& operator=(Reference other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Reference() {
        if (object_ != nullptr) {
            object_->Release();
        }
    }

    Interface* get() const { return object_; }
    Interface* operator->() const { return object_; }
    Interface* release() { return std::exchange(object_, nullptr); }

  private:
    Interface* object_ = nullptr;
};

/// Answers for an object's interfaces; who counts the references is left open.
template <typename... Interfaces>
class Inspectable : public Interfaces... {
  public:
    virtual ~Inspectable() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        *object = nullptr;
        HRESULT status = E_NOINTERFACE;
        if (id == IID_IUnknown || id == IID_IInspectable) {
            *object = static_cast<First*>(this);
            status = S_OK;
        } else {
            static_cast<void>((answered<Interfaces>(id, object, status) || ...));
        }
        if (SUCCEEDED(status)) {
            static_cast<First*>(this)->AddRef();
        }
        return status;
    }

    HRESULT STDMETHODCALLTYPE GetIids(ULONG* count, IID** ids) override {
        constexpr std::size_t kCount = sizeof...(Interfaces);
        *ids = static_cast<IID*>(CoTaskMemAlloc(kCount * sizeof(IID)));
        if (*ids == nullptr) {
            return E_OUTOFMEMORY;
        }
        *count = kCount;
        IID* next = *ids;
        ((*next++ = Traits<Interfaces>::id()), ...);
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE GetRuntimeClassName(HSTRING* name) override {
        return handOut(runtimeClassName(), name);
    }

    HRESULT STDMETHODCALLTYPE GetTrustLevel(TrustLevel* level) override {
        *level = BaseTrust;
        return S_OK;
    }

  protected:
    [[nodiscard]] virtual std::wstring_view runtimeClassName() const = 0;
    /// Whether an object that can be agile is.
    [[nodiscard]] virtual bool isAgile() const { return true; }

  private:
    using First = std::tuple_element_t<0, std::tuple<Interfaces...>>;

    template <typename Interface>
    bool answered(REFIID id, void** object, HRESULT& status) {
        if (id != Traits<Interface>::id()) {
            return false;
        }
        status = Runtime::instance().enter(Traits<Interface>::query);
        if (SUCCEEDED(status) && std::is_same_v<Interface, IAgileObject> && !isAgile()) {
            status = E_NOINTERFACE;
        }
        if (SUCCEEDED(status)) {
            *object = static_cast<Interface*>(this);
        }
        return true;
    }
};

/// An object that destroys itself with its last reference.
template <typename... Interfaces>
class ComObject : public Inspectable<Interfaces...> {
  public:
    ComObject() { ++Runtime::instance().objects; }
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;
    ~ComObject() override { --Runtime::instance().objects; }

    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) {
            delete this;
        }
        return left;
    }

  private:
    std::atomic<ULONG> references_ = 1;
};

}  // namespace Orvel::StandIn

#endif
