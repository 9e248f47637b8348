#include "testing/lutestsuiterunner/history/analysis/stepstore.h"

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/lustream.h"
#include "tests/support/scopedfolder.h"
#include "tests/support/syntheticruns.h"

using namespace Runner::History;

namespace
{

class HistoryStepStore : public testing::Test
{
protected:
    SStepAnalysis get(const std::string& digest, const SStepRules& rules = {}) const
    {
        return get(m_archive, digest, rules);
    }

    /// Makes a new store each time, as each call of the host does.
    SStepAnalysis get(const SyntheticRuns::SArchive& archive, const std::string& digest, const SStepRules& rules) const
    {
        CStepStore store(m_folder.GetPath(), digest);
        SStepAnalysis analysis = store.Get(L"Release x64", archive.GetTable(), rules);
        store.Save();
        return analysis;
    }

    /// Stores the analysis of the archive with three steps.
    void store(std::uint64_t seed) const { get(m_archive, "digest", getRules(seed)); }

    /// True if the file contains the analysis. If not, the store analyzes the steady archive, which has no steps.
    bool isStored(std::uint64_t seed) const
    {
        CStepStore store(m_folder.GetPath(), "digest");
        return !store.Get(L"Release x64", m_steadyArchive.GetTable(), getRules(seed)).times.empty();
    }

    static SStepRules getRules(std::uint64_t seed)
    {
        SStepRules rules;
        rules.checkSeed = seed;
        rules.checks = 1;
        return rules;
    }

    std::string getFile() const { return LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(c_StepStoreName)); }

    static SyntheticRuns::SArchive makeArchive(std::size_t changed)
    {
        SyntheticRuns::SSettings settings;
        settings.cases = 60;
        settings.runs = 50;
        settings.factor = [changed](std::size_t testCase, std::size_t run) {
            return testCase < changed && run >= 30 ? 1.3 : 1.0;
        };
        return MakeArchive(settings);
    }

    ScopedFolder m_folder;
    SyntheticRuns::SArchive m_archive = makeArchive(3);
    SyntheticRuns::SArchive m_steadyArchive = makeArchive(0);
};

} // namespace

TEST_F(HistoryStepStore, StoredAnalysisEqualsTheOriginal)
{
    const SStepAnalysis made = get("digest");
    const std::string file = getFile();
    const SStepAnalysis stored = get("digest");
    EXPECT_EQ(getFile(), file);
    EXPECT_EQ(stored.tempo, made.tempo);
    EXPECT_EQ(stored.thresholds.bits, made.thresholds.bits);
    EXPECT_EQ(stored.thresholds.deviations, made.thresholds.deviations);
    EXPECT_EQ(stored.check.archives, made.check.archives);
    EXPECT_EQ(stored.testCount, made.testCount);
    ASSERT_EQ(stored.times.size(), made.times.size());
    ASSERT_GE(stored.times.size(), 3U);
    EXPECT_EQ(stored.times[0].first, made.times[0].first);
    EXPECT_EQ(stored.times[0].second.back().index, made.times[0].second.back().index);
    EXPECT_EQ(stored.times[0].second.back().last, made.times[0].second.back().last);
    EXPECT_EQ(stored.times[0].second.back().after, made.times[0].second.back().after);
}

TEST_F(HistoryStepStore, ChangedArchiveOrChangedRulesCauseANewSearch)
{
    get("digest");
    const std::string file = getFile();
    get("other digest");
    EXPECT_NE(getFile(), file);
    SStepRules rules;
    rules.alarmRate = 0.2;
    EXPECT_EQ(get("other digest", rules).shuffleCount, 19U);
}

TEST_F(HistoryStepStore, NothingIsStoredWithoutADigest)
{
    get("");
    EXPECT_FALSE(LbFileSystem::Exists(m_folder.GetPathOf(c_StepStoreName)));
}

TEST_F(HistoryStepStore, DamagedFileIsIgnoredAndReplaced)
{
    const SStepAnalysis made = get("digest");
    std::string bytes = getFile();
    bytes[bytes.size() / 2] = static_cast<char>(bytes[bytes.size() / 2] ^ 1);
    LuStreamWriteBinaryFile file(m_folder.GetPathOf(c_StepStoreName));
    file.Write(bytes.data(), bytes.size());
    file.Close();
    EXPECT_EQ(get("digest").thresholds.deviations, made.thresholds.deviations);
    EXPECT_NE(getFile(), bytes);
}

TEST_F(HistoryStepStore, AnalysesWithAlternatingRulesStayStored)
{
    for (int round = 0; round < 2; ++round)
    {
        for (const std::uint64_t seed : {1, 2, 3})
        {
            EXPECT_EQ(isStored(seed), round > 0) << "seed " << seed;
            store(seed);
        }
    }
}

TEST_F(HistoryStepStore, SeventeenthEntryReplacesTheLeastRecentlyUsedEntry)
{
    for (std::uint64_t seed = 1; seed <= 16; ++seed)
    {
        store(seed);
    }
    store(1);
    store(17);
    EXPECT_FALSE(isStored(2));
    for (const std::uint64_t seed : {1, 3, 4, 16, 17})
    {
        EXPECT_TRUE(isStored(seed)) << "seed " << seed;
    }
}

TEST_F(HistoryStepStore, AllConfigurationsOfOneCallAreStored)
{
    constexpr std::size_t c_Configurations = 18;
    const auto getAll = [this](const SyntheticRuns::SArchive& archive) {
        CStepStore store(m_folder.GetPath(), "digest");
        std::size_t withSteps = 0;
        for (std::size_t number = 0; number < c_Configurations; ++number)
        {
            withSteps += store.Get(std::to_wstring(number), archive.GetTable(), getRules(1)).times.empty() ? 0 : 1;
        }
        store.Save();
        return withSteps;
    };
    getAll(m_archive);
    const std::string file = getFile();
    EXPECT_EQ(getAll(m_steadyArchive), c_Configurations);
    EXPECT_EQ(getFile(), file);
}
