/// Objects that are created for one sub-test.

#include "base/luunittest.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "tests/support/givenmessages.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// The calls made on the objects of a test.
struct SRecord
{
    std::vector<std::wstring> calls;
    std::function<void()> beforeFiles = [] {};
};

SRecord* s_record = nullptr;

void Record(const std::wstring& call)
{
    s_record->calls.push_back(call);
}

/// Named sub-tests before and after files; one name occurs twice, and one is also the name of a file.
class CSelectable : public LuUnitTest
{
    LB_RTTI(CSelectable)

public:
    using LuUnitTest::HasErrors;

    void InitSubtests() override
    {
        Record(L"InitSubtests");
        AddSubtest(L"first", [] { Record(L"first"); });
        AddSubtest(L"twice", [] { Record(L"twice, first"); });
        s_record->beforeFiles();
        AddFileSubtests({L"*.txt", L"*.bin"}, {L"not*"}, [](const std::wstring& path) { Record(L"file " + path); });
        AddFileSubtests(L"*.txt", [](const std::wstring&) { Record(L"another file"); });
        AddSubtest(L"twice", [] { Record(L"twice, second"); });
        AddSubtest(L"a.txt", [] { Record(L"named like a file"); });
        AddSubtest(L"last", [this] {
            Record(L"last of " + std::to_wstring(GetSubtestCount()) + L", before it " +
                   GetSubtestName(GetSubtestCount() - 2));
        });
        AddSubtest(L"runs another", [this] { RunUnitTest(0); });
        AddSubtest(L"fails with another", [this] {
            RunUnitTest(GetSubtestCount() - 1);
            return GetResultByErrors();
        });
        AddSubtest(L"fails", [this] { Error(L"wrong"); });
    }
};

/// Overrides GetSubtestName, but only calls the base class.
class CForwardsName : public CSelectable
{
    LB_RTTI(CForwardsName)
    std::wstring GetSubtestName(std::uint32_t subtest) const override { return CSelectable::GetSubtestName(subtest); }
};

class CForwardsCount : public CSelectable
{
    LB_RTTI(CForwardsCount)
    std::uint32_t GetSubtestCount() const override { return CSelectable::GetSubtestCount(); }
};

class CForwardsRun : public CSelectable
{
    LB_RTTI(CForwardsRun)
    EResult RunUnitTest(std::uint32_t subtest) override
    {
        Record(L"runs " + std::to_wstring(subtest) + L" " + GetSubtestName(subtest));
        return CSelectable::RunUnitTest(subtest);
    }
};

/// Inherits the override of RunUnitTest and overrides nothing itself.
class CBelowForwardsRun : public CForwardsRun
{
    LB_RTTI(CBelowForwardsRun)
};

/// Overrides GetSubtestName, but has no class record of its own.
class CUnrecorded : public CSelectable
{
    std::wstring GetSubtestName(std::uint32_t subtest) const override
    {
        return L"my " + CSelectable::GetSubtestName(subtest);
    }
};

/// Names its sub-tests by their index, and reports more of them than it has added.
class CRenames : public LuUnitTest
{
    LB_RTTI(CRenames)
    void InitSubtests() override
    {
        AddSubtest(L"", [] { Record(L"zero"); });
        AddSubtest(L"", [] { Record(L"one"); });
    }
    std::uint32_t GetSubtestCount() const override { return 4; }
    std::wstring GetSubtestName(std::uint32_t subtest) const override { return std::to_wstring(subtest % 2); }
};

/// Has a sub-test for each of `s_names`; counts the requests for names.
class CAsked : public LuUnitTest
{
    LB_RTTI(CAsked)

public:
    static std::vector<std::wstring> s_names;
    static std::uint32_t s_questions;

    void InitSubtests() override {}
    std::uint32_t GetSubtestCount() const override { return static_cast<std::uint32_t>(s_names.size()); }
    std::wstring GetSubtestName(std::uint32_t subtest) const override
    {
        ++s_questions;
        return s_names.at(subtest);
    }
};

std::vector<std::wstring> CAsked::s_names;
std::uint32_t CAsked::s_questions = 0;

/// Adds a prefix to the names of its files.
class CNamesFiles : public LuUnitTest
{
    LB_RTTI(CNamesFiles)
    void InitSubtests() override
    {
        AddFileSubtests(L"*.txt", [](const std::wstring& path) { Record(path); });
    }
    std::wstring GetSubtestName(std::uint32_t subtest) const override
    {
        return L"file " + LuUnitTest::GetSubtestName(subtest);
    }
};

