#include "testing/lutestsuiterunner/review/changes.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <utility>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lbreceivedfile.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/review/linkedfolders.h"
#include "testing/lutestsuiterunner/review/partgroups.h"
#include "testing/lutestsuiterunner/review/partkinds.h"

namespace Runner
{

namespace
{

constexpr std::size_t c_ShortestName = 6;

std::wstring getChecksumOfText(const std::wstring& text)
{
    return LbReceivedFile::GetChecksum(LbEncoding::ToUtf8(text));
}

/// Checksum of all files that a decision about whole files writes or replaces.
std::wstring getChecksumOfFiles(const std::vector<SReceivedFile>& files)
{
    std::wstring text;
    for (const SReceivedFile& file : files)
    {
        // All checksums have the same length, so different files always give different texts.
        text += file.checksum + (file.expected.empty() ? L"" : L"=" + file.expected) + L" " + file.reference + L"\n";
    }
    return getChecksumOfText(text);
}

/// Collects changes by name. The name is the checksum of the changed parts; for whole files it is "new" with their
/// folder, or "blank".
class CChanges
{
public:
    SChange& Add(EChange kind, const std::wstring& name, const PartNames& parts, std::vector<SReceivedFile> files)
    {
        SChange& change = m_changes.try_emplace(name, SChange{kind, name, {}, {}, {}}).first->second;
        change.parts.insert(parts.begin(), parts.end());
        change.files.insert(change.files.end(), files.begin(), files.end());
        return change;
    }

