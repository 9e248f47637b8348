/// The folders of debug serialisation.
#pragma once

#include <string>

namespace LuTestSuiteRun
{

/// One folder a case below one root a process and run, which is named after the time. Cases of one name share theirs.
class CDebugFolders
{
public:
    /// Fixes the root. Throws LbException if the system knows no folder for temporary files.
    CDebugFolders();

    const std::wstring& GetRoot() const noexcept { return m_root; }
    std::wstring GetFolder(const std::wstring& caseName) const;

private:
    std::wstring m_root; ///< without separator at its end
};

} // namespace LuTestSuiteRun
