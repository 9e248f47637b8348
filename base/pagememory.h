/// Memory for data that the process keeps across cases. Not for use outside of LbBase.
#pragma once

#include <cstddef>
#include <memory_resource>
#include <new>

#include "base/os/pages.h"

/// Takes pages from the system, so that a heap tracker does not count them as heap growth of the current case.
class CPageMemory : public std::pmr::memory_resource
{
    void* do_allocate(std::size_t size, std::size_t /*alignment*/) override
    {
        void* const pages = LbOs::AllocatePages(size);
        return pages == nullptr ? throw std::bad_alloc() : pages;
    }
    void do_deallocate(void* pages, std::size_t size, std::size_t /*alignment*/) override
    {
        LbOs::ReleasePages(pages, size);
    }
    bool do_is_equal(const std::pmr::memory_resource& other) const noexcept override { return this == &other; }
};

/// A static object that is not on the heap and is never destroyed, because test cases may still use it while the
/// process exits.
template<typename T>
T& GetEternal()
{
    alignas(T) static std::byte s_memory[sizeof(T)];
    static T& s_object = *new (s_memory) T;
    return s_object;
}
