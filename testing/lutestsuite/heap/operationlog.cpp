#include "testing/lutestsuite/heap/operationlog.h"

#include <exception>
#include <new>

#include "base/os/pages.h"

namespace LuTestSuite
{

struct COperationLog::SChunk
{
    static constexpr std::size_t sc_uiCapacity = 2000; ///< within 64 KB

    SChunk* next = nullptr;
    std::size_t count = 0;
    SOperation operations[sc_uiCapacity];
};

void COperationLog::Append(const SOperation& operation) noexcept
{
    if (m_last == nullptr || m_last->count == SChunk::sc_uiCapacity)
    {
        void* const pages = LbOs::AllocatePages(sizeof(SChunk));
        if (pages == nullptr)
        {
            // As in the allocation map, ending the process is better than wrong counts.
            std::terminate();
        }
        auto* const chunk = new (pages) SChunk;
        (m_last == nullptr ? m_first : m_last->next) = chunk;
        m_last = chunk;
    }
    m_last->operations[m_last->count++] = operation;
}

void COperationLog::Replay(void (*function)(const SOperation& operation) noexcept) noexcept
{
    while (m_first != nullptr)
    {
        SChunk* const chunk = m_first;
        m_first = chunk->next;
        for (std::size_t index = 0; index < chunk->count; ++index)
        {
            function(chunk->operations[index]);
        }
        LbOs::ReleasePages(chunk, sizeof(SChunk));
    }
    m_last = nullptr;
}

} // namespace LuTestSuite
