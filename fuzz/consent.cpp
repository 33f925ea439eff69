/// The three readers of consent documents, each with the whole input.

#include "fuzz/support/allocations.h"
#include "fuzz/support/consent_model.h"
#include "fuzz/support/input.h"
#include "fuzz/support/require.h"

namespace Orvel::Fuzz {
namespace {

/// Whether a reader took the text; a refusal is the JSON layer's error and no other.
template <typename Read>
bool takes(Read read, std::size_t size) {
    const AllocationBound bound(40'000, 400, size);
    try {
        read();
        return true;
    } catch (const Analytics::hresult_error&) {
        return false;
    }
}

/// A reader that changes the record it is given, up to the first fault.
template <typename Record>
void checkReader(const WideString& json, std::size_t size,
                 bool (*readByModel)(WideStringView, Record&)) {
    Record record;
    Record expected;
    const bool taken = takes([&] { record.FromJson(json); }, size);
    require(taken == readByModel(json, expected), "reader and model take the same texts");
    require(areSame(record, expected), "reader and model read the same");
}

void checkConsent(const WideString& json, std::size_t size) {
    ConsentObject consent;
    consent.processData = consent.managed = false;
    ConsentObject expected = consent;
    const bool taken = takes([&] { consent = ConsentObject::FromJson(json); }, size);
    require(taken == readConsentByModel(json, expected), "reader and model take the same texts");
    require(!taken || areSame(consent, expected), "reader and model read the same");
}

void checkRoundTrip(ProcessingPermissions permissions) {
    ProcessingPermissions again;
    again.FromJson(permissions.ToJson());
    require(areSame(again, permissions), "permissions are read as they were written");
}

}  // namespace
}  // namespace Orvel::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Orvel::Fuzz;
    const Orvel::WideString json = wideOf(Input(data, size).rest());
    checkConsent(json, size);
    checkReader<PrivacyDocuments>(json, size, readDocumentsByModel);
    checkReader<ProcessingPermissions>(json, size, readPermissionsByModel);
    ProcessingPermissions permissions;
    if (readPermissionsByModel(json, permissions)) {
        checkRoundTrip(permissions);
    }
    return 0;
}
