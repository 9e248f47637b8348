/// Which classes and cases of two runs belong together, and how run B stands to run A, the reference.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "testing/lutestsuite/lutestsuitereport.h"

namespace LuTestSuite
{

enum class EDiffState : std::uint8_t
{
    Plain, ///< no difference that matters
    Different,
    Worse,
    Better
};

inline constexpr std::uint32_t c_MissingSide = 0xFFFFFFFF;

/// Positions in the two records; c_MissingSide where a run has none.
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
    float timeRatio = 1.0F; ///< B to A when both are there; 0 when A's is 0
    float memoryRatio = 1.0F;
    EDiffState state = EDiffState::Plain;
};

/// One entry a class name, in the order of the names. Of several classes of one name in a run that
/// with the most unsuccessful cases counts, then that with the most warnings.
std::vector<SClassMatch> MatchClasses(const LuTestSuiteReport::SReportData& a, const LuTestSuiteReport::SReportData& b,
                                      bool tolerateWarnings);

/// One entry a class and case name, in the order of "class:case". Of several runs of a case the worst counts: an
/// error, then a failure, then a warning.
std::vector<SCaseMatch> MatchCases(const LuTestSuiteReport::SReportData& a, const LuTestSuiteReport::SReportData& b,
                                   bool tolerateWarnings);

/// The entry that a match means; null for a missing side.
template<typename T>
const T* FindSide(const std::vector<T>& entries, std::uint32_t index)
{
    return index == c_MissingSide ? nullptr : &entries[index];
}

} // namespace LuTestSuite
