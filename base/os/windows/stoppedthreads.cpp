#include "base/os/windows/stoppedthreads.h"

// Needs windows.h before it.
#include <tlhelp32.h>

namespace LbOs::Windows
{

namespace
{

constexpr std::size_t c_MostThreads = 64;

std::vector<DWORD> listThreads(DWORD process)
{
    std::vector<DWORD> threads;
    const HANDLE all = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (all == INVALID_HANDLE_VALUE)
    {
        return threads;
    }
    const Handle snapshot(all);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof(entry);
    for (BOOL isThere = Thread32First(all, &entry); isThere != FALSE; isThere = Thread32Next(all, &entry))
    {
        if (entry.th32OwnerProcessID == process)
        {
            threads.push_back(entry.th32ThreadID);
        }
    }
    return threads;
}

ULONGLONG getCreation(HANDLE thread)
{
    FILETIME creation = {};
    FILETIME unused[3] = {};
    GetThreadTimes(thread, &creation, &unused[0], &unused[1], &unused[2]);
    return ULARGE_INTEGER{{creation.dwLowDateTime, creation.dwHighDateTime}}.QuadPart;
}

} // namespace

CStoppedThreads::CStoppedThreads(DWORD process, DWORD first)
{
    if (first != 0)
    {
        suspend(first);
    }
    // A thread that is still running may start others.
    while (suspendNew(process))
    {
    }
}

CStoppedThreads::~CStoppedThreads()
{
    for (const SStoppedThread& thread : m_threads)
    {
        ResumeThread(thread.handle.get());
    }
}

bool CStoppedThreads::suspendNew(DWORD process)
{
    bool hasNew = false;
    for (const DWORD id : listThreads(process))
    {
        const bool isKnown = std::ranges::find(m_threads, id, &SStoppedThread::id) != m_threads.end();
        hasNew = (!isKnown && m_threads.size() < c_MostThreads && suspend(id)) || hasNew;
    }
    return hasNew;
}

bool CStoppedThreads::suspend(DWORD thread)
{
    constexpr DWORD c_Rights = THREAD_SUSPEND_RESUME | THREAD_GET_CONTEXT | THREAD_QUERY_INFORMATION;
    Handle handle(OpenThread(c_Rights, FALSE, thread));
    if (!handle || SuspendThread(handle.get()) == static_cast<DWORD>(-1))
    {
        return false;
    }
    const ULONGLONG creation = getCreation(handle.get());
    m_threads.push_back({thread, std::move(handle), creation});
    return true;
}

std::optional<CONTEXT> CStoppedThreads::ReadRegisters(const SStoppedThread& thread)
{
    CONTEXT context = {};
    context.ContextFlags = CONTEXT_FULL;
    return GetThreadContext(thread.handle.get(), &context) != FALSE ? std::optional(context) : std::nullopt;
}

} // namespace LbOs::Windows
