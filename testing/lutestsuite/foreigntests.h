/// Common code of googletest.h and catch2.h, which turn tests of another framework into unit tests. Do not include it
/// elsewhere.
#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "base/lbencoding.h"
#include "base/lbpath.h"
#include "base/lbrtti.h"
#include "base/luunittest.h"

#ifndef LUTESTSUITE_SUITE_PREFIX
/// A literal in front of the name of each class, such as "Parser/". If another module has suites of the same names,
/// define the macro before including the adapter.
#define LUTESTSUITE_SUITE_PREFIX ""
#endif

/// Adapters for tests of other frameworks.
namespace LuForeignTests
{

/// Held while a test runs, because the frameworks run one test at a time. On Linux, modules with default visibility
/// share this lock and the inline variables of the framework. On Windows, and with hidden visibility, each module has
/// its own lock and its own variables. Recursive, because a unit test may run a sub-test through a second object.
inline std::recursive_mutex& GetLock()
{
    static std::recursive_mutex s_lock;
    return s_lock;
}

// Each module has classes and objects of its own.
namespace
{

class CUnitTest;

struct STest
{
    std::wstring name;
    bool isDisabled;
    std::function<LuUnitTest::EResult(CUnitTest&)> run;
};

/// A unit test before it is registered.
struct SSuite
{
    std::wstring name;
    std::vector<STest> tests;
};

/// The unit test of a suite.
class CUnitTest : public LuUnitTest
{
public:
    using LuUnitTest::Error;
    using LuUnitTest::GetResultByErrors;
    using LuUnitTest::HasErrors;
    using LuUnitTest::Info;

    CUnitTest(const SSuite& suite, const LbRTTI& record) : m_suite(suite), m_record(record) {}

    const LbRTTI& GetRTTI() const override { return m_record; }

    void InitSubtests() override
    {
        for (const STest& test : m_suite.tests)
        {
            AddSubtest(test.name, [this, &test] { return run(test); });
        }
    }

    bool IsSubtestDisabled(std::uint32_t subtest) const override { return m_suite.tests[subtest].isDisabled; }

    /// Waits for the lock here, because the time of the case is measured only after this call.
    void PrepareSubtest() override
    {
        if (!m_lock.owns_lock())
        {
            m_lock.lock();
        }
    }

    /// Reports a failure, or an information line, with its place; `line` is 0 or less if the place is unknown. IDEs and
    /// build servers turn a place of this form into a link.
    void Report(bool isError, const char* file, std::int64_t line, std::string_view message)
    {
        const std::wstring place = describePlace(file, line);
        const std::wstring text = (place.empty() ? L"" : place + L": ") + LbEncoding::FromUtf8(message);
        isError ? Error(L"%s", text) : Info(L"%s", text);
    }

    /// Reports that the test was skipped. LuTestSuiteRunner recognises a skipped test by the beginning of the first
    /// line, so a second line shows the place.
    void ReportSkip(const char* file, std::int64_t line, std::string_view reason)
    {
        Info(L"Übersprungen: %s", LbEncoding::FromUtf8(reason));
        if (const std::wstring place = describePlace(file, line); !place.empty())
        {
            Info(L"Stelle: %s", place);
        }
    }

private:
    static std::wstring describePlace(const char* file, std::int64_t line)
    {
        return file == nullptr || line <= 0 ? std::wstring() : LbFormat(L"%S:%d", file, line);
    }

    EResult run(const STest& test)
    {
        const std::lock_guard lock(GetLock());
        return test.run(*this);
    }

    const SSuite& m_suite;
    const LbRTTI& m_record;
    std::unique_lock<std::recursive_mutex> m_lock{GetLock(), std::defer_lock};
};

/// The base class of the classes of all suites. It tells LuTestSuiteRunner that a class needs a folder but no file in
/// that folder. The base class cannot be instantiated, and no folder can have its name.
const LbRTTI s_suiteRecord(L"LuForeignTests::CUnitTest", &LuUnitTest::RTTI, nullptr);

/// A suite with the record of its class.
class CRegisteredSuite : public INonCopyable
{
public:
    explicit CRegisteredSuite(SSuite suite)
        : m_suite(std::move(suite)),
          m_record(
              m_suite.name.c_str(), &s_suiteRecord,
              [this]() -> std::unique_ptr<IObject> { return std::make_unique<CUnitTest>(m_suite, m_record); },
              LbClassFacts::Of<CUnitTest>())
    {
    }

private:
    SSuite m_suite;
    LbRTTI m_record;
};

/// Gives names that are valid for folders and cases: "/" becomes ".", other reserved characters "_". Equal results are
/// numbered ("name~2").
class CNames
{
public:
    std::wstring Make(std::string_view utf8)
    {
        std::wstring name = LbEncoding::FromUtf8(utf8);
        std::replace(name.begin(), name.end(), L'/', L'.');
        name = LbPath::ToSafeName(name);
        std::wstring unique = name;
        for (std::uint32_t number = 2; !m_taken.insert(unique).second; ++number)
        {
            unique = LbFormat(L"%s~%u", name, number);
        }
        return unique;
    }

private:
    std::unordered_set<std::wstring> m_taken;
};

inline std::string AddPrefix(const std::string& suite)
{
    return LUTESTSUITE_SUITE_PREFIX + suite;
}

/// Registers the class of a suite until the module is unloaded.
inline void Register(SSuite suite)
{
    static std::deque<CRegisteredSuite> s_suites;
    s_suites.emplace_back(std::move(suite));
}

} // namespace

} // namespace LuForeignTests
