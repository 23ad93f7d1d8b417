#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace hexmire::program {

/// One end of a TCP link, written ADDR:PORT or [ADDR]:PORT.
struct Endpoint {
    std::string Address;
    std::int32_t Port = 0;  ///< [1..65535]

    bool operator==(const Endpoint&) const = default;
};

/// None for anything else.
[[nodiscard]] std::optional<Endpoint> ParseEndpoint(std::string_view text);

/// As ParseEndpoint reads it.
[[nodiscard]] std::string EndpointText(const Endpoint& endpoint);

}  // namespace hexmire::program
