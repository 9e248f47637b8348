/// Runs one planned case: request into a work buffer, execution, answer back into the record.
#pragma once

#include <functional>
#include <optional>

#include "base/os/process.h"
#include "testing/lutestsuite/lutestsuiterunevents.h"
#include "testing/lutestsuite/run/children/externalcontext.h"
#include "testing/lutestsuite/run/children/workbuffer.h"
#include "testing/lutestsuite/run/crashnotes.h"
#include "testing/lutestsuite/run/plan.h"
#include "testing/lutestsuite/run/runevents.h"

namespace LuTestSuiteRun
{

/// Makes a request of the buffer. False when a name does not fit; the buffer then says "no matching case" to whoever
/// looks at it.
bool WriteRequest(SWorkBuffer& buffer, const LuTestSuite::SUnitTest& unitTest, const LuTestSuite::STestCase& testCase,
                  const SParams& params);

/// Owned by one executing thread, with the child processes that run its external cases.
class CCaseRunner : public INonCopyable
{
public:
    /// The arguments are the caller's and outlive the runner.
    CCaseRunner(CRunEvents& events, CSpareChildren& spares) : m_events(events), m_spares(spares), m_external(spares) {}

    /// Runs the case, fills its record and tells the events of it. A case that cannot be asked for (a name too long)
    /// and a canceled one keep what their record says of results. `toCome` gives the cases that will be run next, by
    /// whatever thread: processes for them may be started meanwhile.
    using ToCome = std::function<PlannedCases()>;
    void Run(const SPlannedCase& planned, const ToCome& toCome);

    /// Gets what such a case needs; false when no child process could be started. Throws LbException.
    bool MakeReadyFor(const SPlannedCase& planned);

    /// Gives back what cases in child processes need.
    void ReleaseChildren() { m_external.Release(); }

private:
    std::uint64_t findProcess(const SPlannedCase& planned);
    void execute(const SPlannedCase& planned, const ToCome& toCome, SCaseEnd& end);
    void runHere(const SPlannedCase& planned, SCaseEnd& end);
    void runInChild(const SPlannedCase& planned, const ToCome& toCome, SCaseEnd& end);

    CRunEvents& m_events;
    const std::function<bool()> m_isCanceled = [this] { return m_events.IsCanceled(); };
    CSpareChildren& m_spares;
    std::optional<CHeapWorkBuffer> m_buffer;
    std::optional<CCrashThread> m_crashThread; ///< with the buffer
    CExternalContext m_external;
    const std::uint64_t m_ownProcessId = LbOs::GetProcessId();
};

} // namespace LuTestSuiteRun
