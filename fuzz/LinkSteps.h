#pragma once

#include "Require.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace hexmire::fuzz {

template <class Rig>
[[nodiscard]] bool IsConnected(const Rig& rig) {
    return rig.State() != "CLOSED" && rig.State() != "NOT CONNECTED";
}

/// The next step of an input for a link: one byte, its lower half the number of the step, those
/// behind the last step being a read. Then its upper half says how many bytes arrive, which follow
/// it in the input. A rig is kept to what a shell does: only a live connection tells of bytes.
///
/// `doStep` is called with the number of a step, `rig` is a MachineRig.
template <std::size_t Steps, class Rig, class DoStep>
void TakeStep(std::span<const std::uint8_t>& input, Rig& rig, const DoStep& doStep) {
    const std::uint8_t code = input.front();
    input = input.subspan(1);
    const std::size_t step = code % 16U;
    if (step < Steps) {
        doStep(step);
    } else {
        const std::size_t most = (code / 16U + 1U) * (step - Steps + 1U);
        const std::size_t count = std::min(most, input.size());
        if (IsConnected(rig)) rig.Feed(input.first(count));
        input = input.subspan(count);
    }
    Require(rig.Violation.empty(), rig.Violation.c_str());
}

/// Runs a link through an input. The first byte chooses how it is set up.
template <class Link, class End>
int RunLink(const std::uint8_t* data, std::size_t size, const End& end) {
    if (size == 0) return 0;
    std::span<const std::uint8_t> input(data + 1, size - 1);
    Link link(data[0]);
    while (!input.empty())
        link.Step(input);
    end(link);
    return 0;
}

}  // namespace hexmire::fuzz
