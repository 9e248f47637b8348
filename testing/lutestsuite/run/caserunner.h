/// Runs one planned case: request into a work buffer, execution, answer back into the record.
#pragma once

#include <functional>
#include <optional>
#include <span>

#include "testing/lutestsuite/lutestsuiterun.h"
#include "testing/lutestsuite/run/children/externalcontext.h"
#include "testing/lutestsuite/run/children/workbuffer.h"

namespace LuTestSuiteRun
{

/// The parameters of a case: the run's, with what the case itself says in their place.
SParams GetCaseParams(const SParams& runParams, const LuTestSuite::ParameterMap& caseParameters);

/// Whether a case runs in a child process; as GetCaseParams says, which costs more.
bool IsExternal(const SParams& runParams, const LuTestSuite::ParameterMap& caseParameters);

/// Makes a request of the buffer. False when a name does not fit; the buffer then says "no matching case" to whoever
/// looks at it.
bool WriteRequest(SWorkBuffer& buffer, const LuTestSuite::SUnitTest& unitTest, const LuTestSuite::STestCase& testCase,
                  const SParams& params);

/// Owned by one executing thread, with the child processes that run its external cases.
class CCaseRunner : public INonCopyable
{
public:
    /// The arguments are the caller's and outlive the runner.
    CCaseRunner(const std::vector<LuTestSuite::SUnitTest>& unitTests, const std::vector<SCaseInfo>& cases,
                const SParams& runParams, const std::function<bool()>& isCanceled, CSpareChildren& spares);

    /// Runs the case and fills its record. A case that cannot be asked for (a name too long) and a canceled one keep
    /// their record as it is. `toCome` gives the indices of the cases that will be run next, by whatever thread:
    /// processes for them may be started meanwhile.
    using ToCome = std::function<std::span<const std::uint32_t>()>;
    void Run(SCaseInfo& info, const ToCome& toCome);

    /// Gets what such a case needs; false when no child process could be started. Throws LbException.
    bool MakeReadyFor(const SCaseInfo& info);

    /// Gives back what cases in child processes need.
    void ReleaseChildren() { m_external.Release(); }

private:
    using UnitTest = LuTestSuite::SUnitTest;
    using TestCase = LuTestSuite::STestCase;

    SParams getParams(const SCaseInfo& info) const;
    void runHere(const UnitTest& unitTest, const TestCase& testCase, const SParams& params, SCaseInfo& info);
    void runInChild(const UnitTest& unitTest, const TestCase& testCase, const SParams& params, SCaseInfo& info,
                    const ToCome& toCome);
    std::size_t countIsolated(std::span<const std::uint32_t> toCome) const;

    const std::vector<LuTestSuite::SUnitTest>& m_unitTests;
    const std::vector<SCaseInfo>& m_cases;
    const SParams& m_runParams;
    const std::function<bool()>& m_isCanceled;
    CSpareChildren& m_spares;
    std::optional<CHeapWorkBuffer> m_buffer;
    CExternalContext m_external;
};

} // namespace LuTestSuiteRun
