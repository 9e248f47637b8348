/// The space of a junit.xml of limited size.
#pragma once

#include <cstddef>
#include <vector>

#include "testing/lutestsuiterunner/reports/junitcase.h"

namespace Runner
{

/// Decides what fits into a file of limited size. Call Learn for all elements and LearnFrame for all other text, then
/// Decide, then Take for each element in the same order.
class CJunitBudget
{
public:
    explicit CJunitBudget(std::size_t limit) : m_limit(limit) {}

    void Learn(const SJunitCase& element);
    void LearnFrame(std::size_t size) { m_fixed += size; }

    void Decide();

    /// Returns false if the element must be omitted. Otherwise cuts its text if it is too long.
    bool Take(SJunitCase& element);

private:
    std::size_t m_limit;
    std::size_t m_fixed = 0;
    std::size_t m_redFrames = 0;
    std::size_t m_otherFrames = 0;
    std::vector<std::size_t> m_texts;
    std::size_t m_redRoom = 0;
    std::size_t m_otherRoom = 0;
    std::size_t m_longestText = 0;
};

} // namespace Runner
