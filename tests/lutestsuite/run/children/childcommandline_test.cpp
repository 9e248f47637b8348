#include "testing/lutestsuite/run/children/childcommandline.h"

#include <string>

#include <gtest/gtest.h>

#include "base/lbcommandline.h"
#include "base/os/platform.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

using LuTestSuiteRun::GetChildCommandLine;
using LuTestSuiteRun::SChildSettings;

std::wstring getHost()
{
    const bool isDebug = LuTestSuiteUtils::GetBuildConfiguration().starts_with(L"Debug");
    return std::wstring(isDebug ? L"LuTestSuiteCLID" : L"LuTestSuiteCLI") + LbOs::c_ExecutableSuffix;
}

TEST(GetChildCommandLine, NamesTheDataDirectoryAndTheSharedObjects)
{
    EXPECT_EQ(GetChildCommandLine({L"/Größen und Maße/", {}, true}, L"m", L"q", L"a"),
              getHost() + L" -d \"/Größen und Maße/\" -x --memory-id m --request-event-id q --response-event-id a");
}

TEST(GetChildCommandLine, KeepsASeparatorBeforeTheClosingQuotationMark)
{
    const auto words =
        LbCommandLine::Split(GetChildCommandLine({L"D:\\Daten mit Lücke\\", {}, true}, L"m", L"q", L"a"));

    ASSERT_EQ(words.size(), 10U);
    EXPECT_EQ(words[2], L"D:\\Daten mit Lücke\\");
    EXPECT_EQ(words[3], L"-x");
}

TEST(GetChildCommandLine, KeepsTheSeparatorOfRoots)
{
    for (const wchar_t* const root : {L"C:\\", L"\\\\Rechner\\Freigabe\\", L"/"})
    {
        const auto words = LbCommandLine::Split(GetChildCommandLine({root, {}, true}, L"m", L"q", L"a"));

        ASSERT_EQ(words.size(), 10U);
        EXPECT_EQ(words[2], root);
    }
}

TEST(GetChildCommandLine, PassesOnTheRunsOptions)
{
    const std::wstring line = GetChildCommandLine({L"/d/", {L"eins", L"mit Lücke"}, false}, L"m", L"q", L"a");

    EXPECT_TRUE(line.ends_with(L" --no-assert-dialog --dll \"eins\" --dll \"mit Lücke\"")) << line.size();
}

TEST(GetChildCommandLine, AlwaysNamesADataDirectory)
{
    const auto words = LbCommandLine::Split(GetChildCommandLine({}, L"m", L"q", L"a"));

    EXPECT_FALSE(words.at(2).empty());
}

} // namespace