/// Forms the names of its sub-tests from the current number of sub-tests.
class CNumbers : public LuUnitTest
{
    LB_RTTI(CNumbers)
    void InitSubtests() override
    {
        addNumber();
        AddFileSubtests(L"*", [](const std::wstring&) {});
        addNumber();
        AddFileSubtests(L"*", [](const std::wstring&) {});
        addNumber();
    }

    void addNumber()
    {
        const std::wstring number = std::to_wstring(GetSubtestCount());
        AddSubtest(L"number " + number, [number] { Record(number); });
    }
};

} // namespace

LB_RTTI_CLASS(CSelectable, LuUnitTest)
LB_RTTI_CLASS(CForwardsName, CSelectable)
LB_RTTI_CLASS(CForwardsCount, CSelectable)
LB_RTTI_CLASS(CForwardsRun, CSelectable)
LB_RTTI_CLASS(CBelowForwardsRun, CForwardsRun)
LB_RTTI_CLASS(CRenames, LuUnitTest)
LB_RTTI_CLASS(CAsked, LuUnitTest)
LB_RTTI_CLASS(CNamesFiles, LuUnitTest)
LB_RTTI_CLASS(CNumbers, LuUnitTest)

namespace
{

using Calls = std::vector<std::wstring>;

class SelectedSubtest : public testing::Test
{
protected:
    SelectedSubtest()
    {
        s_record = &m_record;
        for (const wchar_t* const name : {L"a.txt", L"b.bin", L"c.txt", L"not.txt", L"other.dat", L"#ExtraInfo.xml"})
        {
            m_folder.WriteFile(name, "");
        }
    }
    ~SelectedSubtest() override { s_record = nullptr; }

    /// Calls an object as a runner does; false if the class lacks the sub-test.
    template<typename UnitTest>
    bool Run(const std::wstring& name)
    {
        m_record.calls.clear();
        UnitTest object;
        LuUnitTest& unitTest = object;
        GivenMessages messages(m_folder.GetPath());
        unitTest.SetMessageStream(&messages);
        unitTest.SetDataDirectory(messages.GetDataDirectory());
        unitTest.SelectSubtest(name);
        unitTest.InitSubtests();
        if (!unitTest.HasSelectedSubtest())
        {
            return false;
        }
        m_result = unitTest.RunSelectedSubtest();
        return true;
    }

    /// Runs the sub-test and returns the last recorded call, that of the sub-test itself; "not found" if the class
    /// lacks it.
    template<typename UnitTest>
    std::wstring GetCall(const std::wstring& name)
    {
        return Run<UnitTest>(name) ? m_record.calls.back() : L"not found";
    }

    std::wstring GetPathOf(const std::wstring& name) const { return m_folder.GetPath() + name; }

