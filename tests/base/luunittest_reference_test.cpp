// Tests of CompareWithReference.

#include <cstddef>
#include <span>
#include <string>

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbreceivedfile.h"
#include "base/lbtemporaryname.h"
#include "base/lbuniqueid.h"
#include "base/luunittest.h"
#include "base/os/console.h"
#include "tests/support/scopedenvironment.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// A unit test with one sub-test.
class CComparing : public LuUnitTest
{
    LB_RTTI(CComparing)

public:
    using LuUnitTest::AddFileSubtests;
    using LuUnitTest::CompareWithReference;
    using LuUnitTest::Error;
    using LuUnitTest::HasErrors;

    explicit CComparing(const std::wstring& folder)
    {
        SetDataDirectory(folder);
        SetMessageStream(&m_stream);
    }

    void InitSubtests() override {}

    template<typename F>
    EResult Run(F function)
    {
        AddSubtest(L"sub-test", function);
        return RunUnitTest(GetSubtestCount() - 1);
    }

    /// Compares a text with "a.expected".
    template<typename Text>
    EResult Compare(const Text& text)
    {
        return Run([this, text] { return CompareWithReference(text, L"a.expected"); });
    }

    const std::wstring& GetMessages() const { return m_stream.GetText(); }

private:
    LuStreamWriteTextMemory m_stream;
};

LB_RTTI_ABSTRACT(CComparing, LuUnitTest)

class CompareWithReference : public testing::Test
{
protected:
    std::string Read(const wchar_t* name) const { return LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(name)); }
    bool Holds(const wchar_t* name) const { return LbFileSystem::IsFile(m_folder.GetPathOf(name)); }

    ScopedFolder m_folder;
    CComparing m_test{m_folder.GetPath()};
};

TEST_F(CompareWithReference, PassesForEqualTexts)
{
    m_folder.WriteFile(L"a.expected", "eins\nzwei\n");

    EXPECT_EQ(m_test.Compare("eins\nzwei\n"), LuUnitTest::eR_Passed);
    EXPECT_EQ(m_test.Compare(std::wstring(L"eins\nzwei\n")), LuUnitTest::eR_Passed);
    EXPECT_EQ(m_test.GetMessages(), L"");
    EXPECT_FALSE(Holds(L"a.expected.received"));
}

TEST_F(CompareWithReference, TreatsBothLineEndsAsEqual)
{
    m_folder.WriteFile(L"a.expected", "eins\r\nzwei\n");

    EXPECT_EQ(m_test.Compare("eins\nzwei\r\n"), LuUnitTest::eR_Passed);
}

TEST_F(CompareWithReference, ReportsTheFirstDifferingLine)
{
    m_folder.WriteFile(L"a.expected", "eins\nzwei\ndrei\n");

    EXPECT_EQ(m_test.Compare(std::wstring(L"eins\nzwölf\nvier\n")), LuUnitTest::eR_Different);

    EXPECT_EQ(m_test.GetMessages(), L"\t\tERROR: a.expected: Zeile 2 ist \"zwölf\" statt \"zwei\"\n");
    EXPECT_TRUE(m_test.HasErrors());
    EXPECT_EQ(Read(L"a.expected.received"), "eins\nzwölf\nvier\n");
}

TEST_F(CompareWithReference, ShowsTheDifferenceBetweenLinesThatLookAlike)
{
    m_folder.WriteFile(L"a.expected", "1\xC2\xA0"
                                      "000\n");

    m_test.Compare(std::wstring(L"1 000\n"));

    EXPECT_EQ(m_test.GetMessages(), L"\t\tERROR: a.expected: Zeile 1 ist \"1 000\" statt \"1\\u00A0000\"\n");
}

TEST_F(CompareWithReference, ReportsMissingAndSurplusLines)
{
    m_folder.WriteFile(L"a.expected", "eins\nzwei");

    m_test.Compare("eins");
    m_test.Compare("eins\nzwei\n");

    EXPECT_EQ(m_test.GetMessages(), L"\t\tERROR: a.expected: Zeile 2 fehlt: \"zwei\"\n"
                                    L"\t\tERROR: a.expected: Zeile 3 ist zu viel: \"\"\n");
}

