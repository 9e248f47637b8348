/// Runs one planned case: writes the request into a work buffer, executes the case and copies the answer into the
/// record.
#pragma once

#include <functional>
#include <optional>

#include "base/os/process.h"
#include "testing/lutestsuite/environment/crashnotes.h"
#include "testing/lutestsuite/lutestsuiterunevents.h"
#include "testing/lutestsuite/run/children/externalcontext.h"
#include "testing/lutestsuite/run/children/workbuffer.h"
#include "testing/lutestsuite/run/plan.h"
#include "testing/lutestsuite/run/runevents.h"

namespace LuTestSuiteRun
{

/// Writes a request into the buffer. False if a name is too long; the buffer then contains "no matching case" as the
/// answer.
bool WriteRequest(SWorkBuffer& buffer, const LuTestSuite::SUnitTest& unitTest, const LuTestSuite::STestCase& testCase,
                  const SParams& params);

/// Runs the cases of one executing thread. The thread owns the runner; the runner owns the child process in which the
/// thread's external cases run.
class CCaseRunner : public INonCopyable
{
public:
    /// The arguments must outlive the runner.
    CCaseRunner(CRunEvents& events, CSpareChildren& spares) : m_events(events), m_spares(spares), m_external(spares) {}

    /// Returns the cases that no thread has taken yet, in plan order.
    using ToCome = std::function<PlannedCases()>;

    /// Runs the case, fills its record and reports its events. If the run is canceled before the case begins, or if a
    /// name is too long for the request, the result in the record does not change. While the case runs, spare children
    /// may be started for the cases that `toCome` returns.
    void Run(const SPlannedCase& planned, const ToCome& toCome);

    /// For an external case, prepares a child process and everything that the case needs; false if no child could be
    /// started. Throws LbException if the objects shared with the child cannot be created.
    bool MakeReadyFor(const SPlannedCase& planned);

    /// Releases the child process and the resources that external cases need.
    void ReleaseChildren() { m_external.Release(); }

private:
    std::uint64_t findProcess(const SPlannedCase& planned);
    void execute(const SPlannedCase& planned, const ToCome& toCome, SCaseEnd& end);
    void runHere(const SPlannedCase& planned, SCaseEnd& end);
    void runInChild(const SPlannedCase& planned, const ToCome& toCome, SCaseEnd& end);
    void shareListing(const SPlannedCase& planned);

    CRunEvents& m_events;
    const std::function<bool()> m_isCanceled = [this] { return m_events.IsCanceled(); };
    CSpareChildren& m_spares;
    std::optional<CHeapWorkBuffer> m_buffer;
    std::optional<LuTestSuite::CCrashThread> m_crashThread; ///< created together with m_buffer
    CExternalContext m_external;
    /// The last unit tests for which the directory listing need not be shared again: for isolated cases, and for other
    /// cases.
    const LuTestSuite::SUnitTest* m_sharedForIsolated = nullptr;
    const LuTestSuite::SUnitTest* m_sharedForOthers = nullptr;
    const std::uint64_t m_ownProcessId = LbOs::GetProcessId();
};

} // namespace LuTestSuiteRun