    ScopedFolder m_folder;
    SRecord m_record;
    LuUnitTest::EResult m_result = LuUnitTest::eR_NoInput;
};

template<typename UnitTest>
class SelectedSubtestOfEachClass : public SelectedSubtest
{
};

using AllClasses = testing::Types<CSelectable, CForwardsName, CForwardsCount, CForwardsRun, CBelowForwardsRun>;
TYPED_TEST_SUITE(SelectedSubtestOfEachClass, AllClasses);

TYPED_TEST(SelectedSubtestOfEachClass, IsTheFirstSubtestWithItsName)
{
    EXPECT_EQ(this->template GetCall<TypeParam>(L"first"), L"first");
    EXPECT_EQ(this->template GetCall<TypeParam>(L"twice"), L"twice, first");
    EXPECT_EQ(this->template GetCall<TypeParam>(L"a.txt"), L"file " + this->GetPathOf(L"a.txt"));
    EXPECT_EQ(this->template GetCall<TypeParam>(L"b.bin"), L"file " + this->GetPathOf(L"b.bin"));
    EXPECT_EQ(this->template GetCall<TypeParam>(L"not.txt"), L"another file");
    EXPECT_EQ(this->template GetCall<TypeParam>(L"last"), L"last of 14, before it fails with another");
}

TYPED_TEST(SelectedSubtestOfEachClass, IsNotFoundIfNoSubtestHasTheName)
{
    for (const wchar_t* const name : {L"", L"First", L"other.dat", L"d.txt", L"A.txt", L"#ExtraInfo.xml", L"*.txt"})
    {
        EXPECT_EQ(this->template GetCall<TypeParam>(name), L"not found") << name;
    }
}

TYPED_TEST(SelectedSubtestOfEachClass, IsFoundOnlyWhileItsFileExists)
{
    for (int count = 0; count < 20; ++count)
    {
        const std::wstring path = this->m_folder.WriteFile(L"new.txt", "");
        ASSERT_EQ(this->template GetCall<TypeParam>(L"new.txt"), L"file " + path);
        ASSERT_TRUE(LbOs::RemoveFile(path));
        ASSERT_EQ(this->template GetCall<TypeParam>(L"new.txt"), L"not found");
    }
}

TYPED_TEST(SelectedSubtestOfEachClass, IsFoundForAFileThatInitSubtestsWrites)
{
    this->m_record.beforeFiles = [this] { this->m_folder.WriteFile(L"written.txt", ""); };

    EXPECT_EQ(this->template GetCall<TypeParam>(L"written.txt"), L"file " + this->GetPathOf(L"written.txt"));
}

TYPED_TEST(SelectedSubtestOfEachClass, CanRunAnotherSubtest)
{
    EXPECT_EQ(this->template GetCall<TypeParam>(L"runs another"), L"first");
}

TYPED_TEST(SelectedSubtestOfEachClass, FailsWithTheErrorsOfASubtestThatItRuns)
{
    EXPECT_TRUE(this->template Run<TypeParam>(L"fails with another"));
    EXPECT_EQ(this->m_result, LuUnitTest::eR_Failed);
}

TEST_F(SelectedSubtest, RunsAfterOneCallOfInitSubtests)
{
    EXPECT_TRUE(Run<CSelectable>(L"c.txt"));
    EXPECT_EQ(m_record.calls, (Calls{L"InitSubtests", L"file " + GetPathOf(L"c.txt")}));
    EXPECT_TRUE(Run<CForwardsName>(L"first"));
    EXPECT_EQ(m_record.calls, (Calls{L"InitSubtests", L"first"}));
}

TEST_F(SelectedSubtest, PassesItsIndexToAnOverrideOfRunUnitTest)
{
    EXPECT_TRUE(Run<CForwardsRun>(L"c.txt"));
    EXPECT_EQ(m_record.calls, (Calls{L"InitSubtests", L"runs 4 c.txt", L"file " + GetPathOf(L"c.txt")}));
    EXPECT_TRUE(Run<CBelowForwardsRun>(L"not.txt"));
    EXPECT_EQ(m_record.calls, (Calls{L"InitSubtests", L"runs 7 not.txt", L"another file"}));
}

TEST_F(SelectedSubtest, IsFoundByTheNameThatAnOverrideReturns)
{
    EXPECT_EQ(GetCall<CRenames>(L"0"), L"zero");
    EXPECT_EQ(GetCall<CRenames>(L"1"), L"one");
    EXPECT_EQ(GetCall<CRenames>(L"2"), L"not found");
    EXPECT_EQ(GetCall<CRenames>(L""), L"not found");
}

TEST_F(SelectedSubtest, IsFoundByTheOverriddenNameOfAClassWithoutARecord)
{
    EXPECT_EQ(GetCall<CUnrecorded>(L"my first"), L"first");
    EXPECT_EQ(GetCall<CUnrecorded>(L"first"), L"not found");
}

TEST_F(SelectedSubtest, IsFoundByANameThatContainsTheSubtestCount)
{
    EXPECT_EQ(GetCall<CNumbers>(L"number 0"), L"0");
    EXPECT_EQ(GetCall<CNumbers>(L"number 6"), L"6");
    EXPECT_EQ(GetCall<CNumbers>(L"number 12"), L"12");
    EXPECT_EQ(GetCall<CNumbers>(L"number 2"), L"not found");
}

TEST_F(SelectedSubtest, IsNoFileSubtestWithoutADataDirectory)
{
    GivenMessages messages(L"");
    CSelectable unitTest;
    unitTest.SetMessageStream(&messages);
    unitTest.SetDataDirectory(L"");
    unitTest.SelectSubtest(L"a.txt");
    unitTest.InitSubtests();

    ASSERT_TRUE(unitTest.HasSelectedSubtest());
    unitTest.RunSelectedSubtest();
    EXPECT_EQ(m_record.calls.back(), L"named like a file");
}

/// Searches for names in a class that overrides GetSubtestName. Each search uses a new object.
class SubtestNamedByItsClass : public SelectedSubtest
{
protected:
    static std::optional<std::uint32_t> Find(const std::wstring& name, const std::wstring& directory = L"")
    {
        CAsked::s_questions = 0;
        CAsked unitTest;
        unitTest.SetDataDirectory(directory.empty() ? GetUniqueDirectory() : directory);
        return unitTest.FindSubtest(name);
    }

