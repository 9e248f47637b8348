#include "testing/lutestsuiterunner/journal/prooffile.h"

#include <nlohmann/json.hpp>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "testing/lutestsuiterunner/journal/filenames.h"

namespace Runner
{

std::optional<RecordCounts> ReadProvenRecords(const std::wstring& folder, const std::string& planDigest)
{
    const std::wstring path = folder + c_ProofName;
    if (!LbFileSystem::IsFile(path))
    {
        return std::nullopt;
    }
    try
    {
        const auto proof = nlohmann::json::parse(LbFileSystem::ReadFile8Bit(path));
        if (proof.at("plan").get<std::string>() != planDigest)
        {
            return std::nullopt;
        }
        RecordCounts counts;
        for (const nlohmann::json& shard : proof.at("shards"))
        {
            counts.push_back(shard.at("journals").get<std::vector<std::uint64_t>>());
        }
        return counts;
    }
    catch (const nlohmann::json::exception&)
    {
        throw LbException(LbFormat(L"Die Datei %s ist beschädigt", path));
    }
}

} // namespace Runner
