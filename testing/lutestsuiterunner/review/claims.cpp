#include "testing/lutestsuiterunner/review/claims.h"

#include <algorithm>
#include <optional>

#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lbreceivedfile.h"
#include "base/os/durablefiles.h"
#include "base/os/filereplacement.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/reports/wholefile.h"

namespace Runner
{

namespace
{

/// The name of a file that exists once all received files have been moved.
constexpr const wchar_t* c_CompleteName = L"complete";

std::wstring getReceived(const SReceivedFile& file)
{
    return file.reference + LbReceivedFile::c_Suffix;
}

void move(const std::wstring& from, const std::wstring& to)
{
    if (!LbOs::RenameFile(from, to))
    {
        throw LbFormat(L"Datei %s konnte nicht ersetzt werden", to);
    }
}

/// Empty if there is no such file.
std::wstring getChecksum(const std::wstring& path)
{
    return LbOs::IsMissing(path) ? std::wstring() : LbReceivedFile::GetChecksum(LbFileSystem::ReadFile8Bit(path));
}

} // namespace

std::wstring FindChanged(const SReceivedFile& file, const std::wstring& received)
{
    if (getChecksum(received) != file.checksum)
    {
        return getReceived(file);
    }
    return getChecksum(file.reference) == file.expected ? std::wstring() : file.reference;
}

void RemoveUsedClaims(const std::wstring& directory)
{
    const std::wstring folder = directory + c_ClaimsFolder;
    if (std::ranges::all_of(LbFileSystem::GetFileNames(folder),
                            [](const std::wstring& name) { return name == c_CompleteName; }))
    {
        LbFileSystem::RemoveTree(folder);
    }
}

CClaims::CClaims(const std::wstring& directory, const std::vector<SReceivedFile>& files)
    : m_directory(directory + c_ClaimsFolder + LbPath::c_Separator), m_files(files)
{
}

std::wstring CClaims::Claim() const
{
    if (!LbFileSystem::IsDirectory(m_directory) && !LbOs::MakeDirectory(m_directory))
    {
        throw LbFormat(L"Verzeichnis %s konnte nicht angelegt werden", m_directory);
    }
    for (std::size_t index = 0; index < m_files.size(); ++index)
    {
        const std::wstring received = getReceived(m_files[index]);
        if (LbOs::IsMissing(GetPath(index)) && !LbOs::IsMissing(received))
        {
            move(received, GetPath(index));
        }
        if (std::wstring changed = FindChanged(m_files[index], GetPath(index)); !changed.empty())
        {
            return changed;
        }
    }
    LbOs::SynchroniseDirectory(m_directory);
    WriteWholeFile(m_directory + c_CompleteName, [](LuStreamWriteBinaryFile&) {});
    LbOs::SynchroniseDirectory(m_directory);
    return {};
}

bool CClaims::AreComplete() const
{
    return LbFileSystem::IsFile(m_directory + c_CompleteName);
}

std::wstring CClaims::GetPath(std::size_t index) const
{
    return m_directory + std::to_wstring(index);
}

void CClaims::Release(std::size_t index) const
{
    const std::wstring received = getReceived(m_files[index]);
    if (LbOs::IsMissing(received))
    {
        move(GetPath(index), received);
    }
    else
    {
        LbOs::RemoveFile(GetPath(index));
    }
}

void CClaims::ReleaseAll() const
{
    for (std::size_t index = 0; index < m_files.size(); ++index)
    {
        if (!LbOs::IsMissing(GetPath(index)))
        {
            Release(index);
        }
    }
}

void CClaims::Remove() const
{
    LbFileSystem::RemoveTree(m_directory);
}

} // namespace Runner
