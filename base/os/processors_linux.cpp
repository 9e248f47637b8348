#include "base/os/processors.h"

#include <optional>

#include <sched.h>

namespace LbOs
{

namespace
{

constexpr pid_t c_CallingThread = 0;

/// The processor that runs the calling thread; empty if a cpu_set_t cannot represent it.
std::optional<cpu_set_t> getPresentProcessor()
{
    const int processor = sched_getcpu();
    if (processor < 0 || processor >= CPU_SETSIZE)
    {
        return std::nullopt;
    }
    cpu_set_t processors;
    CPU_ZERO(&processors);
    CPU_SET(processor, &processors);
    return processors;
}

} // namespace

struct CThreadProcessors::SState
{
    bool isRead = false; ///< always false on machines with more processors than a set can represent
    cpu_set_t processors = {};
};

CThreadProcessors::CThreadProcessors() : m_state(std::make_unique<SState>()) {}

CThreadProcessors::~CThreadProcessors() = default;

void CThreadProcessors::Read()
{
    // If an earlier Restore failed, the thread is still bound, and its current set is not the original one.
    Restore();
    m_state->isRead = sched_getaffinity(c_CallingThread, sizeof(m_state->processors), &m_state->processors) == 0;
}

void CThreadProcessors::ShareProcessorWith(const CChildProcess& child)
{
    const std::optional<cpu_set_t> present = getPresentProcessor();
    if (present && m_state->isRead)
    {
        sched_setaffinity(c_CallingThread, sizeof(*present), &*present);
        sched_setaffinity(static_cast<pid_t>(child.GetId()), sizeof(*present), &*present);
    }
}

void CThreadProcessors::Restore()
{
    if (m_state->isRead && sched_setaffinity(c_CallingThread, sizeof(m_state->processors), &m_state->processors) == 0)
    {
        m_state->isRead = false;
    }
}

} // namespace LbOs
