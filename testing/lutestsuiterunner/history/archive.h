/// The runs of an archive, with each case's name stored once.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "testing/lutestsuiterunner/history/recordedrun.h"

namespace Runner::History
{

struct SCaseName
{
    std::wstring className;
    std::wstring caseName;

    auto operator<=>(const SCaseName&) const = default;
};

/// A case in a run.
struct SCell
{
    std::uint32_t caseIndex = 0; ///< into CArchive::GetNames
    SMeasured measured;

    bool operator==(const SCell&) const = default;
};

struct SMessage
{
    std::uint32_t caseIndex = 0;
    std::wstring text; ///< of at most c_LongestMessage characters

    bool operator==(const SMessage&) const = default;
};

inline constexpr std::size_t c_LongestMessage = 300;

struct SRun
{
    SRunLabel label;
    std::vector<SCell> cells;       ///< one for each case of the run, in the run's order
    std::vector<SMessage> messages; ///< of failed cases
};

/// One thread at a time.
class CArchive
{
public:
    /// Entries with the same name are repetitions of a case, or cases that a report writes alike. Their worst result,
    /// highest memory and mean time count.
    SRun MakeRun(const SRecordedRun& recorded);

    std::uint32_t GetIndex(const std::wstring& className, const std::wstring& caseName);

    const std::vector<SCaseName>& GetNames() const { return m_names; }

private:
    std::vector<SCaseName> m_names;
    std::unordered_map<std::wstring, std::uint32_t> m_indices;
    std::wstring m_key; ///< of the name at hand; kept for its memory
};

} // namespace Runner::History
