#pragma once

#include <string_view>

namespace hexmire::bench {

/// The bodies w1a to w1e: read over without keeping anything (walk), made into a tree of malloc'ed
/// nodes that is read and freed (tree), written from such a tree (encode); copied (memcpy), and
/// copied with the bytes of each U4 turned round (swap).
void RaceFloorCodec(std::string_view dataDirectory);

}  // namespace hexmire::bench