TEST_F(CompareWithReference, ShortensLongLinesAroundTheDifference)
{
    const std::string begin(5000, 'a');
    m_folder.WriteFile(L"a.expected", begin + "x" + begin);

    m_test.Compare(begin + "y" + begin);

    EXPECT_LT(m_test.GetMessages().size(), 500U);
    EXPECT_NE(m_test.GetMessages().find(L"aya"), std::wstring::npos);
    EXPECT_NE(m_test.GetMessages().find(L"axa"), std::wstring::npos);
}

TEST_F(CompareWithReference, ReportsTheFirstDifferingByte)
{
    m_folder.WriteFile(L"a.expected", "ab\r\n");
    const std::string received = "ac\r\n";

    EXPECT_EQ(
        m_test.Run([&] { return m_test.CompareWithReference(std::as_bytes(std::span(received)), L"a.expected"); }),
        LuUnitTest::eR_Different);
    EXPECT_EQ(m_test.Run([&] {
        return m_test.CompareWithReference(std::as_bytes(std::span(received).first(2)), L"a.expected.received");
    }),
              LuUnitTest::eR_Different);

    EXPECT_EQ(m_test.GetMessages(), L"\t\tERROR: a.expected: Byte 2 ist 0x63 statt 0x62\n"
                                    L"\t\tERROR: a.expected.received: 2 Bytes statt 4\n");
}

TEST_F(CompareWithReference, DistinguishesLineEndsWhenItComparesBytes)
{
    m_folder.WriteFile(L"a.expected", "a\r\n");
    const std::string received = "a\n";

    EXPECT_EQ(
        m_test.Run([&] { return m_test.CompareWithReference(std::as_bytes(std::span(received)), L"a.expected"); }),
        LuUnitTest::eR_Different);
}

TEST_F(CompareWithReference, WritesTheReceivedTextIfTheReferenceIsMissing)
{
    EXPECT_EQ(m_test.Compare("eins"), LuUnitTest::eR_Different);

    EXPECT_EQ(m_test.GetMessages(), L"\t\tERROR: Die Referenz " + m_folder.GetPathOf(L"a.expected") + L" fehlt\n");
    EXPECT_EQ(Read(L"a.expected.received"), "eins");
}

TEST_F(CompareWithReference, RemovesTheReceivedFileOnceTheTextsAreEqual)
{
    m_folder.WriteFile(L"a.expected", "eins");
    m_test.Compare("zwei");

    EXPECT_EQ(m_test.Compare("eins"), LuUnitTest::eR_Passed);

    EXPECT_FALSE(Holds(L"a.expected.received"));
    EXPECT_FALSE(Holds(L"a.expected.received.runs"));
}

TEST_F(CompareWithReference, DecidesTheResultOfASubtestWithoutAReturnValue)
{
    m_folder.WriteFile(L"a.expected", "eins");

    EXPECT_EQ(m_test.Run([&] { m_test.CompareWithReference("zwei", L"a.expected"); }), LuUnitTest::eR_Different);
    EXPECT_EQ(m_test.Run([&] {
        m_test.CompareWithReference("zwei", L"a.expected");
        m_test.Error(L"kaputt");
    }),
              LuUnitTest::eR_Failed);
    EXPECT_EQ(m_test.Run([&] { m_test.CompareWithReference("eins", L"a.expected"); }), LuUnitTest::eR_Passed);
}

TEST_F(CompareWithReference, ThrowsForAReferenceThatCannotBeRead)
{
    m_folder.MakeFolder(L"a.expected");

    EXPECT_EQ(m_test.Compare("eins"), LuUnitTest::eR_Exception);
}

TEST_F(CompareWithReference, DoesNotAddItsFilesToTheDataSets)
{
    m_folder.WriteFile(L"a", "eins");
    m_test.Run([&] { return m_test.CompareWithReference("zwei", L"a"); });
    CComparing other(m_folder.GetPath());

    other.AddFileSubtests(L"*", [](const std::wstring& /*path*/) {});

    ASSERT_EQ(other.GetSubtestCount(), 1U);
    EXPECT_EQ(other.GetSubtestName(0), L"a");
}

