// Output lines of several threads.

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "testing/lutestsuite/lutestsuiteout.h"
#include "tests/support/capturedoutput.h"

namespace
{

constexpr int c_Threads = 8;
constexpr int c_LinesPerThread = 200;

/// Prints from all threads at once. Each thread prints its own letter, one line at a time.
void printFromAllThreads()
{
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < c_Threads; ++thread)
    {
        threads.emplace_back([thread] {
            const std::wstring letters(50, static_cast<wchar_t>(L'a' + thread));
            for (int line = 0; line < c_LinesPerThread; ++line)
            {
                LuTestSuiteOut::Write(L"%s%d\n", letters, line).Bold();
            }
        });
    }
}

/// Detects calls of Output that overlap. Stays registered until the process ends.
class COverlapDetector : public LuTestSuiteOut::LuCustomOut
{
public:
    static COverlapDetector& GetInstance()
    {
        static COverlapDetector& detector = make();
        return detector;
    }

    void Output(const LuTestSuiteOut&) override
    {
        m_overlaps += m_isInside.exchange(true) ? 1 : 0;
        std::this_thread::yield();
        m_isInside = false;
    }

    int GetOverlaps() const { return m_overlaps; }

private:
    static COverlapDetector& make()
    {
        auto* const detector = new COverlapDetector;
        LuTestSuiteOut::AddCustomOut(detector);
        return *detector;
    }

    std::atomic<bool> m_isInside = false;
    std::atomic<int> m_overlaps = 0;
};

TEST(LuTestSuiteOutConcurrency, LosesNoLineAndKeepsTheOrderOfEachThread)
{
    const CapturedOutput output;

    printFromAllThreads();

    std::vector<int> next(c_Threads, 0);
    for (const CapturedOutput::SLine& line : output.GetLines())
    {
        const auto thread = static_cast<std::size_t>(line.text.at(0) - L'a');
        EXPECT_EQ(line.text, std::wstring(50, line.text[0]) + std::to_wstring(next.at(thread)++) + L"\n");
    }
    EXPECT_THAT(next, testing::Each(c_LinesPerThread));
}

TEST(LuTestSuiteOutConcurrency, CallsCustomOutputsOneLineAtATime)
{
    const CapturedOutput output;
    const COverlapDetector& detector = COverlapDetector::GetInstance();

    printFromAllThreads();

    EXPECT_EQ(detector.GetOverlaps(), 0);
}

TEST(LuTestSuiteOutConcurrency, WritesWholeLinesToTheConsole)
{
    testing::internal::CaptureStdout();

    printFromAllThreads();

    const std::string text = testing::internal::GetCapturedStdout();
    std::size_t lines = 0;
    for (std::size_t start = 0; start < text.size(); start = text.find('\n', start) + 1)
    {
        EXPECT_EQ(text.substr(start, 50), std::string(50, text[start]));
        ++lines;
    }
    EXPECT_EQ(lines, std::size_t{c_Threads} * c_LinesPerThread);
}

} // namespace
