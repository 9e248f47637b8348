// Information about the build and about modules.

#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/lbpath.h"
#include "base/lbrtti.h"
#include "base/os/files.h"
#include "base/os/platform.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

const LbRTTI s_RecordOfThisProgram(L"CModuleNameProbe", &IObject::RTTI, nullptr);

TEST(GetBuildConfiguration, NamesTheBuildAndThePlatform)
{
    EXPECT_THAT(LuTestSuiteUtils::GetBuildConfiguration(), testing::AnyOf(L"Release x64", L"Debug x64"));
}

TEST(GetPlatform, ReturnsOneFor64Bits)
{
    EXPECT_EQ(static_cast<std::uint32_t>(LuTestSuiteUtils::GetPlatform()), 1U);
}

TEST(GetModuleName, IsTheFileNameOfTheModuleThatHoldsTheClass)
{
    EXPECT_EQ(LuTestSuiteUtils::GetModuleName(s_RecordOfThisProgram),
              LbPath::GetLastComponent(LbOs::GetExecutablePath()));
}

TEST(GetModuleName, NamesTheModuleThatRegisteredTheClass)
{
    LuTestSuiteEnvironment environment;
    environment.LoadDLL(L"registryprobe", false);
    const LbRTTI* const type = LbRTTI::Find(L"CRegistryProbe");
    ASSERT_NE(type, nullptr);

    EXPECT_EQ(LuTestSuiteUtils::GetModuleName(*type), std::wstring(L"registryprobe") + LbOs::c_ModuleSuffix);
}

TEST(GetModuleName, IsEmptyForARecordOutsideAnyModule)
{
    const auto record = std::make_unique<LbRTTI>(L"CModuleNameProbeOnTheHeap", &IObject::RTTI, nullptr);

    EXPECT_EQ(LuTestSuiteUtils::GetModuleName(*record), L"");
}

} // namespace
