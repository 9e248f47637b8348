#include "base/os/threadfreeze.h"

#include "base/os/windows/api.h"

// Enumerates threads with a system call that allocates nothing, repeatedly, until no new thread appears. A snapshot
// would allocate, which is forbidden once a thread is suspended, and would miss threads that start meanwhile.

namespace
{

using FGetNextThread = LONG(NTAPI*)(HANDLE process, HANDLE thread, ACCESS_MASK access, ULONG attributes, ULONG flags,
                                    HANDLE* next);

using FQueryThread = LONG(NTAPI*)(HANDLE thread, int kind, void* information, ULONG size, ULONG* length);

constexpr DWORD c_Access =
    THREAD_SUSPEND_RESUME | THREAD_GET_CONTEXT | THREAD_SET_CONTEXT | THREAD_QUERY_INFORMATION | SYNCHRONIZE;
/// The status that the system returns after the last thread.
constexpr LONG c_NoMoreEntries = static_cast<LONG>(0x8000001A);

constexpr std::size_t c_ThreadMax = 8192;
// Each enumeration returns new handles.
constexpr std::size_t c_HandleMax = 8 * c_ThreadMax;

struct SThread
{
    HANDLE handle;
    DWORD id;
    bool isSuspended;
    bool hasStarted;
};

/// System calls that are declared only for drivers.
struct SSystemCalls
{
    FGetNextThread getNextThread = nullptr;
    FQueryThread queryThread = nullptr;
};

SSystemCalls findSystemCalls() noexcept
{
    SSystemCalls calls;
    if (const HMODULE system = GetModuleHandleW(L"ntdll.dll"))
    {
        const auto find = [system](const char* name) { return reinterpret_cast<void*>(GetProcAddress(system, name)); };
        calls.getNextThread = reinterpret_cast<FGetNextThread>(find("NtGetNextThread"));
        calls.queryThread = reinterpret_cast<FQueryThread>(find("NtQueryInformationThread"));
    }
    return calls;
}

// Looked up when the library is loaded: the lookup takes the loader's lock, which another thread may later hold while
// it waits for a lock that the caller of Freeze holds.
const SSystemCalls s_calls = findSystemCalls();

// Static, because the heap cannot be used; a process has one freeze at a time.
SThread s_threads[c_ThreadMax];
std::size_t s_count = 0;

// All opened handles. They are closed after the threads run again, because closing may take locks.
HANDLE s_handles[c_HandleMax];
std::size_t s_handleCount = 0;

bool isKnown(DWORD id) noexcept
{
    return std::any_of(s_threads, s_threads + s_count, [id](const SThread& thread) { return thread.id == id; });
}

/// Call before opening a handle.
bool isSpaceLeft() noexcept
{
    return s_count < c_ThreadMax && s_handleCount < c_HandleMax;
}

void append(HANDLE handle, DWORD id) noexcept
{
    s_threads[s_count++] = {handle, id, false, true};
}

bool readContext(HANDLE thread, CONTEXT& context) noexcept
{
    context.ContextFlags = CONTEXT_CONTROL;
    return GetThreadContext(thread, &context) != FALSE;
}

/// A thread that is ending refuses calls some time before its handle is signaled, so this function waits for the
/// handle.
bool isEnding(HANDLE thread, unsigned timeoutMs) noexcept
{
    return WaitForSingleObject(thread, timeoutMs) == WAIT_OBJECT_0;
}

/// False if the thread still runs after the time-out. An ended thread is not a failure.
bool suspend(SThread& thread, unsigned timeoutMs) noexcept
{
    thread.isSuspended = SuspendThread(thread.handle) != static_cast<DWORD>(-1);
    return thread.isSuspended || isEnding(thread.handle, timeoutMs);
}

/// A thread without its thread block has not run yet. Under Wine a thread stays in this state while its creator is
/// suspended during the creation, and reading its context would block forever.
bool hasStarted(HANDLE thread) noexcept
{
    struct SBasicInformation
    {
        LONG exitStatus;
        void* block;
        HANDLE process;
        HANDLE thread;
        ULONG_PTR affinity;
        LONG priority;
        LONG basePriority;
    };
    constexpr int c_BasicInformation = 0;
    SBasicInformation information = {};
    return s_calls.queryThread == nullptr ||
           s_calls.queryThread(thread, c_BasicInformation, &information, sizeof(information), nullptr) < 0 ||
           information.block != nullptr;
}

/// A suspension takes effect some time after the call; reading the context waits for it.
bool awaitSuspension(SThread& thread, unsigned timeoutMs) noexcept
{
    thread.hasStarted = hasStarted(thread.handle);
    if (!thread.hasStarted)
    {
        return true;
    }
    alignas(16) CONTEXT context = {};
    return (thread.isSuspended && readContext(thread.handle, context)) || isEnding(thread.handle, timeoutMs);
}

/// Requests the suspension of all threads before waiting for the first.
bool suspendFrom(std::size_t first, unsigned timeoutMs) noexcept
{
    SThread* const begin = s_threads + first;
    SThread* const end = s_threads + s_count;
    return std::all_of(begin, end, [timeoutMs](SThread& thread) { return suspend(thread, timeoutMs); }) &&
           std::all_of(begin, end, [timeoutMs](SThread& thread) { return awaitSuspension(thread, timeoutMs); });
}

/// Adds the threads that are not known yet. False if there are too many, or if the enumeration fails.
bool findNewThreads() noexcept
{
    HANDLE thread = nullptr;
    while (isSpaceLeft())
    {
        const LONG status = s_calls.getNextThread(GetCurrentProcess(), thread, c_Access, 0, 0, &thread);
        if (status < 0)
        {
            return status == c_NoMoreEntries;
        }
        s_handles[s_handleCount++] = thread;
        const DWORD id = GetThreadId(thread);
        if (id != GetCurrentThreadId() && !isKnown(id))
        {
            append(thread, id);
        }
    }
    return false;
}

bool freezeAll(unsigned timeoutMs) noexcept
{
    if (s_calls.getNextThread == nullptr)
    {
        return false;
    }
    // On a busy machine a single enumeration may take longer than the time-out.
    constexpr int c_RoundMin = 16;

    const ULONGLONG begin = GetTickCount64();
    for (int round = 0;; ++round)
    {
        const std::size_t known = s_count;
        if (!findNewThreads() || !suspendFrom(known, timeoutMs))
        {
            return false;
        }
        if (s_count == known)
        {
            return true;
        }
        if (round >= c_RoundMin && GetTickCount64() - begin > timeoutMs)
        {
            return false;
        }
    }
}

} // namespace

