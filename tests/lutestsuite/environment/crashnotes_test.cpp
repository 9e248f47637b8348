#include "testing/lutestsuite/environment/crashnotes.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/iunittestrecreate.h"
#include "base/lbevent.h"
#include "base/lbfilesystem.h"
#include "base/luunittest.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiterun.h"
#include "tests/support/os/testaids.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuite::CCrashNotes;
using LuTestSuite::CCrashThread;
using LuTestSuite::CNamedUnderWay;
using LuTestSuite::EActivity;

class CrashingRecreateModel : public LuUnitTest, public IUnitTestRecreate
{
    LB_RTTI(CrashingRecreateModel)

    void InitSubtests() override
    {
        AddSubtest(L"Fall", [] {});
    }
    bool IsRecreatable(std::uint32_t /*subtest*/) const override { return true; }
    void Recreate(std::uint32_t /*subtest*/) override { std::raise(SIGSEGV); }
};
LB_RTTI_CLASS(CrashingRecreateModel, LuUnitTest)

class CrashNotes : public testing::Test
{
protected:
    void SetUp() override
    {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
        GTEST_SKIP() << "sanitizers handle crashes themselves";
#endif
    }

    /// Returns what a fork writes to standard error while `crash` ends it; empty without forks.
    std::optional<std::string> ReadReport(const std::function<void()>& crash) const
    {
        const std::wstring path = m_folder.WriteFile(L"errors.txt", "");
        const std::string narrow(path.begin(), path.end());
        const std::optional<int> status = LbOs::RunInFork([&] {
            if (std::freopen(narrow.c_str(), "w", stderr) == nullptr)
            {
                return 1;
            }
            crash();
            return 0;
        });
        if (!status)
        {
            return std::nullopt;
        }
        constexpr int c_EndedBySignal = -1;
        EXPECT_EQ(*status, c_EndedBySignal);
        return LbFileSystem::ReadFile8Bit(path);
    }

    const ScopedFolder m_folder;
};

TEST_F(CrashNotes, NameACaseThatCrashesWhileItIsRecreated)
{
    const auto report = ReadReport([] {
        LuTestSuite::SUnitTest unitTest;
        unitTest.className = L"CrashingRecreateModel";
        unitTest.cases.emplace_back().name = L"Fall";
        LuTestSuiteEnvironment environment;
        LuTestSuiteRun::SCallbacks callbacks;
        callbacks.isCanceled = [] { return false; };
        callbacks.caseFinished = [](LuTestSuiteRun::ECaseRunResult) {};
        LuTestSuiteRun::Recreate(environment, {unitTest}, LuTestSuiteRun::ETargetSystem(), false, callbacks);
    });
    if (!report)
    {
        GTEST_SKIP() << "processes do not fork here";
    }

    EXPECT_TRUE(report->starts_with("Fehler: Absturz beim Neuerzeugen von 'CrashingRecreateModel:Fall': SIGSEGV"))
        << *report;
}

TEST_F(CrashNotes, NameTheOuterActivityOnceTheInnerOneHasEnded)
{
    const auto report = ReadReport([] {
        const CCrashNotes notes;
        const CNamedUnderWay outer(EActivity::RunCase, L"COuter", L"außen");
        {
            const CNamedUnderWay inner(EActivity::FindCases, L"CInner", L"innen");
        }
        std::raise(SIGSEGV);
    });
    if (!report)
    {
        GTEST_SKIP() << "processes do not fork here";
    }

    EXPECT_TRUE(report->starts_with("Fehler: Absturz in 'COuter:außen': SIGSEGV")) << *report;
    EXPECT_EQ(report->find("CInner"), std::string::npos) << *report;
}

/// Occupies `count` places in the table of threads: starts threads that run until the process ends.
void occupyPlaces(std::size_t count)
{
    for (std::size_t index = 0; index < count; ++index)
    {
        LbEvent isThere;
        std::thread([&isThere] {
            const CNamedUnderWay underWay(EActivity::RunCase, L"COther", L"anderer");
            isThere.Set();
            LbEvent never;
            never.Wait();
        }).detach();
        isThere.Wait();
    }
}

TEST_F(CrashNotes, OmitTheCaseOfACrashIfTooManyThreadsRunCases)
{
    constexpr std::size_t c_Places = 512;
    const auto report = ReadReport([] {
        const CCrashNotes notes;
        occupyPlaces(c_Places);
        const CNamedUnderWay underWay(EActivity::RunCase, L"CLate", L"zu spät");
        std::raise(SIGSEGV);
    });
    if (!report)
    {
        GTEST_SKIP() << "processes do not fork here";
    }

    EXPECT_TRUE(report->starts_with("Fehler: Absturz: SIGSEGV")) << *report;
    EXPECT_EQ(report->find("CLate"), std::string::npos) << *report;
    const std::size_t others = report->find("In Arbeit: ");
    ASSERT_NE(others, std::string::npos) << *report;
    EXPECT_EQ(std::count(report->begin() + static_cast<std::ptrdiff_t>(others), report->end(), ':'), 1 + c_Places);
}

TEST_F(CrashNotes, NameTheCaseOfAThreadThatReusesThePlaceOfAnEndedThread)
{
    constexpr std::size_t c_Threads = 600;
    const auto report = ReadReport([] {
        const CCrashNotes notes;
        for (std::size_t index = 0; index < c_Threads; ++index)
        {
            std::thread([] { const CNamedUnderWay underWay(EActivity::RunCase, L"COther", L"anderer"); }).join();
        }
        const CNamedUnderWay underWay(EActivity::RunCase, L"CLate", L"rechtzeitig");
        std::raise(SIGSEGV);
    });
    if (!report)
    {
        GTEST_SKIP() << "processes do not fork here";
    }

    EXPECT_TRUE(report->starts_with("Fehler: Absturz in 'CLate:rechtzeitig': SIGSEGV")) << *report;
}

} // namespace
