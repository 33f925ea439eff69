#ifndef ORVEL_ANALYTICS_TESTING_MATCHERS_H
#define ORVEL_ANALYTICS_TESTING_MATCHERS_H

#include <gmock/gmock.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <utility>

#include "orvel/analytics/testing/records.h"
#include "orvel/analytics/testing/value.h"

/// @file
/// GoogleTest matchers for what a `Service` has recorded. Only who includes this header needs
/// GoogleTest (1.12 or later, with gmock).
///
///     EXPECT_THAT(service.events(),
///                 ElementsAre(AllOf(OfDataClass("click"), HasValue("button", "save"))));
///
/// Wherever a matcher is taken, a plain value may stand, which is then compared.

namespace Orvel::Analytics::Testing {

/// What the matchers are made of; not for use by itself.
namespace Internal {

/// Matches an event or an object by the value of a name.
class ValueMatcher {
  public:
    /// Looks for a value of this name that the matcher takes.
    ValueMatcher(std::string name, testing::Matcher<const Value&> expected)
        : name_(std::move(name)), expected_(std::move(expected)) {}

    /// For GoogleTest.
    bool MatchAndExplain(const Value& object, testing::MatchResultListener* listener) const {
        const Value* const value = object.find(name_);
        if (value == nullptr) {
            *listener << "which has no value \"" << name_ << '"';
            return false;
        }
        *listener << "whose value \"" << name_ << "\" is " << *value;
        return expected_.Matches(*value);
    }
    /// For GoogleTest.
    bool MatchAndExplain(const Event& event, testing::MatchResultListener* listener) const {
        return MatchAndExplain(event.values, listener);
    }
    /// For GoogleTest.
    void DescribeTo(std::ostream* out) const {
        *out << "has a value \"" << name_ << "\" that ";
        expected_.DescribeTo(out);
    }
    /// For GoogleTest.
    void DescribeNegationTo(std::ostream* out) const {
        *out << "has no value \"" << name_ << "\" that ";
        expected_.DescribeTo(out);
    }

  private:
    std::string name_;
    testing::Matcher<const Value&> expected_;
};

/// Matches a string by its characters.
class TextMatcher {
  public:
    /// Looks for a string that the matcher takes.
    explicit TextMatcher(testing::Matcher<const std::string&> expected)
        : expected_(std::move(expected)) {}

    /// For GoogleTest.
    bool MatchAndExplain(const Value& value, testing::MatchResultListener* listener) const {
        return value.kind() == Value::Kind::String &&
               expected_.MatchAndExplain(value.string(), listener);
    }
    /// For GoogleTest.
    void DescribeTo(std::ostream* out) const {
        *out << "is a string that ";
        expected_.DescribeTo(out);
    }
    /// For GoogleTest.
    void DescribeNegationTo(std::ostream* out) const {
        *out << "is no string that ";
        expected_.DescribeTo(out);
    }

  private:
    testing::Matcher<const std::string&> expected_;
};

/// Matches a whole number.
class IntegerMatcher {
  public:
    /// Looks for a number that the matcher takes.
    explicit IntegerMatcher(testing::Matcher<std::int64_t> expected)
        : expected_(std::move(expected)) {}

    /// For GoogleTest.
    bool MatchAndExplain(const Value& value, testing::MatchResultListener* listener) const {
        const auto number = value.integer();
        return number && expected_.MatchAndExplain(*number, listener);
    }
    /// For GoogleTest.
    void DescribeTo(std::ostream* out) const {
        *out << "is a whole number that ";
        expected_.DescribeTo(out);
    }
    /// For GoogleTest.
    void DescribeNegationTo(std::ostream* out) const {
        *out << "is no whole number that ";
        expected_.DescribeTo(out);
    }

  private:
    testing::Matcher<std::int64_t> expected_;
};

}  // namespace Internal

/// Matches an event by the identifier of its data class.
/// @param id a text, or a matcher of `std::string`.
template <typename Expected>
auto OfDataClass(Expected id) {
    return testing::Field("dataClass", &Event::dataClass, id);
}

/// Matches an event by the time that the library stamped on it, such as `20240131T235959`.
/// @param time a text, or a matcher of `std::string`.
template <typename Expected>
auto HasTime(Expected time) {
    return testing::Field("time", &Event::time, time);
}

/// Matches an event by the version that the library stamped on it.
/// @param version a text, or a matcher of `std::string`.
template <typename Expected>
auto HasVersion(Expected version) {
    return testing::Field("version", &Event::version, version);
}

/// Matches an event, or a value that is an object, by one of its values.
/// @param name the name of the value: the field's identifier.
/// @param expected what the value is equal to (a string, a whole number, a truth value, null or a
///     `Value`), or a matcher of `Value`, such as `Text` and `Integer` are.
template <typename Expected>
auto HasValue(std::string name, Expected expected) {
    return testing::MakePolymorphicMatcher(
        Internal::ValueMatcher(std::move(name), testing::SafeMatcherCast<const Value&>(expected)));
}

/// Matches an event, or a value that is an object, that has a value of this name.
/// @param name the name of the value: the field's identifier.
inline auto HasValue(std::string name) { return HasValue(std::move(name), testing::_); }

/// Matches an event that has the values of an object, and no others.
/// @param json the object, in UTF-8.
/// @throws std::invalid_argument when it is no JSON.
inline auto HasValues(const std::string& json) {
    return testing::Field("values", &Event::values, Value::parse(json));
}

/// Matches a value that is a string.
/// @param expected a text, or a matcher of `std::string`; the characters are UTF-8.
template <typename Expected>
auto Text(Expected expected) {
    return testing::MakePolymorphicMatcher(
        Internal::TextMatcher(testing::SafeMatcherCast<const std::string&>(expected)));
}

/// Matches a value that is a number of 64 bits without fraction and exponent.
/// @param expected a number, or a matcher of `std::int64_t`.
template <typename Expected>
auto Integer(Expected expected) {
    return testing::MakePolymorphicMatcher(
        Internal::IntegerMatcher(testing::SafeMatcherCast<std::int64_t>(expected)));
}

}  // namespace Orvel::Analytics::Testing

#endif
