#ifndef ORVEL_JSON_PORTABLE_NODE_H
#define ORVEL_JSON_PORTABLE_NODE_H

#include <cstdint>
#include <list>
#include <string_view>

#include "orvel/analytics/text.h"

namespace Orvel::Analytics::Json {

/// One value of a document. Texts and other nodes are the document's, too; texts are generalised
/// UTF-8.
struct Node {
    enum class Kind : std::uint8_t {
        kNull,
        kBoolean,
        kNumber,
        kString,
        kObject,
        kArray,
        /// An object that is a text already.
        kSerialised,
        /// One or more of them, as one child of an array.
        kSerialisedList,
    };

    struct Children {
        Node* first;
        Node* last;
    };

    union Content {
        /// A string's characters; the spelling of a null, a boolean or a number.
        std::string_view text;
        Children children;
        WideStringView serialised;
        const std::list<WideString>* serialisedList;
    };

    Node(Kind kindOfNode, std::string_view text) : kind(kindOfNode), content{text} {
        if (isContainer()) {
            content.children = {nullptr, nullptr};
        }
    }

    [[nodiscard]] bool isContainer() const { return kind == Kind::kObject || kind == Kind::kArray; }

    /// Makes a node the last one in this container.
    void append(Node* child) {
        child->parent = this;
        child->next = nullptr;
        (content.children.last == nullptr ? content.children.first : content.children.last->next) =
            child;
        content.children.last = child;
        ++count;
    }

    /// Takes over what another node is, but neither its name nor its place.
    void become(const Node& other) {
        kind = other.kind;
        count = other.count;
        content = other.content;
        if (isContainer()) {
            for (Node* child = content.children.first; child != nullptr; child = child->next) {
                child->parent = this;
            }
        }
    }

    Kind kind;
    /// How many children a container has.
    std::uint32_t count = 0;
    /// In an object, the name of the member.
    std::string_view name;
    Node* parent = nullptr;
    Node* next = nullptr;
    Content content;
};

}  // namespace Orvel::Analytics::Json

#endif
