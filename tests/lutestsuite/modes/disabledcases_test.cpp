#include <memory>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lbrtti.h"
#include "base/luunittest.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/runtest.h"
#include "tests/support/scopedfolder.h"

/// Registered by a test under other names.
class CHomelessModel : public LuUnitTest
{
    LB_RTTI(CHomelessModel)
    void InitSubtests() override
    {
        AddSubtest(L"eins", [] {});
    }
};
LB_RTTI_CLASS(CHomelessModel, LuUnitTest)

namespace
{

class DisabledCases : public RunTest
{
protected:
    std::wstring List(const LuTestSuiteSetup& setup)
    {
        LuTestSuiteUtils::ListDisabledTestCases(setup, m_environment);
        return m_output.GetText();
    }

    std::wstring List() { return List(MakeSetup(m_folder.GetPath())); }

    std::wstring GetSummary(const wchar_t* classes, const wchar_t* cases) const
    {
        return LbFormat(L"Durchsuchtes Datenverzeichnis: %s\n"
                        L"Klassen mit deaktivierten Fällen: %s\n"
                        L"Deaktivierte Fälle: %s\n",
                        m_folder.GetPath(), classes, cases);
    }

    /// Writes a description file with these elements for the passing model; returns the folder of the model, with
    /// trailing separator.
    std::wstring Describe(const std::string& testCases) const
    {
        m_folder.WriteFile(L"CPassedModel/#ExtraInfo.xml", "<ExtraInfo>" + testCases + "</ExtraInfo>");
        return m_folder.GetPathOf(L"CPassedModel") + LbPath::c_Separator;
    }

    ScopedFolder m_folder;
};

TEST_F(DisabledCases, AreListedWithTheModuleOfTheirClass)
{
    const std::wstring directory = Describe("<TestCase name=\"zwei*\"><Enable>false</Enable></TestCase>");

    EXPECT_EQ(List(), LbFormat(L"%s (resultmodels%s):\n    (1/1) zwei mit Lücke\n\n", directory, LbOs::c_ModuleSuffix) +
                          GetSummary(L"1 von 1", L"1 von 2"));
}

TEST_F(DisabledCases, AreListedWithAnUnknownModuleIfTheClassHasNone)
{
    const auto record =
        std::make_unique<LbRTTI>(L"CModelOnTheHeap", &LuUnitTest::RTTI, LbRTTI::getCreate(L"CHomelessModel"));
    m_folder.WriteFile(L"CModelOnTheHeap/#ExtraInfo.xml",
                       "<ExtraInfo><TestCase name=\"*\"><Enable>false</Enable></TestCase></ExtraInfo>");
    const std::wstring directory = m_folder.GetPathOf(L"CModelOnTheHeap") + LbPath::c_Separator;

    EXPECT_EQ(List(), directory + L" (Unbekannt):\n    (1/1) eins\n\n" + GetSummary(L"1 von 1", L"1 von 1"));
}

TEST_F(DisabledCases, AreNumberedInTheList)
{
    const std::wstring text = (Describe("<TestCase name=\"*\"><Enable>false</Enable></TestCase>"), List());

    EXPECT_NE(text.find(L"    (1/2) eins\n    (2/2) zwei mit Lücke\n\n"), std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_TRUE(text.ends_with(GetSummary(L"1 von 1", L"2 von 2")));
}

TEST_F(DisabledCases, AreCountedAsZeroIfNoneExist)
{
    m_folder.MakeFolder(L"CPassedModel");

    EXPECT_EQ(List(), GetSummary(L"0 von 1", L"0 von 2"));
}

TEST_F(DisabledCases, CountClassesWithoutDisabledCasesButDoNotListThem)
{
    Describe("<TestCase name=\"eins\"><Enable>false</Enable></TestCase>");
    m_folder.WriteFile(L"CDataSetModel/a.txt", "gut");

    const std::wstring text = List();

    EXPECT_EQ(text.find(L"CDataSetModel"), std::wstring::npos);
    EXPECT_TRUE(text.ends_with(GetSummary(L"1 von 2", L"1 von 3")));
}

TEST_F(DisabledCases, ExcludeCasesThatTheirDescriptionEnables)
{
    Describe("<TestCase name=\"*\"><Enable>true</Enable></TestCase>");

    EXPECT_EQ(List(), GetSummary(L"0 von 1", L"0 von 2"));
}

TEST_F(DisabledCases, ExcludeCasesWithAnUnreadableDescription)
{
    Describe("<TestCase name=\"*\"><Enable>vielleicht</Enable></TestCase>");

    EXPECT_TRUE(List().ends_with(GetSummary(L"0 von 1", L"0 von 2")));
}

TEST_F(DisabledCases, AreLimitedToTheSelection)
{
    Describe("<TestCase name=\"*\"><Enable>false</Enable></TestCase>");
    LuTestSuiteSetup setup = MakeSetup(m_folder.GetPath());
    setup.includes = {L"eins$"};

    EXPECT_TRUE(List(setup).ends_with(GetSummary(L"1 von 1", L"1 von 1")));
}

} // namespace
