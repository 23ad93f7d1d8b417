#pragma once

#include "equipment/Datum.h"
#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

namespace hexmire::program {

/// A value of a JSON file together with where it stands, so that whoever reads it can tell what is
/// wrong with it. Every reader throws UsageError with the place. The JSON outlives this object.
class JsonPlace {
public:
    JsonPlace(const nlohmann::ordered_json& value, std::string place)
        : value_(value), place_(std::move(place)) {}

    [[noreturn]] void Refuse(const std::string& reason) const;

    /// An object whose members have these names and no other.
    void Members(std::initializer_list<const char*> names) const;
    [[nodiscard]] JsonPlace At(const std::string& member) const;
    [[nodiscard]] std::optional<JsonPlace> Find(const std::string& member) const;
    /// The elements of an array; none when the member is missing.
    [[nodiscard]] std::vector<JsonPlace> ElementsOf(const std::string& member) const;
    [[nodiscard]] std::vector<JsonPlace> Elements() const;

    [[nodiscard]] std::string Text() const;  ///< in ISO 8859-1
    [[nodiscard]] bool Truth() const;
    [[nodiscard]] std::int64_t Whole(std::int64_t least, std::int64_t largest) const;
    /// From 0 to 18446744073709551615.
    [[nodiscard]] std::uint64_t Whole() const;
    /// A number is a U4, a text an A.
    [[nodiscard]] Datum Identifier() const;
    [[nodiscard]] std::int32_t Format() const;
    /// A value of that format: a text, a truth value, a number or an array of them; for a list an
    /// array of objects with "format" and "value". `level` is that of a list.
    [[nodiscard]] Datum Value(std::int32_t format, std::size_t level = 1) const;

    // Members that may be missing.
    [[nodiscard]] std::string TextOf(const std::string& member) const;
    [[nodiscard]] bool TruthOf(const std::string& member, bool otherwise) const;

private:
    [[nodiscard]] Datum ListValue(std::size_t level) const;
    [[nodiscard]] Datum SingleValue(std::int32_t format) const;

    const nlohmann::ordered_json& value_;
    std::string place_;
};

}  // namespace hexmire::program
