#include "base/lbpath.h"

#include <string>

#include <gtest/gtest.h>

namespace
{

/// Converts an expected path, which is written with "/".
std::wstring native(std::wstring_view path)
{
    return LbPath::ToNative(path);
}

TEST(LbPath, RecognisesThePlatformsSeparators)
{
    EXPECT_TRUE(LbPath::IsSeparator(LbPath::c_Separator));
    EXPECT_TRUE(LbPath::IsSeparator(L'/'));
    EXPECT_EQ(LbPath::IsSeparator(L'\\'), LbPath::c_Separator == L'\\');
    EXPECT_FALSE(LbPath::IsSeparator(L'a'));
    EXPECT_FALSE(LbPath::IsSeparator(L'\0'));
}

TEST(LbPath, AppendsAMissingSeparator)
{
    EXPECT_EQ(LbPath::WithSeparator(L"x/a"), native(L"x/a/"));
    EXPECT_EQ(LbPath::WithSeparator(L"x/a/"), native(L"x/a/"));
    EXPECT_EQ(LbPath::WithSeparator(L"/"), native(L"/"));
}

TEST(LbPath, LeavesAnEmptyPathEmpty)
{
    EXPECT_EQ(LbPath::WithSeparator(L""), L"");
    EXPECT_EQ(LbPath::WithoutSeparator(L""), L"");
    EXPECT_EQ(LbPath::GetLastComponent(L""), L"");
    EXPECT_EQ(LbPath::GetParent(L""), L"");
    EXPECT_EQ(LbPath::ToNative(L""), L"");
}

TEST(LbPath, RemovesOneTrailingSeparator)
{
    EXPECT_EQ(LbPath::WithoutSeparator(L"x/a/"), native(L"x/a"));
    EXPECT_EQ(LbPath::WithoutSeparator(L"x/a"), native(L"x/a"));
    EXPECT_EQ(LbPath::WithoutSeparator(L"x//"), native(L"x/"));
    EXPECT_EQ(LbPath::WithoutSeparator(L"/"), L"");
}

TEST(LbPath, FindsTheLastComponent)
{
    EXPECT_EQ(LbPath::GetLastComponent(L"x/a"), L"a");
    EXPECT_EQ(LbPath::GetLastComponent(L"x/a/"), L"a");
    EXPECT_EQ(LbPath::GetLastComponent(L"x/a//"), L"a");
    EXPECT_EQ(LbPath::GetLastComponent(L"a"), L"a");
    EXPECT_EQ(LbPath::GetLastComponent(L"/a"), L"a");
    EXPECT_EQ(LbPath::GetLastComponent(L"x/a.b.txt"), L"a.b.txt");
    EXPECT_EQ(LbPath::GetLastComponent(L"/"), L"");
}

TEST(LbPath, FindsThePathBeforeTheLastComponent)
{
    EXPECT_EQ(LbPath::GetParent(L"x/a"), native(L"x/"));
    EXPECT_EQ(LbPath::GetParent(L"x/a/"), native(L"x/"));
    EXPECT_EQ(LbPath::GetParent(L"w/x/a"), native(L"w/x/"));
    EXPECT_EQ(LbPath::GetParent(L"/a"), native(L"/"));
    EXPECT_EQ(LbPath::GetParent(L"a"), L"");
    EXPECT_EQ(LbPath::GetParent(L"a/"), L"");
    EXPECT_EQ(LbPath::GetParent(L"/"), L"");
}

TEST(LbPath, TreatsBackslashesLikeThePlatform)
{
    const bool isSeparator = LbPath::IsSeparator(L'\\');
    EXPECT_EQ(LbPath::GetLastComponent(L"x\\a"), isSeparator ? L"a" : L"x\\a");
    EXPECT_EQ(LbPath::GetParent(L"x\\a"), isSeparator ? L"x\\" : L"");
    EXPECT_EQ(LbPath::WithoutSeparator(L"x\\"), isSeparator ? L"x" : L"x\\");
}

TEST(LbPath, ConvertsSlashesAndBackslashesToThePlatformsSeparator)
{
    const std::wstring separator(1, LbPath::c_Separator);
    EXPECT_EQ(LbPath::ToNative(L"a/b\\c"), L"a" + separator + L"b" + separator + L"c");
}

TEST(LbPath, MakesNamesSafeForEveryFileSystem)
{
    EXPECT_EQ(LbPath::ToSafeName(L"a\\b/c:d*e?f\"g<h>i|j"), L"a_b_c_d_e_f_g_h_i_j");
    EXPECT_EQ(LbPath::ToSafeName(std::wstring(L"\0\t\n\x1F|\x7F", 6)), L"______");
    EXPECT_EQ(LbPath::ToSafeName(L"\u0080\u009F\u00A0"), L"__\u00A0");
    EXPECT_EQ(LbPath::ToSafeName(L"Größe 5 (neu).txt"), L"Größe 5 (neu).txt");
    EXPECT_EQ(LbPath::ToSafeName(L""), L"");
}

} // namespace
