#include "Endpoint.h"

#include <charconv>

namespace hexmire::program {

std::optional<Endpoint> ParseEndpoint(std::string_view text) {
    const std::size_t colon = text.rfind(':');
    if (colon == std::string_view::npos) return std::nullopt;
    std::string_view address = text.substr(0, colon);
    if (address.starts_with('[') && address.ends_with(']')) {
        address = address.substr(1, address.size() - 2);
    } else if (address.find(':') != std::string_view::npos) {
        return std::nullopt;  // IPv6 without brackets: its own colons would be taken for the
                              // port's.
    }
    const std::string_view digits = text.substr(colon + 1);
    std::int32_t port = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
    const bool whole = error == std::errc() && end == digits.data() + digits.size();
    if (address.empty() || !whole || port < 1 || port > 65'535) return std::nullopt;
    return Endpoint{.Address = std::string(address), .Port = port};
}

std::string EndpointText(const Endpoint& endpoint) {
    const bool bracketed = endpoint.Address.find(':') != std::string::npos;
    const std::string address = bracketed ? '[' + endpoint.Address + ']' : endpoint.Address;
    return address + ':' + std::to_string(endpoint.Port);
}

}  // namespace hexmire::program
