/// Analyses of steps that were made before, in a file beside the archive: a search takes longer than reading its
/// result.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "testing/lutestsuiterunner/history/analysis.h"

namespace Runner::History
{

inline constexpr const wchar_t* c_StepStoreName = L"LuTestSuiteHistory.steps";

/// One thread at a time.
class CStepStore
{
public:
    /// `digest` identifies the archive's content. If it is empty, nothing is stored.
    CStepStore(const std::wstring& folder, const std::string& digest);

    /// The analysis of the table, which holds the runs of one configuration of the archive: stored or made.
    SStepAnalysis Get(const std::wstring& configuration, const CTable& table, const SStepRules& rules);

    /// Writes what Get returned, if any of it was new. If the file cannot be written, the next search takes as long as
    /// this one.
    void Save() const;

private:
    std::wstring m_path;
    std::string m_digest;
    std::map<std::string, std::string> m_stored; ///< bytes by key
    std::map<std::string, std::string> m_used;
    bool m_isNew = false;
};

} // namespace Runner::History
