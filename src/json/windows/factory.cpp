#include "json/windows/factory.h"

#include <string>

namespace Orvel::Analytics::Json {
namespace {

using Abi::ActivationFactory;

std::atomic<RuntimeClass*> filledSlots = nullptr;

ComPointer<ActivationFactory> requestFactory(WideStringView className) {
    const StringReference name(className);
    ComPointer<ActivationFactory> factory;
    const auto request = [&] {
        return runtime().getActivationFactory(name.get(), ActivationFactory::kId,
                                              reinterpret_cast<void**>(factory.receive()));
    };
    HRESULT status = request();
    if (status == CO_E_NOTINITIALIZED) {
        // The thread is in no apartment. This makes one for all threads that are in none, for as
        // long as the process lives: an apartment that came and went would take the objects of
        // other threads with it.
        CO_MTA_USAGE_COOKIE forEver = nullptr;
        check(runtime().incrementMtaUsage(&forEver), "CoIncrementMTAUsage");
        status = request();
    }
    if (FAILED(status)) {
        check(status, ("Activation of " + toUtf8(className)).c_str());
    }
    requireObject(factory.get(), "RoGetActivationFactory");
    return factory;
}

bool isAgile(ActivationFactory* factory) {
    ComPointer<Abi::AgileObject> agile;
    return SUCCEEDED(
        factory->QueryInterface(Abi::AgileObject::kId, reinterpret_cast<void**>(agile.receive())));
}

}  // namespace

// Reading the slot and releasing it meet in one order: a use is counted before the slot is read,
// and the slot is emptied before the uses are counted.
RuntimeClass::Use::Use(RuntimeClass& runtimeClass) : class_(runtimeClass), factory_(nullptr) {
    ++class_.uses_;
    factory_ = class_.factory_;
    if (factory_ != nullptr) {
        return;
    }
    try {
        own_ = requestFactory(class_.name_);
    } catch (...) {
        --class_.uses_;
        throw;
    }
    factory_ = own_.get();
    if (isAgile(factory_)) {
        class_.keep(own_);
    }
}

RuntimeClass::Use::~Use() { --class_.uses_; }

ComPointer<::IInspectable> RuntimeClass::activate() {
    const Use use(*this);
    ComPointer<::IInspectable> instance;
    check(use.factory()->ActivateInstance(instance.receive()), "ActivateInstance");
    return instance;
}

void RuntimeClass::keep(ComPointer<ActivationFactory>& factory) noexcept {
    ActivationFactory* none = nullptr;
    if (factory_.compare_exchange_strong(none, factory.get())) {
        static_cast<void>(factory.detach());
        enterList();
    }
}

void RuntimeClass::enterList() noexcept {
    next_ = filledSlots;
    while (!filledSlots.compare_exchange_weak(next_, this)) {
    }
}

void RuntimeClass::release() noexcept {
    ComPointer<ActivationFactory> factory(factory_.exchange(nullptr));
    if (factory && uses_ != 0) {
        keep(factory);
        // Another thread has filled the slot meanwhile. Who still uses the old factory cannot be
        // told, so its reference is given up for lost.
        static_cast<void>(factory.detach());
    }
}

void releaseFactories() noexcept {
    RuntimeClass* slot = filledSlots.exchange(nullptr);
    while (slot != nullptr) {
        // Read first: a slot that is released may be filled and enter the list again at once.
        RuntimeClass* const next = slot->next_;
        slot->release();
        slot = next;
    }
}

}  // namespace Orvel::Analytics::Json
