#include "testing/lutestsuite/run/children/workbuffer.h"

#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace
{

using LuTestSuiteRun::AppendMessages;
using LuTestSuiteRun::c_MessageMax;
using LuTestSuiteRun::LoadMessages;
using LuTestSuiteRun::LoadName;
using LuTestSuiteRun::StoreName;
using LuTestSuiteRun::SWorkBuffer;

/// A character of two UTF-16 units. A string, because the character is one wchar_t on Linux and two on Windows.
const std::wstring c_Pair = L"\U0001F600";

class WorkBuffer : public testing::Test
{
protected:
    const std::unique_ptr<SWorkBuffer> m_buffer = std::make_unique<SWorkBuffer>();
};

TEST_F(WorkBuffer, HoldsALikelySubtestInReservedBytes)
{
    EXPECT_EQ(LuTestSuiteRun::LoadLikelySubtest(*m_buffer), std::nullopt);
    m_buffer->params.testCaseMax = 7;
    m_buffer->params.breakAllocId = 8;
    LuTestSuiteRun::StoreLikelySubtest(*m_buffer, 0xFFFF'FFFEU);

    EXPECT_EQ(LuTestSuiteRun::LoadLikelySubtest(*m_buffer), 0xFFFF'FFFEU);
    EXPECT_EQ(m_buffer->params.testCaseMax, 7U);
    EXPECT_EQ(m_buffer->params.breakAllocId, 8U);

    LuTestSuiteRun::StoreLikelySubtest(*m_buffer, std::nullopt);
    EXPECT_EQ(LuTestSuiteRun::LoadLikelySubtest(*m_buffer), std::nullopt);
}

TEST_F(WorkBuffer, HoldsANameOf1023Characters)
{
    const std::wstring name(1023, L'ä');

    EXPECT_TRUE(StoreName(m_buffer->className, name));
    EXPECT_EQ(LoadName(m_buffer->className), name);
}

TEST_F(WorkBuffer, RefusesANameOf1024CharactersAndKeepsTheFormerOne)
{
    ASSERT_TRUE(StoreName(m_buffer->className, L"vorher"));

    EXPECT_FALSE(StoreName(m_buffer->className, std::wstring(1024, L'n')));
    EXPECT_EQ(LoadName(m_buffer->className), L"vorher");
}

TEST_F(WorkBuffer, CountsSurrogatePairsAsTwoUnits)
{
    EXPECT_TRUE(StoreName(m_buffer->caseName, std::wstring(1021, L'n') + c_Pair));
    EXPECT_EQ(LoadName(m_buffer->caseName), std::wstring(1021, L'n') + c_Pair);
    EXPECT_FALSE(StoreName(m_buffer->caseName, std::wstring(1022, L'n') + c_Pair));
}

TEST_F(WorkBuffer, ReadsAFieldWithoutTerminatorToItsEnd)
{
    for (char16_t& unit : m_buffer->caseName)
    {
        unit = u'x';
    }
    EXPECT_EQ(LoadName(m_buffer->caseName), std::wstring(1024, L'x'));
}

TEST_F(WorkBuffer, AppendsMessages)
{
    AppendMessages(*m_buffer, L"größer\n");
    AppendMessages(*m_buffer, c_Pair);

    EXPECT_EQ(LoadMessages(*m_buffer), L"größer\n" + c_Pair);
    EXPECT_EQ(m_buffer->messageLength, 9U);
    EXPECT_EQ(m_buffer->messages[9], u'\0');
}

TEST_F(WorkBuffer, CutsMessagesAtTheirLimit)
{
    AppendMessages(*m_buffer, std::wstring(c_MessageMax, L'a'));
    AppendMessages(*m_buffer, L"b");

    EXPECT_EQ(LoadMessages(*m_buffer), std::wstring(c_MessageMax, L'a'));
    EXPECT_EQ(m_buffer->messages[c_MessageMax], u'\0');
}

TEST_F(WorkBuffer, OmitsASurrogatePairThatFitsOnlyHalf)
{
    AppendMessages(*m_buffer, std::wstring(c_MessageMax - 1, L'a') + c_Pair + L"b");

    EXPECT_EQ(LoadMessages(*m_buffer), std::wstring(c_MessageMax - 1, L'a'));
    EXPECT_EQ(m_buffer->messages[c_MessageMax - 1], u'\0');
}

TEST_F(WorkBuffer, OmitsASurrogatePairThatFitsOnlyHalfAfterOtherMessages)
{
    AppendMessages(*m_buffer, std::wstring(c_MessageMax - 3, L'a') + c_Pair);
    AppendMessages(*m_buffer, c_Pair);

    EXPECT_EQ(LoadMessages(*m_buffer), std::wstring(c_MessageMax - 3, L'a') + c_Pair);
}

TEST_F(WorkBuffer, KeepsASurrogatePairThatEndsAtTheLimit)
{
    const std::wstring text = std::wstring(c_MessageMax - 2, L'a') + c_Pair;

    AppendMessages(*m_buffer, text + L"b");

    EXPECT_EQ(LoadMessages(*m_buffer), text);
}

TEST_F(WorkBuffer, ClampsALengthBeyondTheLimit)
{
    AppendMessages(*m_buffer, L"a");
    m_buffer->messageLength = 4'294'967'295U;

    EXPECT_EQ(LoadMessages(*m_buffer).size(), c_MessageMax);
    EXPECT_EQ(LoadMessages(*m_buffer).front(), L'a');
}

class WorkBufferRequest : public WorkBuffer
{
protected:
    static constexpr std::uint32_t sc_uiNumber = 7;
};

TEST_F(WorkBufferRequest, IsTakenOnlyOnce)
{
    LuTestSuiteRun::SubmitRequest(*m_buffer, sc_uiNumber);

    EXPECT_TRUE(LuTestSuiteRun::TakeRequest(*m_buffer));
    EXPECT_FALSE(LuTestSuiteRun::TakeRequest(*m_buffer));
}

TEST_F(WorkBufferRequest, IsAbsentInAClearedBuffer)
{
    LuTestSuiteRun::ClearRequest(*m_buffer);

    EXPECT_FALSE(LuTestSuiteRun::TakeRequest(*m_buffer));
}

TEST_F(WorkBufferRequest, IsAnsweredOnlyUnderItsNumber)
{
    LuTestSuiteRun::SubmitRequest(*m_buffer, sc_uiNumber);
    ASSERT_TRUE(LuTestSuiteRun::TakeRequest(*m_buffer));
    EXPECT_FALSE(LuTestSuiteRun::IsAnswered(*m_buffer, sc_uiNumber));

    LuTestSuiteRun::AnswerRequest(*m_buffer);

    EXPECT_TRUE(LuTestSuiteRun::IsAnswered(*m_buffer, sc_uiNumber));
    EXPECT_FALSE(LuTestSuiteRun::IsAnswered(*m_buffer, sc_uiNumber + 1));
    EXPECT_FALSE(LuTestSuiteRun::TakeRequest(*m_buffer));
}

TEST_F(WorkBufferRequest, IsEitherTakenOrWithdrawn)
{
    LuTestSuiteRun::SubmitRequest(*m_buffer, sc_uiNumber);
    EXPECT_TRUE(LuTestSuiteRun::WithdrawRequest(*m_buffer, sc_uiNumber));
    EXPECT_FALSE(LuTestSuiteRun::TakeRequest(*m_buffer));

    LuTestSuiteRun::SubmitRequest(*m_buffer, sc_uiNumber);
    EXPECT_TRUE(LuTestSuiteRun::TakeRequest(*m_buffer));
    EXPECT_FALSE(LuTestSuiteRun::WithdrawRequest(*m_buffer, sc_uiNumber));
}

TEST_F(WorkBufferRequest, IsVisibleUntilItIsTaken)
{
    EXPECT_FALSE(LuTestSuiteRun::HasRequest(*m_buffer));
    LuTestSuiteRun::ClearRequest(*m_buffer);
    EXPECT_FALSE(LuTestSuiteRun::HasRequest(*m_buffer));

    LuTestSuiteRun::SubmitRequest(*m_buffer, sc_uiNumber);
    EXPECT_TRUE(LuTestSuiteRun::HasRequest(*m_buffer));

    LuTestSuiteRun::TakeRequest(*m_buffer);
    EXPECT_FALSE(LuTestSuiteRun::HasRequest(*m_buffer));
    LuTestSuiteRun::AnswerRequest(*m_buffer);
    EXPECT_FALSE(LuTestSuiteRun::HasRequest(*m_buffer));
}

TEST_F(WorkBufferRequest, KeepsA30BitNumber)
{
    LuTestSuiteRun::SubmitRequest(*m_buffer, LuTestSuiteRun::c_MostRequests);

    EXPECT_TRUE(LuTestSuiteRun::IsSubmitted(*m_buffer, LuTestSuiteRun::c_MostRequests));
    EXPECT_TRUE(LuTestSuiteRun::TakeRequest(*m_buffer));
}

/// A parent that does not number its requests leaves 0 in the field.
TEST_F(WorkBufferRequest, IsTakenWithoutANumber)
{
    EXPECT_TRUE(LuTestSuiteRun::TakeRequest(*m_buffer));
    LuTestSuiteRun::AnswerRequest(*m_buffer);
    EXPECT_TRUE(LuTestSuiteRun::TakeRequest(*m_buffer));
}

TEST_F(WorkBufferRequest, IsCopiedWithoutMessages)
{
    const auto other = std::make_unique<SWorkBuffer>();
    ASSERT_TRUE(StoreName(m_buffer->caseName, L"Fall"));
    m_buffer->params.timeOutSec = 7;
    AppendMessages(*m_buffer, L"alt");
    AppendMessages(*other, L"ganz alt");
    LuTestSuiteRun::SubmitRequest(*m_buffer, sc_uiNumber);

    LuTestSuiteRun::CopyRequest(*m_buffer, *other);

    EXPECT_EQ(LoadName(other->caseName), L"Fall");
    EXPECT_EQ(other->params.timeOutSec, 7U);
    EXPECT_TRUE(LuTestSuiteRun::IsSubmitted(*other, sc_uiNumber));
    EXPECT_EQ(LoadMessages(*other), L"");
}

} // namespace
