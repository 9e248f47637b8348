/// Runs one planned case: writes the request into a work buffer, executes it, copies the answer into the record.
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

/// Owned by one executing thread, together with the child processes that run its external cases.
class CCaseRunner : public INonCopyable
{
public:
    /// The arguments must outlive the runner.
    CCaseRunner(CRunEvents& events, CSpareChildren& spares) : m_events(events), m_spares(spares), m_external(spares) {}

    /// Lists the next cases of all threads.
    using ToCome = std::function<PlannedCases()>;

    /// Runs the case, fills its record and reports its events. If the case is canceled or its name is too long, the
    /// result in its record does not change. Processes may be started meanwhile for the cases to come.
    void Run(const SPlannedCase& planned, const ToCome& toCome);

    /// Provides what the case needs; false if no child process could be started. Throws LbException.
    bool MakeReadyFor(const SPlannedCase& planned);

    /// Releases what cases in child processes need.
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
    std::optional<LuTestSuite::CCrashThread> m_crashThread; ///< exists together with the buffer
    CExternalContext m_external;
    const LuTestSuite::SUnitTest* m_sharedFor = nullptr; ///< its listing is shared
    const std::uint64_t m_ownProcessId = LbOs::GetProcessId();
};

} // namespace LuTestSuiteRun
