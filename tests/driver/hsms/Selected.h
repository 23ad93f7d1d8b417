#pragma once

#include "../../fakes/HsmsRig.h"
#include <gtest/gtest.h>

#include <cstdint>

namespace hexmire::test {

/// Settings of a link that sends no Linktest.req.
[[nodiscard]] inline LinkSettings Quiet(std::int32_t portType = 4, bool active = true) {
    LinkSettings settings = HsmsRig::Settings(portType, active);
    settings.LinktestInterval = LinkSettings::Milliseconds(0);
    return settings;
}

/// A port that is opened, connected and selected by its peer; on the active side our own
/// Select.req, 38000000, is still open.
inline void SelectByPeer(HsmsRig& rig) {
    rig.Do("open");
    rig.Do("connected");
    rig.Do("rx SelectReq FFFF 000000FF");
    ASSERT_EQ(rig.State(), "SELECTED");
}

/// The same with the answer to our own Select.req.
inline void Select(HsmsRig& rig) {
    SelectByPeer(rig);
    if (rig.Runs(link::TimerId::T6)) rig.Do("rx SelectRsp FFFF 38000000");
}

}  // namespace hexmire::test
