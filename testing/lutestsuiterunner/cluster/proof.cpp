#include "testing/lutestsuiterunner/cluster/proof.h"

#include <nlohmann/json.hpp>

#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/reports/wholefile.h"

namespace Runner
{

namespace
{

using Json = nlohmann::ordered_json;

std::uint64_t countDuplicates(const CRunState& state)
{
    std::uint64_t count = 0;
    for (std::uint32_t index = 0; index < state.GetPlan().cases.size(); ++index)
    {
        for (const SAttempt& attempt : state.GetAttempts(index))
        {
            count += attempt.duplicates;
        }
    }
    return count;
}

Json describe(const std::vector<SReadPart>& parts, const std::vector<SShardEntry>& shards, const CFollower& follower)
{
    Json list = Json::array();
    for (std::uint32_t index = 0; index < shards.size(); ++index)
    {
        const SReadPart& part = parts[index];
        list.push_back({{"number", index + 1},
                        {"digest", shards[index].digest},
                        {"cases", shards[index].cases},
                        {"verdicts", part.verdicts},
                        {"journals", part.records},
                        {"submissions", follower.GetShards()[index].submissions}});
    }
    return list;
}

} // namespace

void WriteProof(const std::wstring& folder, const CRunState& state, const std::vector<SReadPart>& parts,
                const std::vector<SShardEntry>& shards, const CFollower& follower)
{
    const SVerdictCounts counts = state.CountVerdicts();
    const Json proof = {{"format", 1},
                        {"plan", state.GetPlan().digest},
                        {"cases", counts.planned},
                        {"verdicts", counts.planned - counts.missing},
                        {"duplicates", countDuplicates(state)},
                        {"green", state.IsGreen()},
                        {"shards", describe(parts, shards, follower)}};
    const std::string bytes = proof.dump(1) + "\n";
    WriteWholeFile(folder + c_ProofName,
                   [&bytes](LuStreamWriteBinaryFile& file) { file.Write(bytes.data(), bytes.size()); });
}

} // namespace Runner
