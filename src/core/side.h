#pragma once

#include <array>

namespace duomir {

// The two sides of a pair and of every row. A side is the index of the rows' two-element fields
// as it is, hence not a scoped enum; it is written `Side::Source` all the same.
enum Side : int { Source = 0, Destination = 1 };

inline constexpr std::array<Side, 2> Sides{Side::Source, Side::Destination};

// Where a copy from `side` goes; what a deletion on `side` looks at.
constexpr Side otherSide(Side side)
{
    return side == Side::Source ? Side::Destination : Side::Source;
}

} // namespace duomir
