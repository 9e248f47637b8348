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
        CStepStore store(m_folder.GetPath(), digest);
        SStepAnalysis analysis = store.Get(L"Release x64", m_archive.GetTable(), rules);
        store.Save();
        return analysis;
    }

    std::string getFile() const { return LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(c_StepStoreName)); }

    static SyntheticRuns::SArchive makeArchive()
    {
        SyntheticRuns::SSettings settings;
        settings.cases = 60;
        settings.runs = 50;
        settings.factor = [](std::size_t testCase, std::size_t run) { return testCase < 3 && run >= 30 ? 1.3 : 1.0; };
        return MakeArchive(settings);
    }

    ScopedFolder m_folder;
    SyntheticRuns::SArchive m_archive = makeArchive();
};

} // namespace

TEST_F(HistoryStepStore, StoredAnalysisIsTheSame)
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

TEST_F(HistoryStepStore, OtherArchiveOrOtherRulesAreSearchedAgain)
{
    get("digest");
    const std::string file = getFile();
    get("other digest");
    EXPECT_NE(getFile(), file);
    SStepRules rules;
    rules.alarmRate = 0.2;
    EXPECT_EQ(get("other digest", rules).shuffleCount, 19U);
}

TEST_F(HistoryStepStore, NothingIsStoredWithoutDigest)
{
    get("");
    EXPECT_FALSE(LbFileSystem::Exists(m_folder.GetPathOf(c_StepStoreName)));
}

TEST_F(HistoryStepStore, DamagedFileIsIgnored)
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
