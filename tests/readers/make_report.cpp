// Writes the XML report of an invented run, with every outcome and all kinds of characters: make_report FILE CASES.

#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "base/lbencoding.h"
#include "base/lbformat.h"
#include "testing/lutestsuite/lutestsuitereport.h"

namespace
{

using LuTestSuiteRun::SStats;

constexpr std::uint32_t c_Classes = 40;

/// No text contains a character reference such as "&lt;", because one of the readers resolves references twice.
constexpr const wchar_t* c_Texts[] = {L"schlicht",
                                      L"größer als Maß",
                                      L"<a href=\"x\">'&'</a>",
                                      L"]]> <!-- <![CDATA[ & &&",
                                      L"\x01\x02\x1B[31m\x7F\x85\x9F\t\r",
                                      L"€ \U0001F600 \uFFFE",
                                      L""};

const wchar_t* getText(std::uint32_t index)
{
    return c_Texts[index % std::size(c_Texts)];
}

struct SRun
{
    std::vector<LuTestSuite::SUnitTest> unitTests;
    std::vector<LuTestSuiteRun::SCaseInfo> cases;
    SStats stats;
};

void count(const LuTestSuiteRun::SCaseInfo& info, SStats::SCounts& counts)
{
    ++counts.results[static_cast<std::size_t>(info.result)];
    ++counts.executed;
    counts.warnings += info.warning ? 1U : 0U;
}

void addCase(std::uint32_t index, SRun& run)
{
    LuTestSuiteRun::SCaseInfo info;
    info.unitTest = index % c_Classes;
    LuTestSuite::SUnitTest& unitTest = run.unitTests[info.unitTest];
    info.testCase = static_cast<std::uint32_t>(unitTest.cases.size());
    unitTest.cases.push_back({{}, LbFormat(L"%s %05u", getText(index), index), {}});
    info.result = static_cast<LuTestSuiteRun::ECaseRunResult>(index % 11 % SStats::SCounts::sc_uiResults);
    info.messages =
        LbFormat(L"\t\tINFO:  %s\n\t\tERROR: %s\n%s\n", getText(index / 7), getText(index / 5), getText(index));
    info.time = 1000U * index;
    info.memoryGrowth = index % 13 == 0 ? index : 0;
    info.warning = info.memoryGrowth != 0;
    info.executed = true;
    count(info, run.stats.total);
    count(info, run.stats.unitTests[info.unitTest]);
    run.cases.push_back(std::move(info));
}

SRun makeRun(std::uint32_t cases)
{
    SRun run;
    run.unitTests.resize(c_Classes);
    run.stats.unitTests.resize(c_Classes);
    for (std::uint32_t index = 0; index < c_Classes; ++index)
    {
        run.unitTests[index].className = LbFormat(L"CGrößen%02u", index);
        run.unitTests[index].contacts = {{L"Jörg Müller", L"joerg@example.org", L"Test"}};
    }
    for (std::uint32_t index = 0; index < cases; ++index)
    {
        addCase(index, run);
    }
    run.stats.unitTestsExecuted = c_Classes;
    return run;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 3)
    {
        std::fputs("make_report FILE CASES\n", stderr);
        return 2;
    }
    const SRun run = makeRun(static_cast<std::uint32_t>(std::strtoul(arguments[2], nullptr, 10)));
    LuTestSuiteReport::SReportData data;
    LuTestSuiteReport::GenerateReportData(data, LuTestSuiteSetup(), run.unitTests, run.cases, run.stats);
    LuTestSuiteReport::GenerateXMLReport(LbEncoding::FromNative(arguments[1]), data);
    return 0;
}
