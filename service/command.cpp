#include "service/command.h"

#include <algorithm>
#include <array>

namespace Orvel::Service {

namespace {

constexpr WideStringView kColons = u"::";

/// Every token that a client may send, those that this version does not serve included.
constexpr std::array kClientTokens = {Tokens::kConnect,
                                      Tokens::kRegister,
                                      Tokens::kCollect,
                                      WideStringView{u"::GET_CONSENT::"},
                                      WideStringView{u"::SET_CONSENT::"},
                                      WideStringView{u"::GET_PRIVACY_DOCUMENTS::"}};

bool isTokenCharacter(Relay::WideChar unit) {
    return (unit >= u'A' && unit <= u'Z') || (unit >= u'0' && unit <= u'9') || unit == u'_';
}

Command splitAt(WideStringView text, std::size_t begin, std::size_t length) {
    return {text.substr(0, begin), text.substr(begin, length), text.substr(begin + length)};
}

/// What follows the connection's own name, when that is a text of a token's form.
std::optional<Command> splitAfterName(WideStringView text, WideStringView name) {
    if (name.empty() || !text.starts_with(name)) {
        return std::nullopt;
    }
    const WideStringView after = text.substr(name.size());
    if (!after.starts_with(kColons)) {
        return std::nullopt;
    }
    const auto end = std::find_if_not(after.begin() + 2, after.end(), isTokenCharacter);
    const auto length = static_cast<std::size_t>(end - after.begin());
    if (length == kColons.size() || !after.substr(length).starts_with(kColons)) {
        return std::nullopt;
    }
    return splitAt(text, name.size(), length + kColons.size());
}

std::optional<Command> splitAtKnownToken(WideStringView text) {
    std::optional<Command> first;
    for (const WideStringView token : kClientTokens) {
        const std::size_t begin = text.find(token);
        if (begin != WideStringView::npos && (!first || begin < first->application.size())) {
            first = splitAt(text, begin, token.size());
        }
    }
    return first;
}

/// Double colons around anything: the best guess at a token that nobody knows.
std::optional<Command> splitAtColons(WideStringView text) {
    const std::size_t begin = text.find(kColons);
    if (begin == WideStringView::npos) {
        return std::nullopt;
    }
    const std::size_t end = text.find(kColons, begin + kColons.size());
    if (end == WideStringView::npos) {
        return std::nullopt;
    }
    return splitAt(text, begin, end + kColons.size() - begin);
}

}  // namespace

std::optional<Command> splitCommand(WideStringView text, WideStringView connected) {
    auto command = splitAfterName(text, connected);
    if (command && (command->token != Tokens::kConnect || command->payload.empty())) {
        return command;
    }
    if (text.ends_with(Tokens::kConnect)) {
        return splitAt(text, text.size() - Tokens::kConnect.size(), Tokens::kConnect.size());
    }
    if (command) {
        return command;
    }
    command = splitAtKnownToken(text);
    return command ? command : splitAtColons(text);
}

}  // namespace Orvel::Service
