#include <algorithm>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/places.h"

namespace
{

std::string readSource(const wchar_t* name)
{
    return LbFileSystem::ReadFile8Bit(LbPath::ToNative(L"" LUTESTSUITE_SOURCE_DIR "/testing/lutestsuite/resources/") +
                                      name);
}

TEST(LoadResourceToString, ReturnsTheBytesOfTheFile)
{
    const std::string text = LuTestSuiteUtils::LoadResourceToString(L"IDR_HTML_REPORT_CSS", L"CSSFILE");

    EXPECT_FALSE(text.empty());
    EXPECT_TRUE(text == readSource(L"htmlreport.css"));
}

TEST(LoadResourceToString, IsEmptyForAnUnknownName)
{
    EXPECT_EQ(LuTestSuiteUtils::LoadResourceToString(L"IDR_UNBEKANNT", L"CSSFILE"), "");
    EXPECT_EQ(LuTestSuiteUtils::LoadResourceToString(L"", L""), "");
}

TEST(LoadResourceToString, IsEmptyForTheWrongType)
{
    EXPECT_EQ(LuTestSuiteUtils::LoadResourceToString(L"IDR_HTML_REPORT_CSS", L"JSFILE"), "");
}

TEST(DefaultStylesheet, IsTheEmbeddedFile)
{
    EXPECT_TRUE(LuTestSuiteUtils::GetDefaultStylesheet() == readSource(L"htmlreport.css"));
}

TEST(DefaultStylesheet, StylesEveryClassOfThePages)
{
    const std::string text = LuTestSuiteUtils::GetDefaultStylesheet();
    for (const char* selector : {"tr.ok", "tr.failure", "tr.error", "tr.warning", "tr.diff", "tr.better", "tr.worse",
                                 "div.ok", "div.error", "#testcases"})
    {
        EXPECT_NE(text.find(std::string("\r\n") + selector), std::string::npos) << selector;
    }
}

TEST(DefaultStylesheet, ContainsOnlyAsciiWithoutMarkup)
{
    // Only ASCII, which is the same in every encoding, and no markup characters.
    EXPECT_TRUE(std::ranges::all_of(LuTestSuiteUtils::GetDefaultStylesheet(), [](char character) {
        return character == '\r' || character == '\n' ||
               (character >= ' ' && character <= '~' && character != '<' && character != '&');
    }));
}

TEST(JavascriptSource, IsTheEmbeddedFile)
{
    EXPECT_FALSE(LuTestSuiteUtils::GetJavascriptSource().empty());
    EXPECT_TRUE(LuTestSuiteUtils::GetJavascriptSource() == readSource(L"htmlreport.js"));
}

} // namespace
