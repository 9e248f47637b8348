/// A distributed run of two shards. A test acts as the hosts of the shards.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/cluster/shards.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/folder.h"
#include "testing/lutestsuiterunner/journal/planfile.h"
#include "tests/lutestsuiterunner/samplerun.h"
#include "tests/support/scopedfolder.h"

class CPlayedRun
{
public:
    static constexpr std::uint32_t sc_Shards = 2;
    /// Later than the beginning of each journal, which is the current time.
    static constexpr const wchar_t* sc_EndTime = L"2999-01-02 03:04:09";

    CPlayedRun()
    {
        Runner::SPlan plan = MakeSamplePlan();
        Runner::WriteShards(m_folder.GetPath(), plan, sc_Shards, {});
        m_shards = Runner::ReadShards(m_folder.GetPath());
    }

    const std::wstring& GetFolder() const { return m_folder.GetPath(); }
    const std::vector<Runner::SShardEntry>& GetShards() const { return m_shards; }
    std::wstring GetShardFolder(std::uint32_t number) const { return GetFolder() + Runner::GetShardFolderName(number); }

    /// Begins the journal of a new host for a shard.
    std::unique_ptr<Runner::CJournalWriter> Join(std::uint32_t number) const
    {
        const std::wstring folder = GetShardFolder(number);
        return Runner::JoinRun(folder, Runner::ReadPlan(folder + Runner::c_PlanName));
    }

    static void RunCase(Runner::CJournalWriter& writer, std::uint32_t caseIndex,
                        LuTestSuiteRun::ECaseRunResult result = LuTestSuiteRun::ECaseRunResult::Ok)
    {
        writer.Write(MakeStart(caseIndex));
        writer.Write(MakeEnd(caseIndex, result));
    }

    static void Finish(Runner::CJournalWriter& writer)
    {
        writer.Write(Runner::SRunFinished{sc_EndTime, 5});
        writer.Close();
    }

    /// Records a run of all cases of a shard; they pass.
    void RunShard(std::uint32_t number) const
    {
        const auto writer = Join(number);
        for (std::uint32_t index = 0; index < m_shards[number - 1].cases; ++index)
        {
            RunCase(*writer, index);
        }
        Finish(*writer);
    }

private:
    ScopedFolder m_folder;
    std::vector<Runner::SShardEntry> m_shards;
};
