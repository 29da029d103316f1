#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <limits>
#include <type_traits>
#include <utility>

namespace kelp::oct {

/// A growable array of plain records straight from the system's pages. All elements start as zero
/// bytes; an element costs memory only from its first write on, and growth moves pages instead of
/// copying them, so that neither a generous size nor a growth shows in the peak of memory.
template <typename T>
class PageBlock
{
    static_assert(std::is_trivially_copyable_v<T>);

public:
    PageBlock() = default;
    ~PageBlock() { release(); }
    PageBlock(const PageBlock&) = delete;
    PageBlock& operator=(const PageBlock&) = delete;

    /// Room for at least so many elements; what is there stays. False if the system refuses, and
    /// then nothing has changed.
    bool reserve(std::size_t count) noexcept
    {
        if (count <= m_capacity) {
            return true;
        }
        if (count > std::numeric_limits<std::size_t>::max() / sizeof(T)) {
            return false;
        }
        const std::size_t bytes = count * sizeof(T);
        void* const pages = m_data ? mremap(m_data, m_capacity * sizeof(T), bytes, MREMAP_MAYMOVE)
                                   : mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (pages == MAP_FAILED) {
            return false;
        }
        // Large pages spare most of the address translation that a walk over a big graph costs.
        // Where they cannot be had all works the same, so the result does not matter.
        static_cast<void>(madvise(pages, bytes, MADV_HUGEPAGE));
        m_data = static_cast<T*>(pages);
        m_capacity = count;
        return true;
    }

    /// Gives the pages back to the system: every element is zero again, the room stays.
    void discard() noexcept
    {
        if (m_data) {
            static_cast<void>(madvise(m_data, m_capacity * sizeof(T), MADV_DONTNEED));
        }
    }

    void release() noexcept
    {
        if (m_data) {
            munmap(m_data, m_capacity * sizeof(T));
            m_data = nullptr;
            m_capacity = 0;
        }
    }

    std::size_t capacity() const { return m_capacity; }
    std::size_t bytes() const { return m_capacity * sizeof(T); }
    T* data() { return m_data; }
    const T* data() const { return m_data; }
    T& operator[](std::size_t index) { return m_data[index]; }
    const T& operator[](std::size_t index) const { return m_data[index]; }

private:
    T* m_data = nullptr;
    std::size_t m_capacity = 0;
};

} // namespace kelp::oct
