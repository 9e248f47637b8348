// Tests the registry with a module that is actually loaded.

#include <gtest/gtest.h>

#include "base/idebugging.h"
#include "base/iunittestrecreate.h"
#include "base/lbdiagnostics.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/luunittest.h"
#include "base/os/modules.h"

namespace
{

class LbRTTIModule : public testing::Test
{
protected:
    void SetUp() override
    {
        const std::wstring path =
            LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable) + L"registryprobe" + LbOs::c_ModuleSuffix;
        std::wstring reason;
        ASSERT_TRUE(LbOs::LoadModule(path, reason)) << testing::PrintToString(reason);
    }

    static std::unique_ptr<IObject> createProbe() { return LbRTTI::getCreate(L"CRegistryProbe")(); }
};

/// Runs the sub-test with this index, expects its result, and returns its messages.
std::wstring getMessages(IObject& object, std::uint32_t subtest, LuUnitTest::EResult expected)
{
    auto& test = dynamic_cast<LuUnitTest&>(object);
    LuStreamWriteTextMemory messages;
    test.SetMessageStream(&messages);
    test.InitSubtests();
    EXPECT_EQ(test.RunUnitTest(subtest), expected);
    test.SetMessageStream(nullptr);
    return messages.GetText();
}

} // namespace

TEST_F(LbRTTIModule, RegistersItsClassesWhenLoaded)
{
    const LbRTTI* const record = LbRTTI::Find(L"CRegistryProbe");
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->GetBase(), &LuUnitTest::RTTI);
}

TEST_F(LbRTTIModule, RegistersItsClassesOnceIfLoadedTwice)
{
    // The registry would trace a second record with the same name.
    std::wstring traces;
    const auto former = LbDiagnostics::SetListener([&traces](const std::wstring& text) { traces += text; });
    SetUp();
    LbDiagnostics::SetListener(former);
    EXPECT_EQ(traces, L"");
}

TEST_F(LbRTTIModule, CreatesObjectsThatCastToUnitTestAndInterfaces)
{
    const std::unique_ptr<IObject> object = createProbe();
    EXPECT_NE(dynamic_cast<LuUnitTest*>(object.get()), nullptr);
    EXPECT_NE(dynamic_cast<IDebugging*>(object.get()), nullptr);
    EXPECT_NE(dynamic_cast<IUnitTestRecreate*>(object.get()), nullptr);
    EXPECT_TRUE(object->IsKindOf(LuUnitTest::RTTI));
}

TEST_F(LbRTTIModule, CreatesObjectsThatAreNotUnitTests)
{
    const std::unique_ptr<IObject> object = LbRTTI::getCreate(L"CRegistryProbeService")();
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(dynamic_cast<LuUnitTest*>(object.get()), nullptr);
    EXPECT_FALSE(object->IsKindOf(LuUnitTest::RTTI));
}

TEST_F(LbRTTIModule, RunsItsSubtests)
{
    EXPECT_EQ(getMessages(*createProbe(), 0, LuUnitTest::eR_Passed), L"");
}

TEST_F(LbRTTIModule, ThrowsStandardExceptionsThatAreCaughtByType)
{
    EXPECT_EQ(getMessages(*createProbe(), 1, LuUnitTest::eR_Exception), L"\t\tERROR: from the module\n");
}

TEST_F(LbRTTIModule, ThrowsExceptionsThatKeepTheirSourceLocation)
{
    const std::wstring messages = getMessages(*createProbe(), 2, LuUnitTest::eR_Exception);
    EXPECT_EQ(messages.find(L"\t\tERROR: aus dem Modul (registryprobe("), 0U) << testing::PrintToString(messages);
}

TEST_F(LbRTTIModule, ThrowsWideTextThatIsCaughtByType)
{
    EXPECT_EQ(getMessages(*createProbe(), 3, LuUnitTest::eR_Exception), L"\t\tERROR: Größe fehlt\n");
}

TEST_F(LbRTTIModule, PassesExceptionsOfConstructorsToTheCaller)
{
    EXPECT_THROW(LbRTTI::getCreate(L"CRegistryProbeThrowing")(), LbException);
}

TEST_F(LbRTTIModule, PassesExceptionsOfInterfacesToTheCaller)
{
    const std::unique_ptr<IObject> object = createProbe();
    EXPECT_THROW(dynamic_cast<IUnitTestRecreate&>(*object).Recreate(0), LbException);
}
