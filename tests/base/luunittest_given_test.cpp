/// Tests objects that are created for one sub-test and whose classes replace the given stream or directory.

#include "base/luunittest.h"

#include <string>

#include <gtest/gtest.h>

#include "base/lbpath.h"
#include "tests/support/givenmessages.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// Reads its files from a folder below the given one.
class CBelowItsFolder : public LuUnitTest
{
    LB_RTTI(CBelowItsFolder)
    void SetDataDirectory(const std::wstring& directory) override
    {
        LuUnitTest::SetDataDirectory(LbPath::WithSeparator(directory + L"sub"));
    }
    void InitSubtests() override
    {
        AddFileSubtests(L"*.txt",
                        [this](const std::wstring&) { Info(L"%u from %s", GetSubtestCount(), GetSubtestName(0)); });
    }
};

/// Marks its lines before it passes them on. Its first sub-test runs the second one.
class CMarksMessages : public LuUnitTest
{
    LB_RTTI(CMarksMessages)
    void SetMessageStream(LuStreamWriteText* stream) override
    {
        m_marked.to = stream;
        LuUnitTest::SetMessageStream(&m_marked);
    }
    void InitSubtests() override
    {
        AddSubtest(L"runs another", [this] { RunUnitTest(1); });
        AddSubtest(L"speaks", [this] { Info(L"text"); });
    }

    struct SMarked : public LuStreamWriteText
    {
        void Write(std::wstring_view text) override { to->Write(L"marked:" + std::wstring(text)); }

        LuStreamWriteText* to = nullptr;
    };
    SMarked m_marked;
};

/// Keeps the stream and does not pass it to the base class.
class CKeepsMessages : public LuUnitTest
{
    LB_RTTI(CKeepsMessages)
    void SetMessageStream(LuStreamWriteText* stream) override { m_stream = stream; }
    void InitSubtests() override
    {
        AddSubtest(L"runs another", [this] { RunUnitTest(1); });
        AddSubtest(L"speaks", [this] { m_stream->Write(L"text"); });
    }

    LuStreamWriteText* m_stream = nullptr;
};

} // namespace

LB_RTTI_CLASS(CBelowItsFolder, LuUnitTest)
LB_RTTI_CLASS(CMarksMessages, LuUnitTest)
LB_RTTI_CLASS(CKeepsMessages, LuUnitTest)

namespace
{

/// Calls an object as a runner does. Returns its messages, or "not found" if the class lacks the sub-test.
template<typename UnitTest>
std::wstring run(const std::wstring& name, const std::wstring& directory = L"")
{
    GivenMessages messages(directory);
    UnitTest object;
    LuUnitTest& unitTest = object;
    unitTest.SetMessageStream(&messages);
    unitTest.SetDataDirectory(directory);
    unitTest.SelectSubtest(name);
    unitTest.InitSubtests();
    if (!unitTest.HasSelectedSubtest())
    {
        return L"not found";
    }
    unitTest.RunSelectedSubtest();
    return messages.GetText();
}

TEST(SelectedSubtestOfAReplacingClass, IsFoundOnlyInTheFolderThatTheClassChooses)
{
    const ScopedFolder folder;
    for (const wchar_t* const name : {L"a.txt", L"sub/x.txt", L"sub/y.txt", L"sub/sub/another.txt"})
    {
        folder.WriteFile(name, "");
    }

    EXPECT_EQ(run<CBelowItsFolder>(L"y.txt", folder.GetPath()), L"\t\tINFO:  2 from x.txt\n");
    EXPECT_EQ(run<CBelowItsFolder>(L"another.txt", folder.GetPath()), L"not found");
    EXPECT_EQ(run<CBelowItsFolder>(L"a.txt", folder.GetPath()), L"not found");
}

TEST(SelectedSubtestOfAReplacingClass, RunsAnotherSubtestWithTheStreamThatTheClassSets)
{
    EXPECT_EQ(run<CMarksMessages>(L"runs another"), L"marked:\t\tINFO:  text\n");
}

TEST(SelectedSubtestOfAReplacingClass, RunsAnotherSubtestIfTheClassKeepsTheStream)
{
    EXPECT_EQ(run<CKeepsMessages>(L"runs another"), L"text");
}

} // namespace
