#include "testing/lutestsuite/run/children/sharedworkbuffer.h"

#include <cstring>
#include <functional>
#include <string>

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "base/lbuniqueid.h"

namespace
{

using LuTestSuiteRun::CSharedMemoryWorkBuffer;
using LuTestSuiteRun::ECaseRunResult;
using LuTestSuiteRun::SWorkBuffer;

/// Calls `function`; returns the function that its LbException names, or an empty text without an exception.
std::wstring getFunction(const std::function<void()>& function)
{
    try
    {
        function();
    }
    catch (const LbException& exception)
    {
        return exception.GetFunction();
    }
    return {};
}

class SharedWorkBuffer : public testing::Test
{
protected:
    std::wstring m_name = LbUniqueId::Generate();
    CSharedMemoryWorkBuffer m_buffer{m_name, CSharedMemoryWorkBuffer::eO_Create};
};

TEST_F(SharedWorkBuffer, IsSharedByBothSides)
{
    CSharedMemoryWorkBuffer other(m_name, CSharedMemoryWorkBuffer::eO_Open);
    m_buffer.GetWriteAccess()->result = 3;
    LuTestSuiteRun::AppendMessages(*other.GetWriteAccess(), L"Größe");

    EXPECT_EQ(LuTestSuiteRun::LoadResult(*other.GetReadAccess()), ECaseRunResult::NoInput);
    EXPECT_EQ(LuTestSuiteRun::LoadMessages(*m_buffer.GetReadAccess()), L"Größe");
}

TEST_F(SharedWorkBuffer, CannotBeCreatedTwiceUnderOneName)
{
    EXPECT_EQ(getFunction([this] { CSharedMemoryWorkBuffer(m_name, CSharedMemoryWorkBuffer::eO_Create); }),
              L"LuTestSuiteRun::CSharedMemoryWorkBuffer::CSharedMemoryWorkBuffer");
}

TEST_F(SharedWorkBuffer, NamesTheFailedAccessIfTheMemoryIsMissing)
{
    CSharedMemoryWorkBuffer missing(LbUniqueId::Generate(), CSharedMemoryWorkBuffer::eO_Open);

    EXPECT_EQ(getFunction([&missing] { missing.GetWriteAccess(); }),
              L"LuTestSuiteRun::CSharedMemoryWorkBuffer::GetWriteAccess");
    EXPECT_EQ(getFunction([&missing] { missing.GetReadAccess(); }),
              L"LuTestSuiteRun::CSharedMemoryWorkBuffer::GetReadAccess");
}

/// Tests of contents that a broken process can leave in a buffer.
class BrokenWorkBuffer : public SharedWorkBuffer
{
protected:
    SWorkBuffer& GetBuffer() { return *m_buffer.GetWriteAccess(); }
};

TEST_F(BrokenWorkBuffer, MapsInvalidResultsToUnknown)
{
    GetBuffer().result = 8;
    EXPECT_EQ(LuTestSuiteRun::LoadResult(GetBuffer()), ECaseRunResult::TimeOut);
    for (const std::uint32_t result : {9U, 0x80000000U, 0xFFFFFFFFU})
    {
        GetBuffer().result = result;
        EXPECT_EQ(LuTestSuiteRun::LoadResult(GetBuffer()), ECaseRunResult::Unknown);
    }
}

TEST_F(BrokenWorkBuffer, LimitsTheMessageLengthToTheField)
{
    GetBuffer().messageLength = 0xFFFFFFFFU;

    EXPECT_EQ(LuTestSuiteRun::LoadMessages(GetBuffer()).size(), LuTestSuiteRun::c_MessageMax);
    EXPECT_FALSE(LuTestSuiteRun::AppendMessages(GetBuffer(), L"mehr"));
    EXPECT_EQ(GetBuffer().messageLength, LuTestSuiteRun::c_MessageMax);
}

TEST_F(BrokenWorkBuffer, LimitsNamesToTheField)
{
    std::memset(GetBuffer().className, 'a', sizeof(GetBuffer().className));

    EXPECT_EQ(LuTestSuiteRun::LoadName(GetBuffer().className).size(), LuTestSuiteRun::c_NameCapacity);
}

TEST_F(BrokenWorkBuffer, TreatsAnyNonZeroFlagAsSet)
{
    std::memset(static_cast<void*>(&GetBuffer().params), 0xFE, sizeof(GetBuffer().params));

    const LuTestSuiteRun::SParams params = LuTestSuiteRun::LoadParams(GetBuffer());

    EXPECT_EQ(params.trackHeap, true);
    EXPECT_EQ(params.parallel, true);
    EXPECT_EQ(params.repetitionsGiven, true);
    EXPECT_EQ(params.timeOutSec, 0xFEFEFEFEU);
}

} // namespace
