#pragma once

#include <hexmire/support/Fault.h>
#include <hexmire/support/Variant.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <type_traits>
#include <vector>

namespace hexmire::testing_conversions {

/// Result as text, or "fault n".
template <class Convert>
std::string Outcome(Convert&& convert, const Variant& value) {
    try {
        const auto result = convert(value);
        if constexpr (std::is_same_v<decltype(result), const std::string>) {
            return result;
        } else if constexpr (std::is_same_v<decltype(result), const Decimal>) {
            return result.ToText();
        } else {
            return std::to_string(result);
        }
    } catch (const Fault& fault) {
        return "fault " + std::to_string(fault.Number());
    }
}

struct Row {
    Variant Value;
    const char* Result;
};

template <class Convert>
void Check(Convert&& convert, const std::vector<Row>& rows) {
    for (std::size_t index = 0; index < rows.size(); ++index) {
        EXPECT_EQ(Outcome(convert, rows[index].Value), rows[index].Result) << "row " << index;
    }
}

}  // namespace hexmire::testing_conversions
