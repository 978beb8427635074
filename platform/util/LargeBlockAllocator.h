#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

#include <sys/mman.h>

namespace util {

/// An allocator for containers that grow to megabytes: blocks of 512 KiB or
/// more are aligned to 2 MiB and the kernel is asked to back them with huge
/// pages, so that filling one costs a page fault per 2 MiB instead of one
/// per 4 KiB. Smaller blocks come from operator new as usual.
template <typename T>
struct LargeBlockAllocator {
    using value_type = T;

    LargeBlockAllocator() noexcept = default;
    template <typename U>
    LargeBlockAllocator(const LargeBlockAllocator<U>&) noexcept
    {
    }

    static constexpr std::size_t sLarge = std::size_t(512) << 10;
    static constexpr std::size_t sHugePage = std::size_t(2) << 20;

    T* allocate(std::size_t n)
    {
        if (n > std::size_t(-1) / sizeof(T))
            throw std::bad_array_new_length();
        const std::size_t bytes = n * sizeof(T);
        if (bytes < sLarge)
            return static_cast<T*>(::operator new(bytes));
        const std::size_t rounded = (bytes + sHugePage - 1) / sHugePage * sHugePage;
        void* block = std::aligned_alloc(sHugePage, rounded);
        if (!block)
            throw std::bad_alloc();
#ifdef MADV_HUGEPAGE
        ::madvise(block, rounded, MADV_HUGEPAGE); // advice only: refused is fine
#endif
        return static_cast<T*>(block);
    }

    void deallocate(T* block, std::size_t n) noexcept
    {
        if (n * sizeof(T) < sLarge)
            ::operator delete(block);
        else
            std::free(block);
    }

    template <typename U>
    bool operator==(const LargeBlockAllocator<U>&) const noexcept
    {
        return true;
    }
};

} // namespace util
