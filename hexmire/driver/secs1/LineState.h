#pragma once

#include <hexmire/driver/secs1/Line.h>

namespace hexmire::secs1 {

/// A row of the line's state table. An empty cell means: not expected here; count it and stay.
struct Line::State {
    using Cell = Next (*)(Line&);
    using ByteCell = Next (*)(Line&, std::uint8_t);

    std::string_view Name;
    void (*Enter)(Line&) = nullptr;
    void (*Exit)(Line&) = nullptr;
    ByteCell OnByte = nullptr;
    bool TimesCharacters = false;  ///< each read that leaves the line here restarts T1
    Cell OnT1 = nullptr;
    Cell OnT2 = nullptr;
    Cell OnCap = nullptr;
};

}  // namespace hexmire::secs1