bool LbOs::CThreadFreezer::Freeze(unsigned timeoutMs) noexcept
{
    Thaw();
    m_isFrozen = true;
    const bool isGood = freezeAll(timeoutMs);
    m_count = s_count;
    if (!isGood)
    {
        Thaw();
    }
    return isGood;
}

void LbOs::CThreadFreezer::Thaw() noexcept
{
    if (!m_isFrozen)
    {
        return;
    }
    for (std::size_t index = 0; index < s_count; ++index)
    {
        if (s_threads[index].isSuspended)
        {
            ResumeThread(s_threads[index].handle);
        }
    }
    while (s_handleCount > 0)
    {
        CloseHandle(s_handles[--s_handleCount]);
    }
    s_count = 0;
    m_count = 0;
    m_isFrozen = false;
}

std::uintptr_t LbOs::CThreadFreezer::GetInstructionPointer(std::size_t thread) const noexcept
{
    alignas(16) CONTEXT context = {};
    const SThread& frozen = s_threads[thread];
    return frozen.hasStarted && readContext(frozen.handle, context) ? context.Rip : 0;
}

bool LbOs::CThreadFreezer::SetInstructionPointer(std::size_t thread, std::uintptr_t address) noexcept
{
    alignas(16) CONTEXT context = {};
    if (!readContext(s_threads[thread].handle, context))
    {
        return false;
    }
    context.Rip = address;
    return SetThreadContext(s_threads[thread].handle, &context) != FALSE;
}
