#include "base/lbtemporaryname.h"

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lustream.h"
#include "tests/support/scopedfolder.h"

namespace
{

TEST(LbTemporaryName, MakesDistinctNamesThatItRecognises)
{
    EXPECT_TRUE(LbTemporaryName::IsTemporary(LbTemporaryName::Make()));
    EXPECT_NE(LbTemporaryName::Make(), LbTemporaryName::Make());
}

TEST(LbTemporaryName, RecognisesFilesOfReviews)
{
    for (const wchar_t* name :
         {L"lutestsuite-review.pending", L"lutestsuite-review.pending.tmp", L"lutestsuite-review.pending.files"})
    {
        EXPECT_TRUE(LbTemporaryName::IsTemporary(name)) << name;
    }
}

TEST(LbTemporaryName, DoesNotRecogniseOtherFiles)
{
    for (const wchar_t* name : {L"", L"a.tmp", L"LuTestSuite-a", L"LuTestSuite.tmp", L"lutestsuite-review"})
    {
        EXPECT_FALSE(LbTemporaryName::IsTemporary(name)) << name;
    }
}

TEST(LbTemporaryName, RecognisesFilesThatWillReplaceOthers)
{
    const ScopedFolder folder;
    std::wstring name;

    LbFileSystem::WriteWhole(folder.WriteFile(L"a", "x"), [&name](const std::wstring& place) {
        name = LbPath::GetLastComponent(place);
        LuStreamWriteBinaryFile(place).Close();
    });

    EXPECT_TRUE(LbTemporaryName::IsTemporary(name)) << name.size();
}

} // namespace
