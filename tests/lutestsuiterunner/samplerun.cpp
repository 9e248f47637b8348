#include "tests/lutestsuiterunner/samplerun.h"

#include "base/lbpath.h"
#include "testing/lutestsuiterunner/journal/recordtext.h"

using LuTestSuite::STestCase;
using LuTestSuite::SUnitTest;

namespace
{

SUnitTest makeUnitTest(const Runner::SPlan& plan, const std::wstring& folder, const std::wstring& className,
                       const std::vector<std::wstring>& names)
{
    SUnitTest unitTest;
    unitTest.className = className;
    unitTest.dataDirectory = plan.dataDirectory + LbPath::ToNative(folder + L"/" + className + L"/");
    unitTest.moduleName = L"modul.so";
    for (const std::wstring& name : names)
    {
        unitTest.cases.push_back({unitTest.dataDirectory + name, name, {}});
    }
    return unitTest;
}

} // namespace

Runner::SPlan MakeSamplePlan(std::uint32_t repetitions)
{
    Runner::SPlan plan;
    plan.runId = Runner::MakeRunId();
    plan.arguments = {L"run", L"--", L"-d", L"Daten"};
    plan.workingDirectory = L"/arbeit/";
    plan.dataDirectory = LbPath::ToNative(L"/daten/");
    plan.params.repetitions = repetitions;
    plan.origin.machine = L"Rechner";
    plan.unitTests.push_back(makeUnitTest(plan, L"a", L"CFirst", {L"eins.txt", L"zwei.txt"}));
    plan.unitTests.push_back(makeUnitTest(plan, L"b", L"CFirst", {L"eins.txt"}));
    plan.unitTests.push_back(makeUnitTest(plan, L"b", L"CSecond", {L"x.dat", L"y.dat", L"z.dat"}));
    plan.unitTests[0].contacts.push_back({L"Erika Mustermann", L"erika@example.org", L"Entwicklung"});
    plan.unitTests[0].cases[1].parameters[L"TimeOutSec"] = std::uint32_t{7};
    plan.unitTests[0].cases[1].parameters[L"External"] = true;
    plan.unitTests[2].cases[0].dataSetFile = std::wstring();
    plan.cases = Runner::PlanCases(plan.unitTests, repetitions);
    plan.disabled.push_back(
        {L"CSecond", plan.unitTests[2].dataDirectory, L"aus.dat", plan.unitTests[2].dataDirectory + L"aus.dat"});
    return plan;
}

std::wstring MakeRandomText(std::mt19937& random, std::size_t longest)
{
    constexpr wchar_t c_Ranges[][2] = {{0, 0x20},        {0x20, 0x7F},     {0x7F, 0x100},
                                       {0x2419, 0x241D}, {0xD7FF, 0xE001}, {0xFFFC, 0xFFFF}};
    std::wstring text(random() % (longest + 1), L'\0');
    for (wchar_t& character : text)
    {
        const auto& range = c_Ranges[random() % std::size(c_Ranges)];
        character = static_cast<wchar_t>(range[0] + random() % (1U + range[1] - range[0]));
    }
    return text;
}

Runner::SCaseStarted MakeStart(std::uint32_t caseIndex, std::uint32_t attempt, Runner::EAttemptKind kind)
{
    return {caseIndex, attempt, kind, -1, 4711, 1};
}

Runner::SCaseEnded MakeEnd(std::uint32_t caseIndex, LuTestSuiteRun::ECaseRunResult result, std::uint32_t attempt)
{
    Runner::SCaseEnded ended;
    ended.caseIndex = caseIndex;
    ended.attempt = attempt;
    ended.info.result = result;
    ended.info.time = 1'500'000;
    ended.info.executed = true;
    ended.processId = 4711;
    ended.elapsed = 2;
    if (result != LuTestSuiteRun::ECaseRunResult::Ok)
    {
        ended.info.messages = L"ERROR: Erwartet war 1\nINFO:  Datei x\n";
    }
    return ended;
}

std::string ToText(const Runner::Record& record)
{
    // The encoded record only refers to large texts, so they are appended in full.
    std::string stored;
    std::string json;
    Runner::EncodeRecord(
        record, 1,
        [&stored](const std::string& text) {
            stored += text;
            return Runner::STextPlace{};
        },
        json);
    return json + stored;
}
