// A message body as a peer may send it: decoding ends, and what was decoded encodes to bytes that
// decode and encode to themselves. Bodies that a link refuses never get this far.
#include <hexmire/driver/BodyCheck.h>
#include <hexmire/sml.h>

#include "Require.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace {

constexpr std::uint32_t kDeepest = 1'000;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::uint8_t> body(data, size);
    hexmire::link::BodyCheck check;
    if (check.Check(body, kDeepest) != hexmire::link::BodyCheck::Verdict::Pass) return 0;

    const auto first = hexmire::DecodeBody(body);
    static_cast<void>(hexmire::RenderSml(*first.Message, true));
    if (!first.Ok) return 0;

    const std::vector<std::uint8_t> bytes = hexmire::EncodeBody(*first.Message);
    const auto second = hexmire::DecodeBody(bytes);
    hexmire::fuzz::Require(second.Ok, "encoded bytes decode");
    hexmire::fuzz::Require(hexmire::EncodeBody(*second.Message) == bytes,
                           "a decoded body encodes to the same bytes");
    return 0;
}
