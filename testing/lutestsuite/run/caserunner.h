/// Runs one planned case: request into a work buffer, execution, answer back into the record.
#pragma once

#include <functional>
#include <optional>

#include "testing/lutestsuite/lutestsuiterun.h"
#include "testing/lutestsuite/run/children/externalcontext.h"
#include "testing/lutestsuite/run/children/workbuffer.h"
#include "testing/lutestsuite/run/crashnotes.h"
#include "testing/lutestsuite/run/plan.h"

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
    CCaseRunner(const std::function<bool()>& isCanceled, CSpareChildren& spares)
        : m_isCanceled(isCanceled), m_spares(spares), m_external(spares)
    {
    }

    /// Runs the case and fills its record. A case that cannot be asked for (a name too long) and a canceled one keep
    /// their record as it is. `toCome` gives the cases that will be run next, by whatever thread: processes for them
    /// may be started meanwhile.
    using ToCome = std::function<PlannedCases()>;
    void Run(const SPlannedCase& planned, const ToCome& toCome);

    /// Gets what such a case needs; false when no child process could be started. Throws LbException.
    bool MakeReadyFor(const SPlannedCase& planned);

    /// Gives back what cases in child processes need.
    void ReleaseChildren() { m_external.Release(); }

private:
    void runHere(const SPlannedCase& planned);
    void runInChild(const SPlannedCase& planned, const ToCome& toCome);

    const std::function<bool()>& m_isCanceled;
    CSpareChildren& m_spares;
    std::optional<CHeapWorkBuffer> m_buffer;
    std::optional<CCrashThread> m_crashThread; ///< with the buffer
    CExternalContext m_external;
};

} // namespace LuTestSuiteRun
