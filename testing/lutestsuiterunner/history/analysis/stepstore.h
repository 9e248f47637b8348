/// Stores the results of step analyses in a file in the archive's folder, because reading a result takes less time than
/// the search.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/history/analysis/analysis.h"

namespace Runner::History
{

inline constexpr const wchar_t* c_StepStoreName = L"LuTestSuiteHistory.steps";

struct SStoredSteps
{
    std::string key;   ///< of the archive, the configuration and the options
    std::string bytes; ///< the analysis
};

/// Keeps the 16 results that were used last, and all results of the present call. One thread at a time.
class CStepStore
{
public:
    /// `digest` identifies the archive's content. If it is empty, nothing is stored.
    CStepStore(const std::wstring& folder, const std::string& digest);

    /// The analysis of the table, which contains the runs of one configuration of the archive. Reads the stored
    /// analysis if there is one, else makes it.
    SStepAnalysis Get(const std::wstring& configuration, const CTable& table, const SStepRules& rules);

    /// Writes the file again if Get has changed the results or the order of their use. Ignores failure: the next search
    /// then takes as long as this one.
    void Save() const;

private:
    std::wstring m_path;
    std::string m_digest;
    std::vector<SStoredSteps> m_entries;   ///< the last used first
    std::vector<std::string> m_storedKeys; ///< of the entries in the file
    std::set<std::string> m_usedKeys;      ///< by Get
};

} // namespace Runner::History
