#include "json/portable/serialise.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <list>
#include <utility>

#include "text/blocks.h"
#include "text/unicode.h"

namespace Orvel::Analytics::Json {
namespace {

constexpr std::ptrdiff_t kBlock = Text::kBlock;

/// What follows the backslash where a character of ASCII has an escape of its own, `u` where it has
/// none but needs one, and 0 where it stands for itself.
constexpr auto kEscapes = [] {
    std::array<char, 128> escapes{};
    for (std::size_t control = 0; control < 0x20; ++control) {
        escapes[control] = 'u';
    }
    escapes['"'] = '"';
    escapes['\\'] = '\\';
    escapes['\b'] = 'b';
    escapes['\f'] = 'f';
    escapes['\n'] = 'n';
    escapes['\r'] = 'r';
    escapes['\t'] = 't';
    return escapes;
}();

/// How many code units a byte of a string comes to; those of a sequence together to what it does.
constexpr auto kUnits = [] {
    std::array<std::uint8_t, 256> units{};
    for (std::size_t byte = 0; byte < units.size(); ++byte) {
        const bool continues = (byte & 0xC0U) == 0x80;
        const char escape = byte < kEscapes.size() ? kEscapes[byte] : '\0';
        units[byte] = escape == 'u' ? 6 : escape != 0 ? 2 : continues ? 0 : byte < 0xF0 ? 1 : 2;
    }
    return units;
}();

/// Counts the code units that are written.
class Counter {
  public:
    void mark(char /*mark*/) { ++units_; }
    void ascii(std::string_view text) { units_ += text.size(); }
    void serialised(WideStringView text) { units_ += text.size(); }

    void string(std::string_view text) {
        units_ += 2;
        const char* in = text.data();
        const char* const end = in + text.size();
        while (in != end) {
            while (end - in >= kBlock && Text::isPlainJsonBlock(in)) {
                in += kBlock;
                units_ += kBlock;
            }
            const char* const pause = in + std::min(end - in, 2 * kBlock);
            while (in < pause) {
                units_ += kUnits[static_cast<unsigned char>(*in++)];
            }
        }
    }

    [[nodiscard]] std::size_t units() const { return units_; }

  private:
    std::size_t units_ = 0;
};

template <typename Sink>
void walk(const Node& root, Sink& sink);

/// Writes a value by way of a buffer. Most values fit there, so that their length need not be known
/// beforehand; and a large text that was made as long as it will be would first be filled with
/// zeros, which takes as long as writing it.
class Writer {
  public:
    explicit Writer(const Node& value) : value_(value) {}

    WideString write() {
        walk(value_, *this);
        flush();
        return std::move(text_);
    }

    void mark(char mark) {
        makeRoom(1);
        *out_++ = static_cast<WideChar>(mark);
    }

    void ascii(std::string_view text) {
        for (const char character : text) {
            mark(character);
        }
    }

    void serialised(WideStringView text) {
        spill();
        text_.append(text);
    }

    void string(std::string_view text) {
        mark('"');
        const char* in = text.data();
        const char* const end = in + text.size();
        while (in != end) {
            while (end - in >= kBlock && Text::isPlainJsonBlock(in)) {
                makeRoom(kBlock);
                Text::widenBlock(in, out_);
                in += kBlock;
                out_ += kBlock;
            }
            // Where a block is not plain, the next ones seldom are.
            const char* const pause = in + std::min(end - in, 2 * kBlock);
            while (in < pause) {
                character(in);
            }
        }
        mark('"');
    }

  private:
    void makeRoom(std::ptrdiff_t units) {
        if (buffer_.data() + buffer_.size() - out_ < units) {
            spill();
        }
    }

    /// Empties the buffer because the value does not fit there.
    void spill() {
        if (!spilled_) {
            text_.reserve(serialisedLength(value_));
            spilled_ = true;
        }
        flush();
    }

    void flush() {
        text_.append(buffer_.data(), out_);
        out_ = buffer_.data();
    }

    void character(const char*& in) {
        const auto byte = static_cast<unsigned char>(*in);
        if (byte < kEscapes.size() && kEscapes[byte] == 0) {
            mark(*in++);
            return;
        }
        const char32_t codePoint = Text::decodeSequence(in);
        const char escape = codePoint < kEscapes.size() ? kEscapes[codePoint] : '\0';
        if (escape == 0) {
            makeRoom(2);
            out_ = Text::writeUnits(codePoint, out_);
            return;
        }
        mark('\\');
        mark(escape);
        if (escape == 'u') {
            constexpr std::string_view kDigits = "0123456789ABCDEF";
            mark('0');
            mark('0');
            mark(kDigits[codePoint >> 4]);
            mark(kDigits[codePoint & 0xF]);
        }
    }

    const Node& value_;
    WideString text_;
    bool spilled_ = false;
    std::array<WideChar, 1024> buffer_;
    WideChar* out_ = buffer_.data();
};

template <typename Sink>
void serialiseList(const std::list<WideString>& texts, Sink& sink) {
    sink.serialised(texts.front());
    for (auto text = std::next(texts.begin()); text != texts.end(); ++text) {
        sink.mark(',');
        sink.serialised(*text);
    }
}

template <typename Sink>
void serialiseLeaf(const Node& leaf, Sink& sink) {
    switch (leaf.kind) {
        case Node::Kind::kString:
            return sink.string(leaf.content.text);
        case Node::Kind::kSerialised:
            return sink.serialised(leaf.content.serialised);
        case Node::Kind::kSerialisedList:
            return serialiseList(*leaf.content.serialisedList, sink);
        default:
            return sink.ascii(leaf.content.text);
    }
}

// Without recursion, because values may nest deeper than a host's thread has stack for.
template <typename Sink>
void walk(const Node& root, Sink& sink) {
    const auto isObject = [](const Node& node) { return node.kind == Node::Kind::kObject; };
    const Node* node = &root;
    for (;;) {
        if (node->isContainer()) {
            sink.mark(isObject(*node) ? '{' : '[');
        } else {
            serialiseLeaf(*node, sink);
        }
        if (node->isContainer() && node->count > 0) {
            node = node->content.children.first;
        } else {
            if (node->isContainer()) {
                sink.mark(isObject(*node) ? '}' : ']');
            }
            while (node != &root && node->next == nullptr) {
                node = node->parent;
                sink.mark(isObject(*node) ? '}' : ']');
            }
            if (node == &root) {
                return;
            }
            sink.mark(',');
            node = node->next;
        }
        if (isObject(*node->parent)) {
            sink.string(node->name);
            sink.mark(':');
        }
    }
}

}  // namespace

std::size_t serialisedLength(const Node& value) {
    Counter counter;
    walk(value, counter);
    return counter.units();
}

WideString serialise(const Node& value) { return Writer(value).write(); }

}  // namespace Orvel::Analytics::Json
