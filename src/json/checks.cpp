#include "json/checks.h"

#include <cmath>

#include "json/raise.h"
#include "text/unicode.h"

namespace Orvel::Analytics::Json {

void requireParsable(WideStringView text) {
    constexpr WideChar kByteOrderMark = 0xFEFF;
    if (text.starts_with(kByteOrderMark)) {
        raise(Status::kInvalidJsonString, "The text is not JSON: it begins with a byte order mark");
    }
    if (Text::findUnpairedSurrogate(text) != WideStringView::npos) {
        raise(Status::kInvalidJsonString, "The text is not JSON: it has an unpaired surrogate");
    }
}

void requireFinite(double number) {
    if (!std::isfinite(number)) {
        raise(Status::kInvalidArgument, "JSON has no text for a number that is not finite");
    }
}

}  // namespace Orvel::Analytics::Json
