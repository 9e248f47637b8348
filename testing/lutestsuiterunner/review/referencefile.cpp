#include "testing/lutestsuiterunner/review/referencefile.h"

#include <algorithm>
#include <map>
#include <set>

#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lustream.h"
#include "base/os/filereplacement.h"
#include "base/os/files.h"

namespace Runner
{

namespace
{

/// The path of the reference, or of its target if it is a link. Empty for a link that leads to no file.
std::wstring getPlace(const std::wstring& reference)
{
    return LbOs::IsLink(reference) ? LbOs::GetCanonicalPath(reference) : reference;
}

std::wstring describeBroken(const std::wstring& link)
{
    return LbFormat(L"Die Verknüpfung %s führt zu keiner Datei", link);
}

} // namespace

std::wstring DescribeIrreplaceable(const std::wstring& reference)
{
    return LbFormat(L"Datei %s konnte nicht ersetzt werden", reference);
}

void WriteReference(const std::wstring& reference, std::string_view bytes, const std::wstring& temporary)
{
    const std::wstring place = getPlace(reference);
    if (place.empty())
    {
        throw describeBroken(reference);
    }
    const std::wstring path = LbPath::GetParent(place) + temporary;
    try
    {
        LuStreamWriteBinaryFile file(path);
        file.Write(bytes.data(), bytes.size());
        file.Close();
        if (!LbOs::RenameFile(path, place))
        {
            throw DescribeIrreplaceable(reference);
        }
    }
    catch (...)
    {
        LbOs::RemoveFile(path);
        throw;
    }
}

void RemoveTemporaries(const std::vector<SReceivedFile>& files, const std::wstring& temporary)
{
    std::set<std::wstring> folders;
    for (const SReceivedFile& file : files)
    {
        folders.insert(LbPath::GetParent(getPlace(file.reference)));
    }
    folders.erase(std::wstring());
    for (const std::wstring& folder : folders)
    {
        LbOs::RemoveFile(folder + temporary);
    }
}

void RequireOwnFiles(const std::vector<SReceivedFile>& files)
{
    if (std::ranges::none_of(files, [](const SReceivedFile& file) { return LbOs::IsLink(file.reference); }))
    {
        return;
    }
    std::map<std::wstring, std::wstring> references; // keys: paths with links resolved
    for (const SReceivedFile& file : files)
    {
        const std::wstring place = LbOs::GetCanonicalPath(file.reference);
        if (place.empty() && LbOs::IsLink(file.reference))
        {
            throw L"Entscheidung abgelehnt: " + describeBroken(file.reference);
        }
        const auto [known, isOther] = references.try_emplace(place.empty() ? file.reference : place, file.reference);
        if (!isOther)
        {
            throw LbFormat(L"Entscheidung abgelehnt: %s und %s sind dieselbe Datei", known->second, file.reference);
        }
    }
}

} // namespace Runner
