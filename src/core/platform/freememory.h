#pragma once

#include <cstddef>

namespace duomir {

// Drops the pages that lie wholly inside [begin, end) from memory. Only for memory whose bytes
// are all zero already: a dropped page reads back as zeros, so its contents do not change.
// Where the system offers no such call nothing happens.
void releaseZeroPages(const void *begin, const void *end);

// Memory for large arrays (from 256 KiB on) straight from the system, smaller blocks from the heap.
// A large block goes back to the system the moment it is freed: the C library would keep it for
// later, so a scan that gathers its entries in blocks and then moves them into one array would
// hold both at its peak. Throws std::bad_alloc when there is no memory.
void *allocateLarge(std::size_t bytes);
void freeLarge(void *block, std::size_t bytes);

template <class T> struct LargeAllocator
{
    using value_type = T;
    LargeAllocator() = default;
    template <class U>
    LargeAllocator(const LargeAllocator<U> &) // NOLINT: allocators convert implicitly
    {}
    T *allocate(std::size_t n) { return static_cast<T *>(allocateLarge(n * sizeof(T))); }
    void deallocate(T *block, std::size_t n) { freeLarge(block, n * sizeof(T)); }
    friend bool operator==(const LargeAllocator &, const LargeAllocator &) { return true; }
};

} // namespace duomir
