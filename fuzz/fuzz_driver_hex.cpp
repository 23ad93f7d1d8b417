// The hex texts that a driver hands to the control, well-formed or not. The input is a row of
// events: one byte for the event, one for the length of its text, then the text.
#include <hexmire/driver/BodyCheck.h>
#include <hexmire/support/HexBytes.h>

#include "../tests/fakes/TestHost.h"
#include "Require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace {

using namespace hexmire;

class Reader {
public:
    explicit Reader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
    [[nodiscard]] bool AtEnd() const { return bytes_.empty(); }
    std::uint8_t Byte() {
        if (bytes_.empty()) return 0;
        const std::uint8_t value = bytes_.front();
        bytes_ = bytes_.subspan(1);
        return value;
    }
    /// Bytes of a block whose length stands in front; fewer at the end of the input.
    std::span<const std::uint8_t> Block() {
        const std::size_t size = std::min<std::size_t>(Byte(), bytes_.size());
        const auto block = bytes_.first(size);
        bytes_ = bytes_.subspan(size);
        return block;
    }

private:
    std::span<const std::uint8_t> bytes_;
};

std::string RawText(std::span<const std::uint8_t> bytes) { return {bytes.begin(), bytes.end()}; }

/// What a text that may not be hex reads as, as far as it does.
std::vector<std::uint8_t> ReadBytes(const std::string& text) {
    std::vector<std::uint8_t> bytes(text.size() / 3);
    static_cast<void>(ReadHexText(text, bytes.size(), bytes.data()));
    return bytes;
}

/// Bodies that a link refuses never reach the control.
bool PassesLink(std::span<const std::uint8_t> body) {
    constexpr std::uint32_t kDeepest = 1'000;
    return link::BodyCheck().Check(body, kDeepest) == link::BodyCheck::Verdict::Pass;
}

void Drive(fakes::TestHost& host, Reader& input) {
    SECSIServiceEvents& events = host.DriverEvents();
    const std::uint8_t event = input.Byte();
    switch (event % 8) {
        case 0:
            events.SecsMsgSend(RawText(input.Block()));
            break;
        case 1:
            events.SecsBlockReceive(RawText(input.Block()));
            break;
        case 2: {
            const std::string header = RawText(input.Block());
            const std::string body = RawText(input.Block());
            if (!PassesLink(ReadBytes(body))) break;
            events.SecsMsgReceive(header, body, static_cast<std::int32_t>(body.size() / 3));
            break;
        }
        case 3: {  // well-formed texts, any bytes
            const auto header = input.Block();
            const auto body = input.Block();
            if (!PassesLink(body)) break;
            events.SecsMsgReceive(
                HexText(header), HexText(body), static_cast<std::int32_t>(body.size()));
            break;
        }
        case 4:
            events.SecsBlockReceive(HexText(input.Block()));
            break;
        case 5:
            events.SecsMsgSend(HexText(input.Block()));
            break;
        case 6: {  // a length that may not fit the text
            const auto header = input.Block();
            const auto body = input.Block();
            if (!PassesLink(body)) break;
            events.SecsMsgReceive(HexText(header), HexText(body), event - 64);
            break;
        }
        default:
            if (const SECSTransPtr trans = host.Control().NewSECSTransaction("S1F1")) trans->Send();
            break;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fakes::TestHost host;
    host.AddTemplate("S1F1", 1, 1);
    host.AddTemplate("S9F7", 9, 7)->Primary()->Root()->AddNew(1);
    Reader input({data, size});
    while (!input.AtEnd())
        Drive(host, input);
    for (const SECSTransPtr& primary : host.Primaries)
        primary->Reply();
    fuzz::Require(host.Control().NewSECSTransaction() != nullptr, "the control goes on");
    return 0;
}
