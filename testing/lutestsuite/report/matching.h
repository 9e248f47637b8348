/// Matches classes and cases of two runs, and compares run B with the reference run A.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "testing/lutestsuite/lutestsuitereport.h"

namespace LuTestSuite
{

enum class EDiffState : std::uint8_t
{
    Plain, ///< no relevant difference
    Different,
    Worse,
    Better
};

inline constexpr std::uint32_t c_MissingSide = 0xFFFFFFFF;

/// Positions in the two records; c_MissingSide if a run lacks the entry.
struct SClassMatch
{
    std::uint32_t indexA = c_MissingSide;
    std::uint32_t indexB = c_MissingSide;
    EDiffState state = EDiffState::Plain;
};

struct SCaseMatch
{
    std::uint32_t indexA = c_MissingSide;
    std::uint32_t indexB = c_MissingSide;
    float timeRatio = 1.0F; ///< B divided by A if both exist; 0 if A's time is 0
    float memoryRatio = 1.0F;
    EDiffState state = EDiffState::Plain;
};

/// One entry per class name, in the order of names. If a run has several classes of one name, the one with the most
/// unsuccessful cases counts; of equal ones, the one with the most warnings.
std::vector<SClassMatch> MatchClasses(const LuTestSuiteReport::SReportData& a, const LuTestSuiteReport::SReportData& b,
                                      bool tolerateWarnings);

/// One entry per class and case name, in the order of "class:case". If a run has a case several times, the worst result
/// counts: an error is worse than a failure, and a failure is worse than a warning.
std::vector<SCaseMatch> MatchCases(const LuTestSuiteReport::SReportData& a, const LuTestSuiteReport::SReportData& b,
                                   bool tolerateWarnings);

/// The entry at the position; null for a missing side.
template<typename T>
const T* FindSide(const std::vector<T>& entries, std::uint32_t index)
{
    return index == c_MissingSide ? nullptr : &entries[index];
}

} // namespace LuTestSuite
