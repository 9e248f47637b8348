/// The plan of a run: everything that is known before the first case starts. Plain values; one thread at a time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "testing/lutestsuite/lutestsuiterun.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace Runner
{

/// One planned run of a case. Its index in SPlan::cases is the case run's identity in journals and reports.
struct SPlannedCase
{
    std::uint32_t unitTest = 0;   ///< index into SPlan::unitTests
    std::uint32_t testCase = 0;   ///< index into that unit test's cases
    std::uint32_t repetition = 0; ///< 0-based
    bool isInShard = true;        ///< this run executes it; the other case runs belong to other shards
    bool isQuarantined = false;   ///< the case is run and reported, but never makes the run red
    std::uint64_t expected = 0;   ///< expected time that balances the shards, in nanoseconds; 0: unknown

    bool operator==(const SPlannedCase&) const = default;
};

/// A case that its description disables: reports name it as skipped.
struct SDisabledCase
{
    std::wstring className;
    std::wstring dataDirectory; ///< as SUnitTest::dataDirectory
    std::wstring name;
    std::wstring dataSetFile; ///< full path; empty for a named sub-test

    bool operator==(const SDisabledCase&) const = default;
};

/// The shard that the run executes; 1 of 1 is the whole selection.
struct SShard
{
    std::uint32_t number = 1; ///< 1 to count
    std::uint32_t count = 1;

    bool operator==(const SShard&) const = default;
};

/// Relates the plan of a shard to the plan of the whole distributed run.
struct SShardPlace
{
    std::string wholeDigest;            ///< digest of the whole run's plan
    std::vector<std::uint32_t> indices; ///< for each element of SPlan::cases, its index in the whole run

    bool operator==(const SShardPlace&) const = default;
};

/// Build and machine, as reports show them.
struct SOrigin
{
    std::wstring buildConfiguration;
    std::optional<LuTestSuiteUtils::SSvnInfo> svn;
    std::optional<LuTestSuiteUtils::SPscmInfo> pscm;
    std::wstring processor;
    std::wstring graphics;
    std::wstring machine;
};

/// The settings of reports and of the run's verdict.
struct SReportRules
{
    std::int32_t messageReportMax = 3; ///< as LuTestSuiteSetup::messageReportMax
    bool smallReport = false;
    bool tolerateWarnings = true;
    bool isFlakyAllowed = false; ///< a flaky case does not make the run red

    bool operator==(const SReportRules&) const = default;
};

struct SPlan
{
    std::string digest;                  ///< digest of the plan's file, set by ReadPlan
    std::string runId;                   ///< random name of this run, see MakeRunId
    std::vector<std::wstring> arguments; ///< of the host, without the program's name; for resuming
    std::wstring workingDirectory;       ///< base of relative paths in `arguments`
    std::wstring dataDirectory;
    LuTestSuiteRun::SParams params;
    SReportRules rules;
    SShard shard;
    std::uint32_t partCount = 0; ///< number of shards of a distributed run, each in its own folder; 0: not distributed
    std::optional<SShardPlace> part; ///< only in the plan of such a shard; the plan contains only the shard's cases
    SOrigin origin;
    std::vector<LuTestSuite::SUnitTest> unitTests; ///< the whole selection, of all shards, in listed order
    std::vector<SPlannedCase> cases;               ///< in listed order, see PlanCases
    std::vector<SDisabledCase> disabled;
};

/// A random name for a run: 32 hexadecimal digits.
std::string MakeRunId();

/// The case runs of a selection, ordered by unit test, case, and repetition. `isInShard` is true for all.
std::vector<SPlannedCase> PlanCases(const std::vector<LuTestSuite::SUnitTest>& unitTests, std::uint32_t repetitions);

/// Build and machine of this process.
SOrigin DescribeOrigin();

/// The parameters of a case run: those of the run, overridden by those of the case's description.
LuTestSuiteRun::SParams GetParams(const SPlan& plan, std::uint32_t caseIndex);

/// The folder of a unit test below the data directory, with "/" between its parts and no "/" at its end; the full path
/// if the folder is not below the data directory.
std::wstring GetRelativeFolder(const SPlan& plan, std::wstring_view dataDirectory);

/// "Folder/Class": the relative folder of a unit test and its class; only the folder if that already ends with the
/// class.
std::wstring GetUnitTestName(const SPlan& plan, std::wstring_view dataDirectory, const std::wstring& className);

/// The name of a case run: the name of the case; from the second run on, followed by the number of the run: " (2)".
std::wstring GetRunName(const std::wstring& caseName, std::uint32_t repetition);

/// "Folder/Class:Case"; from the second run on, followed by the number of the run: " (2)".
std::wstring GetCaseName(const SPlan& plan, std::uint32_t caseIndex);

/// The indices of all cases, sorted by name, so that the order does not depend on the file system.
std::vector<std::uint32_t> SortByName(const SPlan& plan);

} // namespace Runner
