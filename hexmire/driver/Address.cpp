#include <hexmire/driver/Address.h>
#include <hexmire/support/HexBytes.h>

#include <algorithm>

namespace hexmire::link {

namespace {

constexpr std::size_t kLongestName = 253;  // a DNS name in text form

bool IsDigit(char one) noexcept { return one >= '0' && one <= '9'; }

bool IsNameCharacter(char one) noexcept {
    return IsDigit(one) || (one >= 'a' && one <= 'z') || (one >= 'A' && one <= 'Z') || one == '-' ||
           one == '_' || one == '.';
}

/// Cuts off and returns the text in front of the separator, the whole text when there is none.
std::string_view TakeField(std::string_view& text, char separator) noexcept {
    const std::size_t end = std::min(text.find(separator), text.size());
    const std::string_view field = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return field;
}

bool IsIPv4(std::string_view text) noexcept {
    if (std::count(text.begin(), text.end(), '.') != 3) return false;
    for (int field = 0; field < 4; ++field) {
        const std::string_view digits = TakeField(text, '.');
        if (digits.empty() || digits.size() > 3) return false;
        if (!std::all_of(digits.begin(), digits.end(), IsDigit)) return false;
        int value = 0;
        for (const char digit : digits) {
            value = value * 10 + (digit - '0');
        }
        if (value > 255) return false;
    }
    return true;
}

bool IsHexGroup(std::string_view text) noexcept {
    return !text.empty() && text.size() <= 4 &&
           std::all_of(text.begin(), text.end(), [](char one) { return HexDigitValue(one) >= 0; });
}

/// Number of 16-bit groups in a part of an IPv6 address that has no "::"; -1 when it is malformed.
int CountGroups(std::string_view text, bool mayEndInIPv4) noexcept {
    if (text.empty()) return 0;
    const auto fields = std::count(text.begin(), text.end(), ':') + 1;
    if (fields > 8) return -1;
    int groups = 0;
    for (auto left = fields; left > 0; --left) {
        const std::string_view group = TakeField(text, ':');
        if (IsHexGroup(group)) {
            ++groups;
        } else if (left == 1 && mayEndInIPv4 && IsIPv4(group)) {
            groups += 2;
        } else {
            return -1;
        }
    }
    return groups;
}

bool IsIPv6(std::string_view text) noexcept {
    const std::size_t zone = text.find('%');
    if (zone != std::string_view::npos) {
        if (zone + 1 == text.size()) return false;
        text = text.substr(0, zone);
    }
    const std::size_t gap = text.find("::");
    if (gap == std::string_view::npos) return CountGroups(text, true) == 8;
    const int front = CountGroups(text.substr(0, gap), false);
    const int back = CountGroups(text.substr(gap + 2), true);
    return front >= 0 && back >= 0 && front + back <= 7;
}

}  // namespace

AddressKind ClassifyAddress(std::string_view text) noexcept {
    if (text.find(':') != std::string_view::npos) {
        return IsIPv6(text) ? AddressKind::IPv6 : AddressKind::Bad;
    }
    if (IsIPv4(text)) return AddressKind::IPv4;
    const bool legal = !text.empty() && text.size() <= kLongestName &&
                       std::all_of(text.begin(), text.end(), IsNameCharacter) &&
                       text.front() != '.' && text.front() != '-' &&
                       text.find("..") == std::string_view::npos;
    const bool numeric =
        std::all_of(text.begin(), text.end(), [](char one) { return IsDigit(one) || one == '.'; });
    return legal && !numeric ? AddressKind::Name : AddressKind::Bad;
}

bool IsAnyAddress(std::string_view text) noexcept { return text == "0.0.0.0"; }

}  // namespace hexmire::link
