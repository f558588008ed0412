#include "core/platform/freememory.h"

#include <cstdint>
#include <new>

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

namespace {
constexpr std::size_t LargeBlock = 256 * 1024;
} // namespace

void *allocateLarge(std::size_t bytes)
{
#ifdef __linux__
    if (bytes >= LargeBlock) {
        void *block =
            ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (block == MAP_FAILED)
            throw std::bad_alloc();
        return block;
    }
#endif
    return ::operator new(bytes);
}

void freeLarge(void *block, std::size_t bytes)
{
#ifdef __linux__
    if (bytes >= LargeBlock) {
        ::munmap(block, bytes);
        return;
    }
#endif
    ::operator delete(block, bytes);
}

} // namespace duomir
