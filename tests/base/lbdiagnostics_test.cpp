#include "base/lbdiagnostics.h"

#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace
{

using Lines = std::vector<std::wstring>;

/// Records traces during a test; the destructor restores the former listener.
class LbDiagnosticsTest : public testing::Test
{
protected:
    LbDiagnosticsTest()
        : m_former(LbDiagnostics::SetListener([this](const std::wstring& text) { m_lines.push_back(text); }))
    {
    }
    ~LbDiagnosticsTest() override { LbDiagnostics::SetListener(std::move(m_former)); }

    Lines m_lines;

private:
    std::function<void(const std::wstring&)> m_former;
};

TEST_F(LbDiagnosticsTest, PassesLinesToTheListener)
{
    LbDiagnostics::Trace(L"erste");
    LbDiagnostics::Trace(L"größer 100%s");
    EXPECT_EQ(m_lines, (Lines{L"erste", L"größer 100%s"}));
}

TEST_F(LbDiagnosticsTest, ReturnsTheFormerListener)
{
    const auto former = LbDiagnostics::SetListener({});
    LbDiagnostics::Trace(L"to nobody");
    EXPECT_EQ(m_lines, Lines());
    former(L"direct");
    EXPECT_EQ(m_lines, Lines{L"direct"});
}

TEST_F(LbDiagnosticsTest, DoesNotCallAListenerForItsOwnTraces)
{
    LbDiagnostics::SetListener([this](const std::wstring& text) {
        m_lines.push_back(text);
        LbDiagnostics::Trace(L"inner");
    });
    LbDiagnostics::Trace(L"outer");
    LbDiagnostics::Trace(L"again");
    EXPECT_EQ(m_lines, (Lines{L"outer", L"again"}));
}

TEST_F(LbDiagnosticsTest, LetsAListenerReplaceItself)
{
    LbDiagnostics::SetListener([this](const std::wstring& text) {
        LbDiagnostics::SetListener({});
        m_lines.push_back(text);
    });
    LbDiagnostics::Trace(L"first");
    LbDiagnostics::Trace(L"second");
    EXPECT_EQ(m_lines, Lines{L"first"});
}

TEST_F(LbDiagnosticsTest, CallsTheListenerAgainAfterItsException)
{
    bool isFirst = true;
    LbDiagnostics::SetListener([this, &isFirst](const std::wstring& text) {
        if (std::exchange(isFirst, false))
        {
            throw 1;
        }
        m_lines.push_back(text);
    });
    EXPECT_THROW(LbDiagnostics::Trace(L"thrown"), int);
    LbDiagnostics::Trace(L"heard");
    EXPECT_EQ(m_lines, Lines{L"heard"});
}

using LbDiagnosticsConcurrencyTest = LbDiagnosticsTest;

TEST_F(LbDiagnosticsConcurrencyTest, CallsTheListenerFromOneThreadAtATime)
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread)
    {
        threads.emplace_back([] {
            for (int index = 0; index < 100; ++index)
            {
                LbDiagnostics::Trace(L"line");
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(m_lines, Lines(400, L"line"));
}

} // namespace
