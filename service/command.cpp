#include "service/command.h"

#include <array>

namespace Orvel::Service {

namespace {

constexpr WideStringView kColons = u"::";

constexpr std::array kClientTokens = {Tokens::kConnect,    Tokens::kRegister,
                                      Tokens::kCollect,    Tokens::kGetConsent,
                                      Tokens::kSetConsent, Tokens::kGetPrivacyDocuments};

Command splitAt(WideStringView text, std::size_t begin, std::size_t length) {
    return {text.substr(0, begin), text.substr(begin, length), text.substr(begin + length)};
}

/// A token that anybody knows, directly after the connection's own name.
std::optional<Command> splitAfterName(WideStringView text, WideStringView name) {
    if (name.empty() || !text.starts_with(name)) {
        return std::nullopt;
    }
    const WideStringView after = text.substr(name.size());
    for (const WideStringView token : kClientTokens) {
        if (after.starts_with(token)) {
            return splitAt(text, name.size(), token.size());
        }
    }
    return std::nullopt;
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
std::optional<Command> splitAtColons(WideStringView text, WideStringView name) {
    const bool isOwn = text.starts_with(name) && text.substr(name.size()).starts_with(kColons);
    const std::size_t begin = isOwn ? name.size() : text.find(kColons);
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
    const auto own = splitAfterName(text, connected);
    if (own && own->token != Tokens::kConnect) {
        return own;
    }
    // A handshake has no payload, so its token is at the end whatever the name before it holds.
    if (text.ends_with(Tokens::kConnect)) {
        return splitAt(text, text.size() - Tokens::kConnect.size(), Tokens::kConnect.size());
    }
    const auto known = splitAtKnownToken(text);
    return known ? known : splitAtColons(text, connected);
}

}  // namespace Orvel::Service
