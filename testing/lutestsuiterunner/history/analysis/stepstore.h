/// Stores the results of step analyses in a file beside the archive, because reading a result takes less time than the
/// search.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "testing/lutestsuiterunner/history/analysis/analysis.h"

namespace Runner::History
{

inline constexpr const wchar_t* c_StepStoreName = L"LuTestSuiteHistory.steps";

/// One thread at a time.
class CStepStore
{
public:
    /// `digest` identifies the archive's content. If it is empty, nothing is stored.
    CStepStore(const std::wstring& folder, const std::string& digest);

    /// The analysis of the table, which contains the runs of one configuration of the archive. Reads the stored
    /// analysis if there is one, else makes it.
    SStepAnalysis Get(const std::wstring& configuration, const CTable& table, const SStepRules& rules);

    /// Stores the analyses that Get returned, if any of them is new. Ignores failure: the next search then takes as
    /// long as this one.
    void Save() const;

private:
    std::wstring m_path;
    std::string m_digest;
    std::map<std::string, std::string> m_stored; ///< bytes by key
    std::map<std::string, std::string> m_used;
    bool m_isNew = false;
};

} // namespace Runner::History
