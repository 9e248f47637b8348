/// How a child that crashes informs the run that started it.
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

/// Shared memory beside the work buffer.
struct SCrashBox
{
    enum EState : std::uint32_t
    {
        eS_Empty = 0,
        eS_Crashed = 1, ///< the child waits, so that the run can read its stacks
        eS_Read = 2     ///< the child may end
    };

    std::atomic<std::uint32_t> state;
    std::uint64_t thread;
    std::uint64_t context; ///< see LbOs::SCrash
    std::uint32_t code;    ///< see LbOs::SCrash
};

static_assert(std::atomic<std::uint32_t>::is_always_lock_free);

/// The side of the run. Used by one thread.
class CCrashWatch : public INonCopyable
{
public:
    /// For a child whose work buffer has this name; created before it starts. Without it the child does not wait.
    explicit CCrashWatch(const std::wstring& bufferName);

    /// The thread that has crashed and waits; empty without a crash.
    std::optional<LbOs::SCrashedThread> FindCrash() const;

    /// Lets the crashed child end.
    void Release();

private:
    std::unique_ptr<LbOs::CSharedMemory> m_memory;
    std::shared_ptr<void> m_view; ///< null if there is no memory: then a crashed child does not wait
};

/// The side of the child.
class CCrashReporter final : public LuTestSuite::ICrashReporter, public INonCopyable
{
public:
    /// `response` wakes the run; it must outlive the object.
    CCrashReporter(const std::wstring& bufferName, LbOs::CNamedEvent& response);

    /// Waits until the run has read the stacks, at most 1.5 s.
    void Report(const LbOs::SCrash& crash) noexcept override;

private:
    LbOs::CNamedEvent& m_response;
    std::shared_ptr<void> m_view; ///< null if the run reads no stacks
};

} // namespace LuTestSuiteRun
