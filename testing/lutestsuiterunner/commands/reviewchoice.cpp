#include "testing/lutestsuiterunner/commands/reviewchoice.h"

#include <algorithm>
#include <map>
#include <set>

#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lbreceivedfile.h"
#include "base/os/files.h"

namespace Runner
{

namespace
{

/// The values of one option.
struct SNamed
{
    bool all = false;
    std::map<std::wstring, const SChange*> changes; ///< by checksum
    std::map<std::wstring, SChange> files;          ///< by reference
};

std::wstring listNames(const std::vector<const SChange*>& changes)
{
    std::wstring text;
    for (const SChange* const change : changes)
    {
        text += (text.empty() ? L"" : L", ") + change->id;
    }
    return text;
}

/// The change whose checksum begins with these digits; null if there is none. Throws if there are several.
const SChange* findOne(const std::vector<SChange>& changes, const std::wstring& digits)
{
    const std::vector<const SChange*> found = FindNamed(changes, digits);
    if (found.size() > 1)
    {
        throw LbFormat(L"'%s' ist mehrdeutig: %s", digits, listNames(found));
    }
    return found.empty() ? nullptr : found.front();
}

void addFile(SNamed& named, const std::vector<SChange>& changes, const std::wstring& directory,
             const std::wstring& value)
{
    const std::vector<SChange> found = FindChangesOf(changes, directory, value);
    if (found.empty())
    {
        throw LbFormat(L"'%s' ist weder 'all' noch eine Änderung noch eine Datei mit einer Änderung", value);
    }
    SChange change = found.front();
    change.parts.clear();
    change.id = change.files.front().reference;
    named.files.emplace(change.id, change);
}

SNamed readValues(const std::vector<SChange>& changes, const std::wstring& directory,
                  const std::vector<std::wstring>& values)
{
    SNamed named;
    for (const std::wstring& value : values)
    {
        const SChange* const found = findOne(changes, value);
        if (value == L"all")
        {
            named.all = true;
        }
        else if (found != nullptr)
        {
            named.changes.emplace(found->checksum, found);
        }
        else
        {
            addFile(named, changes, directory, value);
        }
    }
    return named;
}

bool hasFileOf(const SChange& change, const std::map<std::wstring, SChange>& files)
{
    return std::ranges::any_of(change.files,
                               [&files](const SReceivedFile& file) { return files.contains(file.reference); });
}

/// Finds a change or a file that both options name; a change of `one` also counts if `other` names one of its files.
std::wstring findCommon(const SNamed& one, const SNamed& other)
{
    for (const auto& [checksum, change] : one.changes)
    {
        if (other.changes.contains(checksum) || hasFileOf(*change, other.files))
        {
            return change->id;
        }
    }
    for (const auto& [reference, change] : one.files)
    {
        if (other.files.contains(reference))
        {
            return reference;
        }
    }
    return one.all && other.all ? L"all" : L"";
}

void requireDifferent(const SNamed& accepted, const SNamed& rejected)
{
    std::wstring common = findCommon(accepted, rejected);
    if (common.empty())
    {
        common = findCommon(rejected, accepted);
    }
    if (!common.empty())
    {
        throw LbFormat(L"'--accept' und '--reject' nennen dasselbe: %s", common);
    }
}

std::vector<SChange> choose(const std::vector<SChange>& changes, const SNamed& named, const SNamed& other)
{
    std::vector<SChange> chosen;
    for (const auto& [reference, change] : named.files)
    {
        chosen.push_back(change);
    }
    for (const SChange& change : changes)
    {
        if (!named.changes.contains(change.checksum) && (!named.all || other.changes.contains(change.checksum)))
        {
            continue;
        }
        SChange rest = change;
        std::erase_if(rest.files, [&](const SReceivedFile& file) {
            return named.files.contains(file.reference) || other.files.contains(file.reference);
        });
        if (!rest.files.empty())
        {
            chosen.push_back(std::move(rest));
        }
    }
    return chosen;
}

std::vector<SChange> findChangesOfFile(const std::vector<SChange>& changes, const std::wstring& full)
{
    std::vector<SChange> found;
    for (const SChange& change : changes)
    {
        const auto file = std::ranges::find_if(change.files, [&full](const SReceivedFile& one) {
            return full == one.reference || full == one.reference + LbReceivedFile::c_Suffix;
        });
        if (file != change.files.end())
        {
            found.push_back({change.kind, change.checksum, change.id, change.parts, {*file}});
        }
    }
    return found;
}

} // namespace

SReviewChoice ChooseChanges(const std::vector<SChange>& changes, const SReviewOptions& options)
{
    const SNamed accepted = readValues(changes, options.directory, options.accept);
    const SNamed rejected = readValues(changes, options.directory, options.reject);
    requireDifferent(accepted, rejected);
    return {choose(changes, accepted, rejected), choose(changes, rejected, accepted)};
}

const SChange& FindChange(const std::vector<SChange>& changes, const std::wstring& digits)
{
    const SChange* const found = findOne(changes, digits);
    if (found == nullptr)
    {
        throw LbFormat(L"'%s' ist keine Änderung", digits);
    }
    return *found;
}

std::vector<SChange> FindChangesOf(const std::vector<SChange>& changes, const std::wstring& directory,
                                   const std::wstring& path)
{
    const std::wstring fromHere = LbOs::GetFullPath(path);
    std::vector<SChange> found = findChangesOfFile(changes, fromHere);
    if (LbOs::IsAbsolutePath(path))
    {
        return found;
    }
    const std::wstring fromFolder = LbOs::GetFullPath(LbPath::WithSeparator(directory) + path);
    std::vector<SChange> others = findChangesOfFile(changes, fromFolder);
    if (!found.empty() && !others.empty() && fromHere != fromFolder)
    {
        throw LbFormat(L"'%s' ist mehrdeutig: %s, %s", path, fromHere, fromFolder);
    }
    return found.empty() ? others : found;
}

} // namespace Runner