    std::vector<SChange> Take()
    {
        std::vector<SChange> changes;
        for (auto& [name, change] : m_changes)
        {
            std::ranges::sort(change.files, {}, &SReceivedFile::reference);
            if (change.kind != EChange::Changed)
            {
                change.checksum = getChecksumOfFiles(change.files);
            }
            changes.push_back(std::move(change));
        }
        std::ranges::stable_sort(changes, [](const SChange& one, const SChange& other) {
            return one.files.size() != other.files.size() ? one.files.size() > other.files.size()
                                                          : one.files.front().reference < other.files.front().reference;
        });
        return changes;
    }

private:
    std::map<std::wstring, SChange> m_changes;
};

struct SExamined
{
    EChange kind;
    SReceivedFile file;
    std::vector<SPartNames> parts; ///< of a changed file
};

SExamined examine(const std::wstring& reference)
{
    const std::string received = LbFileSystem::ReadFile8Bit(reference + LbReceivedFile::c_Suffix);
    const bool isRepeated = LbReceivedFile::CountRuns(received, reference) >= LbReceivedFile::c_EnoughRuns;
    const bool isBlank = IsBlank(received);
    SExamined examined = {isBlank ? EChange::Blank : EChange::New,
                          {reference, LbReceivedFile::GetChecksum(received), {}, isRepeated},
                          {}};
    if (LbOs::IsMissing(reference))
    {
        return examined;
    }
    const std::string expected = LbFileSystem::ReadFile8Bit(reference);
    examined.file.expected = LbReceivedFile::GetChecksum(expected);
    examined.kind = isBlank && !IsBlank(expected) ? EChange::Blank : EChange::Changed;
    if (examined.kind == EChange::Changed)
    {
        for (SPart& part : FindParts(expected, received))
        {
            examined.parts.push_back({std::move(part.checksum), std::move(part.kind)});
        }
    }
    return examined;
}

void addChanged(CChanges& changes, const std::vector<SExamined>& files)
{
    CPartKinds kinds;
    for (const SExamined& file : files)
    {
        for (const SPartNames& part : file.parts)
        {
            kinds.Add(part);
        }
    }
    std::vector<PartNames> parts(files.size());
    for (std::size_t file = 0; file < files.size(); ++file)
    {
        for (const SPartNames& part : files[file].parts)
        {
            parts[file].insert(kinds.AreOne(part.kind) ? part.kind : part.checksum);
        }
    }
    for (const SPartGroup& group : GroupByParts(parts))
    {
        std::vector<SReceivedFile> members;
        std::ranges::transform(group.files, std::back_inserter(members),
                               [&files](std::uint32_t file) { return files[file].file; });
        SChange& change = changes.Add(EChange::Changed, GetChecksumOf(group.parts), group.parts, std::move(members));
        change.areLinesEqual =
            std::ranges::none_of(group.parts, [&kinds](const std::wstring& part) { return kinds.AreOne(part); });
    }
}

std::size_t countCommon(const std::wstring& one, const std::wstring& other)
{
    return static_cast<std::size_t>(std::ranges::mismatch(one, other).in1 - one.begin());
}

} // namespace

std::size_t SChange::CountUnrepeated() const
{
    return static_cast<std::size_t>(
        std::ranges::count_if(files, [](const SReceivedFile& file) { return !file.isRepeated; }));
}

SFound FindReceived(const std::wstring& directory)
{
    const std::size_t suffixLength = std::wstring_view(LbReceivedFile::c_Suffix).size();
    SFound found;
    std::vector<std::wstring> pending = {LbPath::WithSeparator(directory)};
    CLinkedFolders links(pending.front());
    while (!pending.empty())
    {
        const std::wstring folder = std::move(pending.back());
        pending.pop_back();
        LbOs::VisitDirectory(folder, [&](const LbOs::SDirectoryEntry& entry) {
            if (entry.name == c_DecisionDraft || entry.name == c_ClaimsFolder)
            {
                found.remains.push_back(folder);
            }
            else if (entry.isDirectory)
            {
                const std::wstring inner = folder + entry.name + LbPath::c_Separator;
                if (!entry.isLink || links.MayEnter(inner))
                {
                    pending.push_back(inner);
                }
            }
            else if (!entry.isDirectory && entry.name.ends_with(LbReceivedFile::c_Suffix))
            {
                found.references.push_back(folder + entry.name.substr(0, entry.name.size() - suffixLength));
            }
            else if (!entry.isDirectory && entry.name == c_DecisionFile)
            {
                found.unfinished.push_back(folder);
            }
        });
    }
    std::ranges::sort(found.references);
    std::ranges::sort(found.unfinished);
    return found;
}

std::vector<std::wstring> FindUnfinishedAbove(const std::wstring& directory)
{
    std::vector<std::wstring> folders;
    for (std::wstring folder = LbPath::GetParent(directory); !folder.empty(); folder = LbPath::GetParent(folder))
    {
        if (LbFileSystem::IsFile(folder + c_DecisionFile))
        {
            folders.push_back(folder);
        }
    }
    return folders;
}

std::vector<SChange> GroupChanges(const std::vector<std::wstring>& references)
{
    CChanges changes;
    std::vector<SExamined> files;
    for (const std::wstring& reference : references)
    {
        SExamined examined = examine(reference);
        if (examined.kind == EChange::Changed)
        {
            files.push_back(std::move(examined));
            continue;
        }
        const std::wstring group = examined.kind == EChange::New ? L"new " + LbPath::GetParent(reference) : L"blank";
        changes.Add(examined.kind, group, {}, {std::move(examined.file)});
    }
    addChanged(changes, files);
    std::vector<SChange> all = changes.Take();
    NameChanges(all);
    return all;
}

void NameChanges(std::vector<SChange>& changes)
{
    std::vector<SChange*> ordered;
    std::ranges::transform(changes, std::back_inserter(ordered), [](SChange& change) { return &change; });
    std::ranges::sort(ordered, {}, [](const SChange* change) { return change->checksum; });
    std::size_t before = 0;
    for (std::size_t index = 0; index < ordered.size(); ++index)
    {
        const std::wstring& checksum = ordered[index]->checksum;
        const std::size_t after = index + 1 < ordered.size() ? countCommon(checksum, ordered[index + 1]->checksum) : 0;
        ordered[index]->id = checksum.substr(0, std::max({c_ShortestName, before + 1, after + 1}));
        before = after;
    }
}

std::vector<const SChange*> FindNamed(const std::vector<SChange>& changes, std::wstring digits)
{
    std::ranges::transform(digits, digits.begin(), [](wchar_t digit) {
        return digit >= L'a' && digit <= L'f' ? static_cast<wchar_t>(digit - L'a' + L'A') : digit;
    });
    std::vector<const SChange*> found;
    for (const SChange& change : changes)
    {
        if (digits.size() >= c_ShortestName && change.checksum.starts_with(digits))
        {
            found.push_back(&change);
        }
    }
    return found;
}

std::string ReadIfPresent(const std::wstring& path)
{
    return LbOs::IsMissing(path) ? std::string() : LbFileSystem::ReadFile8Bit(path);
}

} // namespace Runner
