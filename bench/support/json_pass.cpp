#include "bench/support/json_pass.h"

#include <yyjson.h>

#include <cstring>

#include "text/unicode.h"

namespace Orvel::Bench {
namespace {

// The engine's values and what it writes take less than this for each unit of the text.
constexpr std::size_t kBytesPerUnit = 64;

}  // namespace

JsonPass::JsonPass(std::size_t longest)
    : utf8_(3 * longest + YYJSON_PADDING_SIZE),
      memory_(kBytesPerUnit * longest + 4096),
      wide_(3 * longest) {}

WideStringView JsonPass::run(WideStringView text) {
    char* const end = Analytics::Text::writeUtf8(text, utf8_.data());
    std::memset(end, 0, YYJSON_PADDING_SIZE);
    yyjson_alc memory;
    yyjson_alc_pool_init(&memory, memory_.data(), memory_.size());
    yyjson_doc* const document =
        yyjson_read_opts(utf8_.data(), static_cast<std::size_t>(end - utf8_.data()),
                         YYJSON_READ_INSITU | YYJSON_READ_NUMBER_AS_RAW, &memory, nullptr);
    std::size_t size = 0;
    const char* const written = yyjson_write_opts(document, 0, &memory, &size, nullptr);
    if (written == nullptr) {
        return {};
    }
    const WideChar* const wide = Analytics::Text::writeWide({written, size}, wide_.data());
    return {wide_.data(), wide};
}

}  // namespace Orvel::Bench
