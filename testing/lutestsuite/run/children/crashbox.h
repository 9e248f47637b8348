/// Shared memory through which a child that crashes informs the run that started it.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "base/inoncopyable.h"
#include "base/os/crash.h"
#include "base/os/namedevent.h"
#include "base/os/sharedmemory.h"
#include "base/os/stacks.h"
#include "testing/lutestsuite/environment/crashnotes.h"

namespace LuTestSuiteRun
{

/// Content of the shared memory, which is a separate block besides the work buffer.
struct SCrashBox
{
    enum EState : std::uint32_t
    {
        eS_Empty = 0,
        eS_Crashed = 1, ///< the child has crashed and waits, so that the run can read its stacks and memory
        eS_Read = 2     ///< the run has finished; the child may end
    };

    std::atomic<std::uint32_t> state;
    std::uint64_t thread;
    std::uint64_t context; ///< see LbOs::SCrash
    std::uint32_t code;    ///< see LbOs::SCrash
};

static_assert(std::atomic<std::uint32_t>::is_always_lock_free);

/// The run's side: notices the crash of a child. Used by one thread.
class CCrashWatch : public INonCopyable
{
public:
    /// Creates the shared memory for a child whose work buffer has this name. Must be created before the child starts.
    explicit CCrashWatch(const std::wstring& bufferName);

    /// The thread of the child that has crashed and waits; empty if no thread has crashed.
    std::optional<LbOs::SCrashedThread> FindCrash() const;

    /// Lets the crashed child end.
    void Release();

private:
    std::unique_ptr<LbOs::CSharedMemory> m_memory;
    std::shared_ptr<void> m_view; ///< null if the memory could not be created; then a crashed child does not wait
};

/// The child's side: reports its crash to the run.
class CCrashReporter final : public LuTestSuite::ICrashReporter, public INonCopyable
{
public:
    /// `response` wakes the run; it must outlive the object.
    CCrashReporter(const std::wstring& bufferName, LbOs::CNamedEvent& response);

    /// Reports the crash and waits until the run has examined the child, at most 1.5 s.
    void Report(const LbOs::SCrash& crash) noexcept override;

private:
    LbOs::CNamedEvent& m_response;
    std::shared_ptr<void> m_view; ///< null if the run does not examine crashes
};

} // namespace LuTestSuiteRun
