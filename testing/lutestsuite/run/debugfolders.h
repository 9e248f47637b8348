/// The output folders of debug serialisation.
#pragma once

#include <string>

namespace LuTestSuiteRun
{

/// One folder for each case name, in a root folder that is named after the time when the object was created. Cases with
/// the same name share a folder.
class CDebugFolders
{
public:
    /// Determines the root. Throws LbException if the system has no temporary folder.
    CDebugFolders();

    const std::wstring& GetRoot() const noexcept { return m_root; }
    std::wstring GetFolder(const std::wstring& caseName) const;

private:
    std::wstring m_root; ///< without trailing separator
};

} // namespace LuTestSuiteRun
