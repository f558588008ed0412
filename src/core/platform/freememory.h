#pragma once

namespace duomir {

// Drops the pages that lie wholly inside [begin, end) from memory. Only for memory whose bytes
// are all zero already: a dropped page reads back as zeros, so its contents do not change.
// Where the system offers no such call nothing happens.
void releaseZeroPages(const void *begin, const void *end);

} // namespace duomir
