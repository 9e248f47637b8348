// Data directories that cases change while the run is under way.

#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/runtest.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SCaseInfo;

struct SMode
{
    const char* name;
    bool isParallel;
    bool isExternal;
    bool isIsolated;
};

constexpr SMode c_Modes[] = {{"InTheProcess", false, false, false},
                             {"OnAWorker", true, false, false},
                             {"InAChild", false, true, false},
                             {"InAChildOnAWorker", true, true, false},
                             {"InItsOwnChild", false, true, true}};

/// A class of the changing models.
struct SModel
{
    const char* name;
    bool hasIndex; ///< each case reports its index
};

const SModel c_Models[] = {{"CChangingModel", false},
                           {"CChangingIndexModel", true},
                           {"CChangingNameModel", false},
                           {"CChangingCountModel", false}};

class RunChanges : public RunTest
{
protected:
    static LuTestSuiteSetup MakeChangingSetup(const ScopedFolder& folder, const SMode& mode)
    {
        LuTestSuiteSetup setup = MakeSetup(folder.GetPath());
        setup.dlls = {L"changingmodels"};
        setup.params.parallel = mode.isParallel;
        setup.params.workerThreads = 1;
        setup.params.external = mode.isExternal;
        setup.params.isolated = mode.isIsolated;
        return setup;
    }

    ScopedFolder m_folder;
};

class RunChangesOfAllModels : public RunChanges, public testing::WithParamInterface<std::tuple<SModel, SMode>>
{
protected:
    /// Writes "a.txt", "b.txt" and "c.txt". The first case removes "b.txt" and adds "new.txt".
    void MakeFiles()
    {
        const std::string name = m_model.name;
        for (const wchar_t* const file : {L"/a.txt", L"/b.txt", L"/c.txt"})
        {
            m_folder.WriteFile(std::wstring(name.begin(), name.end()) + file, "");
        }
    }

    std::wstring GetMessages(const std::wstring& file, const std::wstring& index) const
    {
        return (m_model.hasIndex ? L"\t\tINFO:  " + index + L"\n" : L"") + L"\t\tINFO:  " + file + L"\n";
    }

    const SModel m_model = std::get<0>(GetParam());
    const SMode m_mode = std::get<1>(GetParam());
};

TEST_P(RunChangesOfAllModels, DoNotChangeTheFilesOfLaterCases)
{
    MakeFiles();
    const std::vector<SCaseInfo> cases = Run(MakeChangingSetup(m_folder, m_mode)).cases;

    ASSERT_EQ(cases.size(), 3U);
    EXPECT_EQ(cases[0].result, ECaseRunResult::Ok);
    EXPECT_EQ(cases[0].messages, GetMessages(L"a.txt", L"0"));
    EXPECT_EQ(cases[1].result, ECaseRunResult::NoMatchingCase);
    EXPECT_EQ(cases[1].messages, L"");
    EXPECT_EQ(cases[2].result, ECaseRunResult::Ok);
    EXPECT_EQ(cases[2].messages, GetMessages(L"c.txt", L"1"));
}

TEST_P(RunChangesOfAllModels, AddNoCasesToRepetitions)
{
    MakeFiles();
    LuTestSuiteSetup setup = MakeChangingSetup(m_folder, m_mode);
    setup.params.repetitions = 2;
    const std::vector<SCaseInfo> cases = Run(setup).cases;

    ASSERT_EQ(cases.size(), 6U);
    for (const SCaseInfo& info : cases)
    {
        EXPECT_LT(info.testCase, 3U);
        EXPECT_EQ(info.messages.find(L"new"), std::wstring::npos);
    }
}

INSTANTIATE_TEST_SUITE_P(, RunChangesOfAllModels,
                         testing::Combine(testing::ValuesIn(c_Models), testing::ValuesIn(c_Modes)),
                         [](const auto& instance) {
                             return std::string(std::get<0>(instance.param).name) + std::get<1>(instance.param).name;
                         });

TEST_F(RunChanges, ListingsReadDuringACaseDoNotCountAsItsGrowth)
{
    m_folder.WriteFile(L"CChangingIndexModel/a.txt", "");
    m_folder.WriteFile(L"CChangingIndexModel/c.txt", "");
    LuTestSuiteSetup setup = MakeChangingSetup(m_folder, c_Modes[2]);
    setup.params.trackHeap = true;
    const std::vector<SCaseInfo> cases = Run(setup).cases;

    ASSERT_EQ(cases.size(), 2U);
    EXPECT_EQ(cases[0].memoryGrowth, 0U);
    EXPECT_EQ(cases[1].memoryGrowth, 0U);
}

TEST_F(RunChanges, ListingsTakenFromTheRunDoNotCountAsGrowthOfACase)
{
    for (int number = 0; number < 50; ++number)
    {
        m_folder.WriteFile(L"CChangingIndexModel/" + std::to_wstring(number) + L".txt", "");
    }
    LuTestSuiteSetup setup = MakeChangingSetup(m_folder, c_Modes[4]);
    setup.params.trackHeap = true;

    for (const SCaseInfo& info : Run(setup).cases)
    {
        EXPECT_EQ(info.memoryGrowth, 0U);
    }
}

} // namespace