    /// Each test has its own directory, so that it does not use results that the searches of other tests have stored.
    static std::wstring GetUniqueDirectory()
    {
        return LbEncoding::FromUtf8(testing::UnitTest::GetInstance()->current_test_info()->name());
    }
};

TEST_F(SubtestNamedByItsClass, IsFoundByOneQueryAtItsFormerIndex)
{
    CAsked::s_names = std::vector<std::wstring>(200, L"x");
    CAsked::s_names[150] = L"wanted";

    EXPECT_EQ(Find(L"wanted"), 150U);
    EXPECT_EQ(CAsked::s_questions, 151U);
    EXPECT_EQ(Find(L"wanted"), 150U);
    EXPECT_EQ(CAsked::s_questions, 1U);
}

TEST_F(SubtestNamedByItsClass, IsFoundByOneQueryAfterASearchForItsPredecessor)
{
    CAsked::s_names.clear();
    for (int number = 0; number < 200; ++number)
    {
        CAsked::s_names.push_back(std::to_wstring(number));
    }

    for (std::uint32_t subtest = 0; subtest < 200; ++subtest)
    {
        EXPECT_EQ(Find(std::to_wstring(subtest)), subtest);
        EXPECT_EQ(CAsked::s_questions, 1U);
    }
}

TEST_F(SubtestNamedByItsClass, IsTheFirstSubtestOfSeveralWithItsName)
{
    CAsked::s_names = {L"a", L"twice", L"b", L"twice"};

    EXPECT_EQ(Find(L"b"), 2U);
    EXPECT_EQ(Find(L"twice"), 1U);
    EXPECT_EQ(Find(L"not there"), std::nullopt);
    EXPECT_EQ(Find(L"twice"), 1U);
}

TEST_F(SubtestNamedByItsClass, IsFoundAfterItsIndexHasChanged)
{
    CAsked::s_names = {L"a", L"b", L"c"};
    EXPECT_EQ(Find(L"c"), 2U);
    CAsked::s_names = {L"new", L"a", L"b", L"c"};
    EXPECT_EQ(Find(L"a"), 1U);
    EXPECT_EQ(Find(L"c"), 3U);
    CAsked::s_names = {L"c"};
    EXPECT_EQ(Find(L"c"), 0U);
    EXPECT_EQ(Find(L"a"), std::nullopt);
}

TEST_F(SubtestNamedByItsClass, IsSearchedForSeparatelyInEachDirectory)
{
    CAsked::s_names = {L"a", L"b"};
    EXPECT_EQ(Find(L"b", L"one/"), 1U);
    EXPECT_EQ(Find(L"b", L"two/"), 1U);
    EXPECT_EQ(CAsked::s_questions, 2U);
}

TEST(ClassFacts, ShowWhichFunctionsAreOverridden)
{
    EXPECT_TRUE(CSelectable::RTTI.GetFacts().hasPlainList);
    EXPECT_TRUE(CSelectable::RTTI.GetFacts().hasPlainRun);
    EXPECT_FALSE(CForwardsName::RTTI.GetFacts().hasPlainList);
    EXPECT_TRUE(CForwardsName::RTTI.GetFacts().hasPlainRun);
    EXPECT_FALSE(CForwardsCount::RTTI.GetFacts().hasPlainList);
    EXPECT_TRUE(CForwardsRun::RTTI.GetFacts().hasPlainList);
    EXPECT_FALSE(CForwardsRun::RTTI.GetFacts().hasPlainRun);
    EXPECT_FALSE(CBelowForwardsRun::RTTI.GetFacts().hasPlainRun);
    EXPECT_TRUE(CNumbers::RTTI.GetFacts().hasPlainList);
}

} // namespace
