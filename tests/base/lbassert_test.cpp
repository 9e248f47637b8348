#include "base/lbassert.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbdiagnostics.h"

namespace
{

/// Switches the dialog off and records traces; the destructor restores both.
class LbAssertTest : public testing::Test
{
protected:
    LbAssertTest()
        : m_formerListener(LbDiagnostics::SetListener([this](const std::wstring& text) { m_lines.push_back(text); })),
          m_wasEnabled(LbAssert::IsDialogEnabled())
    {
        LbAssert::SetDialogEnabled(false);
    }
    ~LbAssertTest() override
    {
        LbAssert::SetDialogEnabled(m_wasEnabled);
        LbDiagnostics::SetListener(std::move(m_formerListener));
    }

    std::vector<std::wstring> m_lines;

private:
    std::function<void(const std::wstring&)> m_formerListener;
    bool m_wasEnabled;
};

TEST_F(LbAssertTest, EnablesAndDisablesTheDialog)
{
    EXPECT_FALSE(LbAssert::IsDialogEnabled());
    LbAssert::SetDialogEnabled(true);
    EXPECT_TRUE(LbAssert::IsDialogEnabled());
    LbAssert::SetDialogEnabled(false);
    EXPECT_FALSE(LbAssert::IsDialogEnabled());
}

TEST_F(LbAssertTest, TracesTheConditionFileAndLineOfAFailure)
{
    LbAssert::Fail("count > 0", "/folder/base/größer.cpp", 42);
    LbAssert::Fail("count > 0", "C:\\folder\\file.cpp", 7);
    LbAssert::Fail("x", "file.cpp", 1);
    EXPECT_EQ(m_lines, (std::vector<std::wstring>{L"Zusicherung verletzt: count > 0 (größer.cpp, Zeile 42)",
                                                  L"Zusicherung verletzt: count > 0 (file.cpp, Zeile 7)",
                                                  L"Zusicherung verletzt: x (file.cpp, Zeile 1)"}));
}

TEST_F(LbAssertTest, ChecksInDebugBuildsOnly)
{
#ifdef NDEBUG
    constexpr std::size_t c_Checks = 0;
#else
    constexpr std::size_t c_Checks = 1;
#endif
    std::size_t evaluations = 0;
    LB_ASSERT(++evaluations == 0);
    EXPECT_EQ(evaluations, c_Checks);
    EXPECT_EQ(m_lines.size(), c_Checks);
}

TEST_F(LbAssertTest, TracesNothingIfTheConditionHolds)
{
    const int value = 1;
    LB_ASSERT(value == 1);
    EXPECT_TRUE(m_lines.empty());
}

} // namespace
