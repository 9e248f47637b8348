/// The folders of debug serialisation.
#pragma once

#include <string>

namespace LuTestSuiteRun
{

/// One folder per case, below one root per process and run, which is named after the time. Cases of one name share
/// their folder.
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
