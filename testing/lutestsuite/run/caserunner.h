/// Runs one planned case: request into a work buffer, execution, answer back into the record.
#pragma once

#include <functional>

#include "testing/lutestsuite/lutestsuiterun.h"
#include "testing/lutestsuite/run/workbuffer.h"

namespace LuTestSuiteRun
{

/// The parameters of a case: the run's, with what the case itself says in their place.
SParams GetCaseParams(const SParams& runParams, const LuTestSuite::ParameterMap& caseParameters);

/// Owned by one executing thread.
class CCaseRunner : public INonCopyable
{
public:
    /// The arguments are the caller's and outlive the runner.
    CCaseRunner(const std::vector<LuTestSuite::SUnitTest>& unitTests, const SParams& runParams,
                const std::function<bool()>& isCanceled);

    /// Runs the case and fills its record. A case that cannot be asked for (a name too long) and a canceled one keep
    /// their record as it is.
    void Run(SCaseInfo& info);

private:
    const std::vector<LuTestSuite::SUnitTest>& m_unitTests;
    const SParams& m_runParams;
    const std::function<bool()>& m_isCanceled;
    CHeapWorkBuffer m_buffer;
};

} // namespace LuTestSuiteRun
