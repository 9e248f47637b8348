/// The runs of one build configuration as a table: a row for each case, a column for each run, the newest last.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "testing/lutestsuiterunner/history/archive/archive.h"

namespace Runner::History
{

/// The outcome of a case in a run.
enum class EOutcome : std::uint8_t
{
    Absent, ///< not among the cases of the run
    Passed,
    Failed,
    Undecided ///< canceled
};

/// Refers to names and runs, which must outlive it.
class CTable
{
public:
    CTable(const std::vector<SCaseName>& names, std::vector<const SRun*> runs);

    std::size_t GetRunCount() const { return m_runs.size(); }
    const SRun& GetRun(std::size_t run) const { return *m_runs[run]; }

    /// The number of cases in all runs of the archive. Cases that only other configurations have are absent from each
    /// run.
    std::size_t GetCaseCount() const { return m_names->size(); }
    const SCaseName& GetName(std::size_t testCase) const { return (*m_names)[testCase]; }

    /// The same number for the same name, in each archive and on each platform.
    std::uint64_t GetSeed(std::size_t testCase) const;

    std::span<const EOutcome> GetOutcomes(std::size_t testCase) const { return getRow(m_outcomes, testCase); }
    /// 0 where the case is absent.
    std::span<const float> GetSeconds(std::size_t testCase) const { return getRow(m_seconds, testCase); }
    std::span<const std::uint64_t> GetMemory(std::size_t testCase) const { return getRow(m_memory, testCase); }
    /// Empty if no run has counted allocations.
    std::span<const std::uint64_t> GetAllocations(std::size_t testCase) const;
    /// True if the case failed and passed within the run.
    bool HasBoth(std::size_t testCase, std::size_t run) const;
    bool HasBoth(std::size_t testCase) const;

    bool HasMemory() const { return m_hasMemory; }

private:
    template<typename T>
    std::span<const T> getRow(const std::vector<T>& table, std::size_t testCase) const
    {
        return std::span(table).subspan(testCase * m_runs.size(), m_runs.size());
    }

    void fill(std::size_t run, const SCell& cell);

    const std::vector<SCaseName>* m_names;
    std::vector<const SRun*> m_runs;
    std::vector<EOutcome> m_outcomes;
    std::vector<float> m_seconds;
    std::vector<std::uint64_t> m_memory;
    std::vector<std::uint64_t> m_allocations; ///< empty if no run has counted them
    std::vector<std::uint64_t> m_both;        ///< sorted: case times number of runs plus run
    bool m_hasMemory = false;
};

} // namespace Runner::History
