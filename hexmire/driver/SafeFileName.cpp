#include <hexmire/driver/SafeFileName.h>
#include <hexmire/support/HexBytes.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace hexmire::link {

namespace {

constexpr std::size_t kLongestName = 140;
constexpr std::string_view kHashMark = "%~";
constexpr std::size_t kHashDigits = 16;

/// Never the process's locale, which may call more than these letters.
constexpr bool IsPlain(char one) noexcept {
    return (one >= 'A' && one <= 'Z') || (one >= 'a' && one <= 'z') || (one >= '0' && one <= '9') ||
           one == '-' || one == '_';
}

constexpr char ToUpper(char one) noexcept {
    return one >= 'a' && one <= 'z' ? static_cast<char>(one - 'a' + 'A') : one;
}

/// Shared folders of Windows take these for devices, whatever stands behind a dot.
bool NamesADevice(std::string_view text) noexcept {
    constexpr std::array<std::string_view, 4> kDevices{"CON", "PRN", "AUX", "NUL"};
    constexpr std::array<std::string_view, 2> kNumbered{"COM", "LPT"};
    constexpr std::size_t kLength = 3;
    std::string_view stem = text.substr(0, text.find('.'));
    if (stem.size() < kLength || stem.size() > kLength + 1) return false;
    if (stem.size() == kLength + 1 && (stem.back() < '0' || stem.back() > '9')) return false;
    const auto isStart = [stem](std::string_view device) {
        return std::equal(device.begin(), device.end(), stem.begin(), [](char wanted, char one) {
            return wanted == ToUpper(one);
        });
    };
    return stem.size() == kLength ? std::any_of(kDevices.begin(), kDevices.end(), isStart)
                                  : std::any_of(kNumbered.begin(), kNumbered.end(), isStart);
}

void AppendEncoded(std::string& name, char one) {
    const auto byte = static_cast<unsigned>(static_cast<unsigned char>(one));
    name += '%';
    name += HexDigit(byte >> 4U);
    name += HexDigit(byte);
}

std::uint64_t HashOf(std::string_view text) noexcept {
    std::uint64_t hash = 0xCBF2'9CE4'8422'2325U;
    for (const char one : text) {
        hash = (hash ^ static_cast<unsigned char>(one)) * 0x100'0000'01B3U;
    }
    return hash;
}

}  // namespace

std::string SafeFileName(std::string_view text) {
    if (text.empty()) return "%empty";
    std::string name;
    std::size_t kept = 0;  // how much of it stands before the hash of a longer name
    const bool namesADevice = NamesADevice(text);
    for (std::size_t index = 0; index < text.size() && name.size() <= kLongestName; ++index) {
        if (name.size() <= kLongestName - kHashMark.size() - kHashDigits) kept = name.size();
        const bool isEdge = index == 0 || index + 1 == text.size();
        const bool stays =
            text[index] == '.' ? !isEdge : IsPlain(text[index]) && !(index == 0 && namesADevice);
        if (stays) {
            name += text[index];
        } else {
            AppendEncoded(name, text[index]);
        }
    }
    if (name.size() <= kLongestName) return name;
    name.resize(kept);
    name += kHashMark;
    const std::uint64_t hash = HashOf(text);
    for (unsigned shift = 64; shift > 0; shift -= 4) {
        name += HexDigit(static_cast<unsigned>(hash >> (shift - 4U)) & 0xFU);
    }
    return name;
}

}  // namespace hexmire::link
