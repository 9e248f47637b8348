#include "testing/lutestsuiterunner/review/changes.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lbreceivedfile.h"
#include "testing/lutestsuiterunner/review/difference.h"

namespace Runner
{

namespace
{

/// The kind of a file's change, and a key that files of one change share.
std::pair<EChange, std::string> classify(const std::wstring& reference, const std::string& received)
{
    if (LbOs::IsMissing(reference))
    {
        return {EChange::New, "new"};
    }
    const std::string expected = LbFileSystem::ReadFile8Bit(reference);
    if (received.empty() && !expected.empty())
    {
        return {EChange::Empty, "empty"};
    }
    return {EChange::Changed, GetChangeKey(FindDifference(expected, received))};
}

} // namespace

std::size_t SChange::CountUnrepeated() const
{
    return static_cast<std::size_t>(
        std::ranges::count_if(files, [](const SReceivedFile& file) { return !file.isRepeated; }));
}

std::vector<std::wstring> FindReceived(const std::wstring& directory)
{
    const std::size_t suffixLength = std::wstring_view(LbReceivedFile::c_Suffix).size();
    std::vector<std::wstring> references;
    std::vector<std::wstring> pending = {LbPath::WithSeparator(directory)};
    while (!pending.empty())
    {
        const std::wstring folder = std::move(pending.back());
        pending.pop_back();
        LbOs::VisitDirectory(folder, [&](const LbOs::SDirectoryEntry& entry) {
            if (entry.isDirectory && !entry.isLink)
            {
                pending.push_back(folder + entry.name + LbPath::c_Separator);
            }
            else if (!entry.isDirectory && entry.name.ends_with(LbReceivedFile::c_Suffix))
            {
                references.push_back(folder + entry.name.substr(0, entry.name.size() - suffixLength));
            }
        });
    }
    std::ranges::sort(references);
    return references;
}

std::vector<SChange> GroupChanges(const std::vector<std::wstring>& references)
{
    constexpr std::size_t c_IdLength = 6;
    std::map<std::string, SChange> byKey;
    for (const std::wstring& reference : references)
    {
        const std::string received = LbFileSystem::ReadFile8Bit(reference + LbReceivedFile::c_Suffix);
        auto [kind, key] = classify(reference, received);
        const auto [place, isNew] = byKey.try_emplace(std::move(key));
        SChange& change = place->second;
        if (isNew)
        {
            change.kind = kind;
            change.id = LbReceivedFile::GetChecksum(place->first).substr(0, c_IdLength);
        }
        const bool isRepeated = LbReceivedFile::CountRuns(received, reference) >= LbReceivedFile::c_EnoughRuns;
        change.files.push_back({reference, LbReceivedFile::GetChecksum(received), isRepeated});
    }
    std::vector<SChange> changes;
    for (auto& [key, change] : byKey)
    {
        changes.push_back(std::move(change));
    }
    std::ranges::stable_sort(changes, [](const SChange& one, const SChange& other) {
        return one.files.size() != other.files.size() ? one.files.size() > other.files.size()
                                                      : one.files.front().reference < other.files.front().reference;
    });
    return changes;
}

std::string ReadIfPresent(const std::wstring& path)
{
    return LbOs::IsMissing(path) ? std::string() : LbFileSystem::ReadFile8Bit(path);
}

} // namespace Runner
