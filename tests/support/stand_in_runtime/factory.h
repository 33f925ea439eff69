#ifndef ORVEL_STAND_IN_RUNTIME_FACTORY_H
#define ORVEL_STAND_IN_RUNTIME_FACTORY_H

#include "support/stand_in_runtime/com_object.h"

namespace Orvel::StandIn {

/// The three names under which a class appears.
struct ClassNames {
    const wchar_t* full;
    RuntimeClass name;
    Call request;
    Call released;
};

/// A class's factory. Every request makes one of its own, so that a test can tell them apart.
template <typename... Interfaces>
class CountedFactory : public Inspectable<IActivationFactory, IAgileObject, Interfaces...>,
                       public KeptFactory {
  public:
    explicit CountedFactory(const ClassNames& names) : names_(names) {}

    IActivationFactory* asFactory() override { return this; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        noteUse();
        return Inspectable<IActivationFactory, IAgileObject, Interfaces...>::QueryInterface(id,
                                                                                            object);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return noteUse() ? 0 : ++references; }
    ULONG STDMETHODCALLTYPE Release() override {
        if (noteUse()) {
            return 0;
        }
        const ULONG left = --references;
        if (left == 0) {
            Runtime::instance().enter(names_.released);
        }
        return left;
    }

    /// A class that nobody can activate.
    HRESULT STDMETHODCALLTYPE ActivateInstance(IInspectable** /*instance*/) override {
        return E_NOTIMPL;
    }

  protected:
    std::wstring_view runtimeClassName() const override { return names_.full; }
    bool isAgile() const override { return Runtime::instance().isAgile(names_.name); }

    template <typename Work>
    HRESULT performCounted(Call call, Work work) {
        noteUse();
        ++calls;
        return perform(call, work);
    }

  private:
    /// Whether it is a late one.
    bool noteUse() {
        const bool isLate = references == 0;
        if (isLate) {
            ++Runtime::instance().lateUses;
        }
        return isLate;
    }

    ClassNames names_;
};

using MakeFactory = std::unique_ptr<KeptFactory>(const ClassNames& names);

MakeFactory makeAnalyticsInfoFactory;
MakeFactory makeDeviceInformationFactory;
MakeFactory makeJsonArrayFactory;
MakeFactory makeJsonObjectFactory;
MakeFactory makeJsonValueFactory;

}  // namespace Orvel::StandIn

#endif
