#include "base/lbfilesystem.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lustream.h"

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

/// Removes the entries after the visit, because systems differ in listing entries that vanish meanwhile.
std::vector<std::wstring> getEntryNames(const std::wstring& directory)
{
    std::vector<std::wstring> names;
    LbOs::VisitDirectory(directory, [&names](const LbOs::SDirectoryEntry& entry) { names.push_back(entry.name); });
    return names;
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
    // Other threads may create the same folders meanwhile, so only a file in the way is a failure.
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

std::string LbFileSystem::ReadFile8Bit(const std::wstring& path)
{
    LuStreamReadBinaryFile file(path);
    std::string content(file.GetSize(), '\0');
    content.resize(file.Read(content.data(), content.size()));
    // The file may have no size or have grown meanwhile.
    std::array<char, 4096> more{};
    while (const std::size_t size = file.Read(more.data(), more.size()))
    {
        content.append(more.data(), size);
    }
    return content;
}
