#include "bench/support/events.h"

#include <array>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>

namespace Orvel::Bench {
namespace {

using Analytics::DataClass::DataClassFieldInfo;

DataClassFieldInfo field(WideString id, WideString type, WideString nullable) {
    DataClassFieldInfo info;
    info.name = id;
    info.id = std::move(id);
    info.type = std::move(type);
    info.auxValue = 0;
    info.nullable = std::move(nullable);
    return info;
}

constexpr std::size_t kPlainLength = 207;
constexpr std::size_t kShortest = 100;
constexpr std::size_t kLongest = 600;

/// Writes the text of one event after the other.
class EventWriter {
  public:
    WideString next() {
        wide_ = count_++ % 5 < 2;
        const std::size_t length = numberWithin(kShortest, kLongest);
        std::string event = R"({"user":")" + words(14) + R"(","page":")" + words(18) +
                            R"(","origin":")" + words(14) + R"(","count":)" +
                            std::to_string(numberWithin(0, 100000)) + R"(,"width":)" +
                            std::to_string(numberWithin(300, 4000)) + R"(,"price":)" +
                            std::to_string(numberWithin(0, 999)) + R"(.25,"active":)" +
                            (count_ % 2 == 0 ? "true" : "false");
        while (lengthOf(event) + 60 < length) {
            event += member();
        }
        return toWide(event + "}");
    }

  private:
    static std::size_t lengthOf(const std::string& utf8) { return toWide(utf8).size(); }

    std::size_t numberWithin(std::size_t least, std::size_t most) {
        return least + random_() % (most - least + 1);
    }

    /// Text of about so many code units.
    std::string words(std::size_t units) {
        static constexpr std::array kPlain = {"open ", "settings ", "user ", "a ", "page ", "of "};
        static constexpr std::array kWide = {"页面 ", "用户设置 ", "😀", "打开", "数据 ", "🚀 "};
        static constexpr std::array kEscapes = {"\\n", "\\\"", "\\\\", "\\t", "\\u00e9", "\\/"};
        std::string text;
        while (text.size() < units) {
            text += wide_ ? kWide[random_() % kWide.size()] : kPlain[random_() % kPlain.size()];
            if (random_() % 6 == 0) {
                text += kEscapes[random_() % kEscapes.size()];
            }
        }
        return text;
    }

    std::string member() {
        const std::string name = ",\"x" + std::to_string(++members_ % 1000) + "\":";
        switch (random_() % 4) {
            case 0:
                return name + R"({"kind":")" + words(6) + R"(","at":{"line":)" +
                       std::to_string(random_() % 500) + "}}";
            case 1:
                return name + "[1," + std::to_string(random_() % 1000) + ",null,true]";
            case 2:
                return name + std::to_string(random_() % 1000000) + ".5e-3";
            default:
                return name + '"' + words(24) + '"';
        }
    }

    std::mt19937 random_{20261121};
    std::size_t count_ = 0;
    std::size_t members_ = 0;
    bool wide_ = false;
};

}  // namespace

PageView::PageView() {
    name = ORVEL_TEXT("Page view");
    id = ORVEL_TEXT("PageView");
    version = ORVEL_TEXT("1.0");
    const WideString yes = ORVEL_TEXT("true");
    const WideString no = ORVEL_TEXT("false");
    fields_ = {field(ORVEL_TEXT("user"), ORVEL_TEXT("varchar(40)"), no),
               field(ORVEL_TEXT("page"), ORVEL_TEXT("varchar(80)"), no),
               field(ORVEL_TEXT("origin"), ORVEL_TEXT("varchar(80)"), yes),
               field(ORVEL_TEXT("count"), ORVEL_TEXT("integer"), no),
               field(ORVEL_TEXT("width"), ORVEL_TEXT("integer"), yes),
               field(ORVEL_TEXT("height"), ORVEL_TEXT("integer"), yes),
               field(ORVEL_TEXT("price"), ORVEL_TEXT("number"), yes),
               field(ORVEL_TEXT("active"), ORVEL_TEXT("boolean"), yes)};
}

const WideString& plainEvent() {
    static const WideString event = [] {
        WideString text =
            ORVEL_TEXT(R"({"user":"6f1d2c3b-88a0-4e57-9c1e-2f6b7d0a","page":)") ORVEL_TEXT(
                R"("/settings/account/notifications/weekly/list","origin":"https://shop.example)")
                ORVEL_TEXT(R"(.com/start1","count":42,"width":1920,"height":1080,"price":)")
                    ORVEL_TEXT(R"(1234.56,"active":true})");
        if (text.size() != kPlainLength) {
            throw std::logic_error("the event has " + std::to_string(text.size()) + " characters");
        }
        return text;
    }();
    return event;
}

std::vector<WideString> mixedEvents(std::size_t count) {
    EventWriter writer;
    std::vector<WideString> events;
    for (std::size_t made = 0; made < count; ++made) {
        events.push_back(writer.next());
        if (events.back().size() < kShortest || events.back().size() > kLongest) {
            throw std::logic_error("an event has " + std::to_string(events.back().size()) +
                                   " characters");
        }
    }
    return events;
}

}  // namespace Orvel::Bench
