#include "core/platform/freememory.h"

#include <cstdint>

#ifdef __linux__
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace duomir {

void releaseZeroPages(const void *begin, const void *end)
{
#ifdef __linux__
    static const std::uintptr_t page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const std::uintptr_t from = (reinterpret_cast<std::uintptr_t>(begin) + page - 1) & ~(page - 1);
    const std::uintptr_t to = reinterpret_cast<std::uintptr_t>(end) & ~(page - 1);
    if (to > from)
        ::madvise(reinterpret_cast<void *>(from), to - from, MADV_DONTNEED);
#else
    (void)begin;
    (void)end;
#endif
}

} // namespace duomir
