#pragma once

namespace duomir {

// A date: days since 1899-12-30 00:00, the time of day as the fraction, local time to the second.
using Date = double;
// 1970-01-01, where file times count from, as a Date.
inline constexpr Date UnixEpochAsDate = 25569.0;

} // namespace duomir
