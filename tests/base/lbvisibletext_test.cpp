#include "base/lbvisibletext.h"

#include <gtest/gtest.h>

namespace
{

TEST(VisibleText, ShowsControlCharactersAsPictures)
{
    EXPECT_EQ(LbVisibleText::ShowControls(L"a\x1b[2Jb\r\n\x7f"), L"a\u241b[2Jb\u240d\u240a\u2421");
}

TEST(VisibleText, ReplacesControlCharactersWithoutAPicture)
{
    EXPECT_EQ(LbVisibleText::ShowControls(L"\u009b2J"), L"\ufffd2J");
}

TEST(VisibleText, KeepsTheControlCharactersThatTheCallerAllows)
{
    EXPECT_EQ(LbVisibleText::ShowControls(L"\tä\n\x1b", L"\n\t"), L"\tä\n\u241b");
}

TEST(VisibleText, ShowsInvalidUtf8BytesAsHexadecimalNumbers)
{
    EXPECT_EQ(LbVisibleText::ShowBytes("a\xE4\tb"), L"a\\xE4\u2409b");
}

TEST(VisibleText, ShowsInvisibleCharactersAsCodePoints)
{
    EXPECT_EQ(LbVisibleText::ShowBytes("1\xC2\xA0"
                                       "000\xE2\x80\x8B"),
              L"1\\u00A0000\\u200B");
}

} // namespace
