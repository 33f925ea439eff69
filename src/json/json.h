#ifndef ORVEL_JSON_JSON_H
#define ORVEL_JSON_JSON_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>

#include "orvel/analytics/text.h"

/// The JSON documents that the library builds and reads: one interface, one backend a platform.
///
/// A `Document` owns every value made or parsed in it; the other classes are handles, copied freely
/// and valid for as long as their document lives. A value that has been set or appended is part of
/// its container and is not changed any more. A document is used by one thread.
///
/// A null code unit follows every text and name that is handed in, as it does in literals and
/// strings: the platform takes them without copying.
///
/// Every operation raises its failure at once: `hresult_error` with the failing status, or
/// `std::bad_alloc`.
namespace Orvel::Analytics::Json {

class Array;
class Document;
class Object;

/// A value of any JSON type; a JSON null is a value too.
class Value {
  public:
    /// The value as compact JSON text, nested values included.
    [[nodiscard]] WideString stringify() const;

    /// How many code units that text has.
    [[nodiscard]] std::size_t serialisedLength() const;

  protected:
    friend class Document;
    friend class Object;
    friend class Array;
    friend class ObjectView;

    Value(Document& document, void* node) : document_(&document), node_(node) {}

    Document* document_;
    void* node_;  // The backend's own value.
};

/// The read-only view of an object as a map from name to value.
class ObjectView {
  public:
    [[nodiscard]] bool hasKey(WideStringView name) const;

    /// The value of a present member, or nothing when the platform has no value object for it.
    [[nodiscard]] std::optional<Value> lookup(WideStringView name) const;

  private:
    friend class Object;
    explicit ObjectView(const Value& object) : object_(object) {}

    Value object_;
    // Where a backend that walks found the last member: the next one is often behind it.
    [[maybe_unused]] mutable void* found_ = nullptr;
};

/// A JSON object. Its members keep the order in which they came.
class Object : public Value {
  public:
    /// Adds a member, or replaces the value of the member of that name.
    void setNamedValue(WideStringView name, const Value& value);

    [[nodiscard]] WideString getNamedString(WideStringView name) const;
    [[nodiscard]] bool getNamedBoolean(WideStringView name) const;
    [[nodiscard]] Object getNamedObject(WideStringView name) const;
    [[nodiscard]] Array getNamedArray(WideStringView name) const;

    [[nodiscard]] std::uint32_t size() const;
    [[nodiscard]] ObjectView getView() const;

  private:
    friend class Document;
    using Value::Value;
};

/// A JSON array.
class Array : public Value {
  public:
    void append(const Value& value);

    /// Appends objects that this layer serialised earlier, in their order. From then on the array
    /// is only to be serialised.
    /// @param texts the objects' texts, which outlive the document.
    void appendSerialised(const std::list<WideString>& texts);

    [[nodiscard]] std::uint32_t size() const;
    [[nodiscard]] Value getAt(std::uint32_t index) const;

  private:
    friend class Document;
    friend class Object;
    using Value::Value;

    // Where a backend that walks found the last element: the next one is mostly behind it.
    [[maybe_unused]] mutable void* found_ = nullptr;
    [[maybe_unused]] mutable std::uint32_t foundAt_ = 0;
};

/// The owner of the values of one document.
class Document {
  public:
    Document();
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;
    ~Document();

    [[nodiscard]] Object newObject();
    [[nodiscard]] Array newArray();

    /// Parses one JSON object (RFC 8259): well-formed UTF-16, nested at most 1,024 deep. Of members
    /// with equal names the last one's value survives. Numbers keep their spelling where the
    /// platform allows it.
    [[nodiscard]] Object parseObject(WideStringView text);

    /// A string that holds `text` code unit for code unit, unpaired surrogates included.
    [[nodiscard]] Value stringValue(WideStringView text);

    /// @param number a finite number, written in its shortest form.
    [[nodiscard]] Value numberValue(double number);

    /// An object that this layer serialised earlier.
    /// @param text the object's text, which outlives the document.
    [[nodiscard]] Value serialisedObject(WideStringView text);

  private:
    friend class Value;
    friend class Object;
    friend class Array;
    friend class ObjectView;
    struct Impl;

    // The backend's state lives in the document, so that a small one takes no memory but its own.
    static constexpr std::size_t kImplSize = 6144;
    alignas(std::max_align_t) std::array<std::byte, kImplSize> memory_;
    Impl* impl_ = nullptr;
};

}  // namespace Orvel::Analytics::Json

#endif
