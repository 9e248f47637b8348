#include "base/lbfilesystem.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lbtemporaryname.h"
#include "base/lustream.h"
#include "base/os/filereplacement.h"

namespace
{

std::wstring findDirectory(LbFileSystem::EDirectoryKind kind)
{
    switch (kind)
    {
    case LbFileSystem::eDK_Executable:
        return LbPath::GetParent(LbOs::GetExecutablePath());
    case LbFileSystem::eDK_Temporary:
        return LbOs::GetTemporaryDirectory();
    case LbFileSystem::eDK_UserData:
        return LbOs::GetUserDataDirectory();
    case LbFileSystem::eDK_DebugOutput:
        return LbFileSystem::GetDirectory(LbFileSystem::eDK_Temporary) + L"LuDebugOutput";
    }
    return {};
}

/// Callers remove the entries after the visit, because systems differ in whether a visit lists entries that are removed
/// meanwhile.
std::vector<std::wstring> getEntryNames(const std::wstring& directory)
{
    std::vector<std::wstring> names;
    LbOs::VisitDirectory(directory, [&names](const LbOs::SDirectoryEntry& entry) { names.push_back(entry.name); });
    return names;
}

/// Follows the links at the end of the path, whether the final target exists or not.
std::wstring followLinks(std::wstring path)
{
    // More links than any system follows.
    constexpr int c_LongestChain = 64;
    for (int links = 0; links < c_LongestChain && LbOs::IsLink(path); ++links)
    {
        path = LbOs::GetLinkTarget(LbOs::GetCanonicalPlace(path));
    }
    return path;
}

/// The path, without links, at which the file can be replaced or created; empty if that is impossible.
std::wstring findReplaceable(const std::wstring& path)
{
    const bool isThere = LbFileSystem::Exists(path);
    if (isThere && !LbOs::IsRegularFile(path))
    {
        return {};
    }
    std::wstring place = followLinks(path);
    // If the file behind a link such as "/proc/self/fd/1" was deleted, the link's target is not that file.
    const bool isSame = !isThere || LbOs::AreSameFile(path, place);
    const std::wstring parent = LbPath::GetParent(place);
    const std::wstring folder = parent.empty() ? std::wstring(L".") : parent;
    return isSame && !place.empty() && LbOs::MayAddFiles(folder) ? place : std::wstring();
}

} // namespace

std::wstring LbFileSystem::GetDirectory(EDirectoryKind kind)
{
    const std::wstring directory = findDirectory(kind);
    if (directory.empty())
    {
        throw LbException(LbFormat(L"Das Verzeichnis der Art %d ist nicht bekannt", kind));
    }
    return LbPath::WithSeparator(directory);
}

bool LbFileSystem::Exists(const std::wstring& path)
{
    return LbOs::QueryEntry(path) != LbOs::EEntry::Missing;
}

bool LbFileSystem::IsFile(const std::wstring& path)
{
    return LbOs::QueryEntry(path) == LbOs::EEntry::File;
}

bool LbFileSystem::IsDirectory(const std::wstring& path)
{
    return LbOs::QueryEntry(path) == LbOs::EEntry::Directory;
}

bool LbFileSystem::AssertDirectory(const std::wstring& path)
{
    if (path.empty())
    {
        return false;
    }
    if (LbOs::MakeDirectory(path))
    {
        return true;
    }
    // Tries again unless a file has this name, because other threads may create the same folders at the same time.
    return !IsFile(path) && AssertDirectory(LbPath::GetParent(path)) && LbOs::MakeDirectory(path);
}

std::vector<std::wstring> LbFileSystem::GetFileNames(const std::wstring& directory)
{
    std::vector<std::wstring> names;
    LbOs::VisitDirectory(directory, [&names](const LbOs::SDirectoryEntry& entry) {
        if (!entry.isDirectory)
        {
            names.push_back(entry.name);
        }
    });
    std::sort(names.begin(), names.end());
    return names;
}

bool LbFileSystem::RemoveTree(const std::wstring& directory)
{
    // Without the final separator, which would make the system follow a link to its target.
    const std::wstring path = LbPath::WithoutSeparator(directory);
    if (LbOs::RemoveFile(path))
    {
        return true;
    }
    if (IsDirectory(path))
    {
        const std::wstring base = LbPath::WithSeparator(path);
        for (const std::wstring& name : getEntryNames(path))
        {
            RemoveTree(base + name);
        }
        LbOs::RemoveEmptyDirectory(path);
    }
    return !Exists(directory);
}

bool LbFileSystem::CopyContent(const std::wstring& source, const std::wstring& target)
{
    constexpr std::size_t c_ChunkSize = 65536;
    try
    {
        LuStreamReadBinaryFile from(source);
        LuStreamWriteBinaryFile to(target);
        std::vector<char> chunk(c_ChunkSize);
        while (const std::size_t size = from.Read(chunk.data(), chunk.size()))
        {
            to.Write(chunk.data(), size);
        }
        to.Close();
        return true;
    }
    catch (const LbException&)
    {
        return false;
    }
}

bool LbFileSystem::HaveSameContent(const std::wstring& path, const std::wstring& otherPath)
{
    constexpr std::size_t c_ChunkSize = 65536;
    try
    {
        LuStreamReadBinaryFile file(path);
        LuStreamReadBinaryFile otherFile(otherPath);
        std::vector<char> chunk(c_ChunkSize);
        std::vector<char> otherChunk(c_ChunkSize);
        std::size_t size = c_ChunkSize;
        while (size == c_ChunkSize)
        {
            size = file.Read(chunk.data(), c_ChunkSize);
            if (otherFile.Read(otherChunk.data(), c_ChunkSize) != size ||
                !std::equal(chunk.begin(), chunk.begin() + static_cast<std::ptrdiff_t>(size), otherChunk.begin()))
            {
                return false;
            }
        }
        return true;
    }
    catch (const LbException&)
    {
        return false;
    }
}

void LbFileSystem::WriteWhole(const std::wstring& path, const std::function<void(const std::wstring& place)>& write)
{
    const std::wstring target = findReplaceable(path);
    if (target.empty())
    {
        write(path);
        return;
    }
    // A unique name, because other threads or processes may write the same file.
    const std::wstring temporary = LbPath::GetParent(target) + LbTemporaryName::Make();
    try
    {
        write(temporary);
        if (!LbOs::RenameFile(temporary, target))
        {
            throw LbException(LbFormat(L"Datei %s konnte nicht geöffnet werden", path));
        }
    }
    catch (...)
    {
        LbOs::RemoveFile(temporary);
        throw;
    }
}

std::string LbFileSystem::ReadFile8Bit(const std::wstring& path)
{
    LuStreamReadBinaryFile file(path);
    std::string content(file.GetSize(), '\0');
    content.resize(file.Read(content.data(), content.size()));
    // The size may be reported as 0, or the file may have grown since.
    std::array<char, 4096> more{};
    while (const std::size_t size = file.Read(more.data(), more.size()))
    {
        content.append(more.data(), size);
    }
    return content;
}
