#pragma once

#include <hexmire/core/detail/SmlScanner.h>

#include <cstdint>
#include <string>

namespace hexmire::detail {

/// The first line of a message: `name: 'S1F1' W`, name, quotes and W being optional.
struct SmlHeader {
    std::string Name;
    std::int32_t Stream = 0;
    std::int32_t Function = 0;
    bool ReplyExpected = false;

    /// As the renderer writes it.
    [[nodiscard]] std::string Text() const;
};

/// Takes the header; throws SmlError.
[[nodiscard]] SmlHeader ReadSmlHeader(SmlScanner& scanner);

/// How many elements an item says it has: `[n]`, `[n..m]` or `,n`.
struct SmlCount {
    std::size_t Offset = 0;
    std::size_t Least = 0;
    std::size_t Most = 0;
    bool IsStated = false;
};

/// Takes a count, if one is there; throws SmlError.
[[nodiscard]] SmlCount ReadSmlCount(SmlScanner& scanner);

/// Throws SmlError unless an item has as many elements as it says. `what` names them.
void CheckSmlCount(const SmlCount& count, std::size_t found, const char* what);

}  // namespace hexmire::detail
