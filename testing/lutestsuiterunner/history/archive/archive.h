/// The runs of an archive, with each case's name stored once.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "testing/lutestsuiterunner/history/archive/recordedrun.h"

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
    std::vector<SCell> cells;       ///< one for each case of the run
    std::vector<SMessage> messages; ///< of failed cases
};

/// One thread at a time.
class CArchive
{
public:
    /// The names must differ.
    explicit CArchive(std::vector<SCaseName> names = {}) : m_names(std::move(names)) {}

    /// Entries with the same name are repetitions of a case, or cases that a report does not distinguish. Their worst
    /// result, highest memory and mean time count.
    SRun MakeRun(const SRecordedRun& recorded);

    const std::vector<SCaseName>& GetNames() const { return m_names; }
    std::vector<SCaseName> TakeNames() { return std::move(m_names); }

private:
    std::uint32_t getIndex(const std::wstring& className, const std::wstring& caseName);
    std::uint32_t findIndex(SCaseName name);

    std::vector<SCaseName> m_names;
    std::unordered_map<std::wstring, std::uint32_t> m_indices; ///< of all names; empty until it is needed
    std::uint32_t m_next = 0;                                  ///< the index after the one that was found last
};

} // namespace Runner::History
