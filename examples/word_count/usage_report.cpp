#include "usage_report.h"

#include <algorithm>
#include <utility>

namespace WordCount {
namespace {

using Orvel::WideString;
using Orvel::Analytics::DataClass::DataClassFieldInfo;
using Orvel::Analytics::Emitters::AnalyticsResult;
using Permission = ProcessingPermissions::ProcessingPermissionValue;

DataClassFieldInfo field(WideString id, WideString type) {
    DataClassFieldInfo info;
    info.name = id;
    info.id = std::move(id);
    info.type = std::move(type);
    info.nullable = ORVEL_TEXT("false");
    return info;
}

/// Whether a text can stand in JSON as it is, and in a field of 16 characters.
bool isPlain(const std::string& text) {
    return text.size() <= 16 && std::all_of(text.begin(), text.end(), [](char character) {
               return (character >= 'a' && character <= 'z') || character == '.';
           });
}

}  // namespace

CountedFile::CountedFile() {
    name = ORVEL_TEXT("Counted file");
    id = ORVEL_TEXT("counted_file");
    version = ORVEL_TEXT("1.0");
}

std::list<DataClassFieldInfo> CountedFile::getFields() {
    return {field(ORVEL_TEXT("kind"), ORVEL_TEXT("varchar(16)")),
            field(ORVEL_TEXT("words"), ORVEL_TEXT("integer"))};
}

UsageReport::UsageReport() : session_(ORVEL_TEXT("WordCount"), ORVEL_TEXT("1.0")) {}

void UsageReport::add(const std::string& extension, std::int32_t words) {
    const std::string kind = isPlain(extension) ? extension : "other";
    events_.push_back(
        Orvel::toWide(R"({"kind":")" + kind + R"(","words":)" + std::to_string(words) + "}"));
}

Delivery UsageReport::send() {
    try {
        if (!isPermitted()) {
            return Delivery::NotPermitted;
        }
        return deliver() ? Delivery::Delivered : Delivery::Lost;
    } catch (const Orvel::Analytics::hresult_error&) {
        return Delivery::Lost;
    }
}

bool UsageReport::isPermitted() {
    ConsentObject consent;
    return session_.GetConsent(&consent) == AnalyticsResult::Success &&
           consent.processingPermissions.productEnhancement == Permission::Accepted;
}

bool UsageReport::deliver() {
    const std::vector<Orvel::WideString> events = std::exchange(events_, {});
    if (session_.RegisterDataClass(&countedFile_) != AnalyticsResult::Success) {
        return false;
    }
    for (const WideString& event : events) {
        session_.CollectEvent(&countedFile_, event);
    }
    return session_.SendEvents() == AnalyticsResult::Success;
}

}  // namespace WordCount
