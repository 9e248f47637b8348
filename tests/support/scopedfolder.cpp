#include "tests/support/scopedfolder.h"

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lbuniqueid.h"
#include "base/lustream.h"

namespace
{

void requireFolder(const std::wstring& path)
{
    if (!LbFileSystem::AssertDirectory(path))
    {
        throw LbException(L"Test folder cannot be created: " + path);
    }
}

} // namespace

ScopedFolder::ScopedFolder()
    : m_path(LbPath::WithSeparator(LbFileSystem::GetDirectory(LbFileSystem::eDK_Temporary) + L"LuTestSuiteTests-" +
                                   LbUniqueId::Generate()))
{
    requireFolder(m_path);
}

ScopedFolder::~ScopedFolder()
{
    LbFileSystem::RemoveTree(m_path);
}

std::wstring ScopedFolder::WriteFile(std::wstring_view name, std::string_view bytes) const
{
    const std::wstring path = GetPathOf(name);
    requireFolder(LbPath::GetParent(path));
    LuStreamWriteBinaryFile file(path);
    file.Write(bytes.data(), bytes.size());
    file.Close();
    return path;
}

std::wstring ScopedFolder::MakeFolder(std::wstring_view name) const
{
    const std::wstring path = LbPath::WithSeparator(GetPathOf(name));
    requireFolder(path);
    return path;
}

std::wstring ScopedFolder::GetPathOf(std::wstring_view name) const
{
    return m_path + LbPath::ToNative(name);
}