TEST_F(CompareWithReference, DoesNotAddLeftoversOfAKilledProcessToTheDataSets)
{
    m_folder.WriteFile(L"a", "eins");
    m_folder.WriteFile(LbTemporaryName::Make(), "zw");
    m_folder.WriteFile(L"lutestsuite-review.pending", "{");
    CComparing other(m_folder.GetPath());

    other.AddFileSubtests(L"*", [](const std::wstring& /*path*/) {});

    ASSERT_EQ(other.GetSubtestCount(), 1U);
    EXPECT_EQ(other.GetSubtestName(0), L"a");
}

class CountRuns : public CompareWithReference
{
protected:
    /// Compares as part of a new run, so that CountRuns counts this comparison separately.
    void CompareInNewRun(const char* received)
    {
        const ScopedEnvironmentVariable run(LbReceivedFile::c_RunVariable, LbUniqueId::Generate());
        m_test.Compare(received);
    }

    std::uint32_t Count(std::string_view received) const
    {
        return LbReceivedFile::CountRuns(received, m_folder.GetPathOf(L"a.expected"));
    }
};

TEST_F(CountRuns, CountsConsecutiveRunsWithTheSameBytes)
{
    m_folder.WriteFile(L"a.expected", "eins");

    CompareInNewRun("zwei");
    EXPECT_EQ(Count("zwei"), 1U);
    CompareInNewRun("zwei");
    EXPECT_EQ(Count("zwei"), 2U);
    CompareInNewRun("drei");
    EXPECT_EQ(Count("drei"), 1U);
    CompareInNewRun("zwei");
    EXPECT_EQ(Count("zwei"), 1U);
    CompareInNewRun("zwei");
    CompareInNewRun("zwei");
    CompareInNewRun("zwei");
    EXPECT_EQ(Count("zwei"), LbReceivedFile::c_EnoughRuns);
}

TEST_F(CountRuns, CountsComparisonsOfOneRunOnce)
{
    const ScopedEnvironmentVariable run(LbReceivedFile::c_RunVariable, L"eins");

    m_test.Compare("zwei");
    m_test.Compare("zwei");
    m_test.Compare("zwei");

    EXPECT_EQ(Count("zwei"), 1U);
}

TEST_F(CountRuns, CountsComparisonsOutsideARunOncePerProcess)
{
    const ScopedEnvironmentVariable run(LbReceivedFile::c_RunVariable, L"");

    m_test.Compare("zwei");
    m_test.Compare("zwei");

    EXPECT_EQ(Count("zwei"), 1U);
}

TEST_F(CountRuns, RestartsIfARunProducesOtherBytesInBetween)
{
    CompareInNewRun("zwei");
    const ScopedEnvironmentVariable run(LbReceivedFile::c_RunVariable, L"eins");

    m_test.Compare("drei");
    m_test.Compare("zwei");

    EXPECT_EQ(Count("zwei"), 1U);
}

TEST(NameRun, KeepsAnExistingName)
{
    const ScopedEnvironmentVariable run(LbReceivedFile::c_RunVariable, L"eins");

    LbReceivedFile::NameRun();

    EXPECT_EQ(LbOs::GetEnvironmentText(LbReceivedFile::c_RunVariable), L"eins");
}

TEST(NameRun, NamesTheRunIfItHasNoName)
{
    const ScopedEnvironmentVariable run(LbReceivedFile::c_RunVariable, L"");

    LbReceivedFile::NameRun();

    EXPECT_NE(LbOs::GetEnvironmentText(LbReceivedFile::c_RunVariable), L"");
}

TEST_F(CountRuns, ReturnsZeroForBytesThatNoRunHasProduced)
{
    m_folder.WriteFile(L"a.expected", "eins");
    m_test.Compare("zwei");

    EXPECT_EQ(Count("drei"), 0U);
}

TEST_F(CountRuns, ReturnsZeroForADamagedFile)
{
    m_test.Compare("zwei");
    const std::string runs = Read(L"a.expected.received.runs");
    m_folder.WriteFile(L"a.expected.received.runs", runs.substr(0, runs.size() - 2));

    EXPECT_EQ(Count("zwei"), 0U);
}

} // namespace
