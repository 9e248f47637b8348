/// Turns the tests of a GoogleTest program into cases of a test module. For GoogleTest 1.12 and later.
///
/// The module consists of the program's sources without its `main`, linked with gtest (not gtest_main), and of one
/// source that includes this header:
///
///     #include "testing/lutestsuite/googletest.h"
///
/// Each suite becomes a class, each test a case. "/" in names (TEST_P, TYPED_TEST) becomes ".": the case "Reads.0" of
/// the class "Files.Parser" is the test "Files/Parser.Reads/0". Tests and suites whose names begin with "DISABLED_" are
/// disabled cases. A failure becomes an error line with file and line; an exception makes the result eR_Exception. A
/// skipped test passes, with the information line "Übersprungen: " and the reason; LuTestSuiteRunner recognises skipped
/// tests by this line. If several loaded modules have a suite of the same name, only the suite of the first module
/// runs. To avoid that, define the macro LUTESTSUITE_SUITE_PREFIX before this header: a literal that is put in front of
/// all class names of the module.
///
/// Each case sets up and tears down the global environments and its suite (SetUpTestSuite). Tests of one process run
/// one after another, also on worker threads (-p); in child processes (-x -w 4) they run side by side. Options of
/// GoogleTest in environment variables (GTEST_FILTER, GTEST_BREAK_ON_FAILURE, ...) have no effect on selection, results
/// and outputs. GTEST_TOTAL_SHARDS is an error, because GoogleTest would leave out tests that the host runs. Death
/// tests work on Linux in the style "fast", and fail in the style "threadsafe" and on Windows.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

// GoogleTest has no macro for its version.
#ifndef GTEST_FLAG_SET
#error "testing/lutestsuite/googletest.h needs GoogleTest 1.12 or later"
#endif

#include "testing/lutestsuite/foreigntests.h"

/// Adapter for tests of GoogleTest.
namespace LuGoogleTest
{

// Each module has its own classes and objects, because it has its own copy of GoogleTest.
namespace
{

using Tests = std::vector<testing::TestInfo*>;

/// Gives access to the list of tests of a suite. In each run, GoogleTest visits all listed tests of the program, so
/// running each test by itself would take quadratic time. Therefore the lists of all suites are kept empty, except for
/// the test that is about to run. The list is private, but an explicit instantiation may name it.
Tests testing::TestSuite::*GetTestList();

template<Tests testing::TestSuite::*List>
struct STestList
{
    friend Tests testing::TestSuite::*GetTestList() { return List; }
};

template struct STestList<&testing::TestSuite::test_info_list_>;

#ifdef GTEST_OS_WINDOWS

/// For a death test, GoogleTest would start the host instead of the test, and interpret any end of the host as the
/// test's death. The name of an unknown style makes GoogleTest fail each death test.
constexpr const char* c_DeathTestStyle = "Todestests gibt es nur unter Linux";

/// Resets the message of the last death test. If a test selects another style, only a changed message shows that it has
/// run a death test.
inline void forgetDeathTests()
{
    testing::internal::DeathTest* test = nullptr;
    testing::internal::DeathTest::Create("", testing::internal::MakeDeathTestMatcher(""), "", 0, &test);
}

inline bool hasStartedDeathTest()
{
    return std::string_view(testing::internal::DeathTest::LastMessage()).find("death test style") ==
           std::string_view::npos;
}

#else

constexpr const char* c_DeathTestStyle = "fast";

inline void forgetDeathTests() {}

/// Always false, because getDeathTestCommand already makes death tests of another style fail.
inline bool hasStartedDeathTest()
{
    return false;
}

#endif

/// Moves each value to the line of its expression, because reports keep only the first three lines of a case:
/// "size\n    Which is: 2" becomes "size (Which is: 2)".
inline std::string joinValues(std::string_view message)
{
    constexpr std::string_view c_Value = "\n    Which is: ";
    std::string text;
    for (std::size_t value = message.find(c_Value); value != message.npos; value = message.find(c_Value))
    {
        text.append(message.substr(0, value)).append(" (Which is: ");
        message.remove_prefix(value + c_Value.size());
        const std::size_t size = std::min(message.find('\n'), message.size());
        text.append(message.substr(0, size)).append(")");
        message.remove_prefix(size);
    }
    return text.append(message);
}

/// Passes the results of the running test on to the unit test.
class CListener : public testing::EmptyTestEventListener
{
public:
    explicit CListener(LuForeignTests::CUnitTest& unitTest) : m_unitTest(unitTest) {}

    void OnTestStart(const testing::TestInfo& /*test*/) override
    {
        m_hasStarted = true;
        // Sets the style again, because a global environment may have changed it.
        GTEST_FLAG_SET(death_test_style, std::string(c_DeathTestStyle));
        forgetDeathTests();
    }

    void OnTestEnd(const testing::TestInfo& test) override
    {
        m_isSkipped = test.result()->Skipped();
        if (hasStartedDeathTest())
        {
            m_unitTest.Error(L"%S", c_DeathTestStyle);
        }
    }

    /// GoogleTest calls this operation for one result at a time, including results of other threads.
    void OnTestPartResult(const testing::TestPartResult& part) override
    {
        const std::string_view message = part.message();
        if (part.failed())
        {
            m_unitTest.Report(true, part.file_name(), part.line_number(), joinValues(message));
            const bool isException = part.file_name() == nullptr && message.find("exception") != message.npos;
            m_hasException = m_hasException || isException;
        }
        else if (part.skipped())
        {
            // Ignores the second result of a test of a skipped suite: it has no message and follows the suite's result.
            if (!message.empty() || m_skips.empty())
            {
                m_skips.push_back(part);
            }
        }
    }

    LuUnitTest::EResult GetResult(bool hasPassed) const
    {
        reportSkips();
        const bool isExplained = m_unitTest.HasErrors() || !m_skips.empty();
        if (!isExplained && !(hasPassed && m_hasStarted))
        {
            m_unitTest.Error(L"GoogleTest hat den Test nicht ausgeführt");
        }
        return m_hasException ? LuUnitTest::eR_Exception : m_unitTest.GetResultByErrors();
    }

private:
    /// GoogleTest 1.12 runs a test although its suite was skipped. Such a test does not count as skipped.
    void reportSkips() const
    {
        for (const testing::TestPartResult& skip : m_skips)
        {
            if (m_isSkipped || !m_hasStarted)
            {
                m_unitTest.ReportSkip(skip.file_name(), skip.line_number(), skip.message());
            }
            else
            {
                const std::string text = "Übersprungen: " + std::string(skip.message());
                m_unitTest.Report(false, skip.file_name(), skip.line_number(), text);
            }
        }
    }

    LuForeignTests::CUnitTest& m_unitTest;
    std::vector<testing::TestPartResult> m_skips; ///< reported at the end, when it is known whether the test has run
    bool m_hasStarted = false;
    bool m_isSkipped = false;
    bool m_hasException = false;
};

/// Reports the value and the type of a test's parameter, because GoogleTest's failure message does not contain them.
inline void reportParameters(LuForeignTests::CUnitTest& unitTest, const testing::TestInfo& test)
{
    if (test.value_param() != nullptr)
    {
        unitTest.Info(L"GetParam() = %S", test.value_param());
    }
    if (test.type_param() != nullptr)
    {
        unitTest.Info(L"TypeParam = %S", test.type_param());
    }
}

/// Puts a test into its suite's list and takes it out again.
class CListedTest : public INonCopyable
{
public:
    CListedTest(testing::TestSuite& suite, testing::TestInfo& test) : m_list(suite.*GetTestList())
    {
        m_list.push_back(&test);
    }
    ~CListedTest() { m_list.clear(); }

private:
    Tests& m_list;
};

/// Owns a test that has been taken out of its suite, which would otherwise delete it.
class COwnedTest : public INonCopyable
{
public:
    COwnedTest(testing::TestSuite& suite, testing::TestInfo* test) : m_list(suite.*GetTestList()), m_test(test) {}
    /// If the process ends while the test runs, the suite's list still contains the test, so the suite would delete it.
    ~COwnedTest() { m_list.clear(); }

private:
    Tests& m_list;
    std::unique_ptr<testing::TestInfo> m_test;
};

inline LuUnitTest::EResult run(LuForeignTests::CUnitTest& unitTest, testing::TestSuite& suite, testing::TestInfo& test)
{
    const CListedTest listed(suite, test);
    testing::TestEventListeners& listeners = testing::UnitTest::GetInstance()->listeners();
    // GoogleTest owns the listener during the run and deletes it if the test ends the process.
    auto* const listener = new CListener(unitTest);
    listeners.Append(listener);
    const bool hasPassed = RUN_ALL_TESTS() == 0;
    const std::unique_ptr<testing::TestEventListener> released(listeners.Release(listener));
    if (unitTest.HasErrors())
    {
        reportParameters(unitTest, test);
    }
    return listener->GetResult(hasPassed);
}

/// Resets options from environment variables that would change which tests run, how they end or where results go.
inline void resetOptions()
{
    // Creates a string explicitly, because GCC 12 warns about the assignment of a short literal.
    GTEST_FLAG_SET(filter, std::string("*"));
    GTEST_FLAG_SET(also_run_disabled_tests, true);
    GTEST_FLAG_SET(break_on_failure, false);
    GTEST_FLAG_SET(catch_exceptions, true);
    GTEST_FLAG_SET(fail_fast, false);
    GTEST_FLAG_SET(install_failure_signal_handler, false);
    GTEST_FLAG_SET(list_tests, false);
    GTEST_FLAG_SET(output, std::string());
    GTEST_FLAG_SET(repeat, 1);
    GTEST_FLAG_SET(shuffle, false);
    GTEST_FLAG_SET(stream_result_to, std::string());
    GTEST_FLAG_SET(throw_on_failure, false);
}

/// The command that GoogleTest starts for a death test in the style "threadsafe". The host cannot be used, because it
/// expects other arguments. The command prints its fourth word. It makes the death test fail by reporting that the
/// tested code did not die: it writes "L" to the descriptor at the end of the last argument, which GoogleTest adds.
inline std::vector<std::string> getDeathTestCommand()
{
    return {"/bin/sh", "-c", "echo \"$0\" >&2; for last; do :; done; printf L >\"/proc/self/fd/${last##*|}\"",
            "Todestests gibt es hier nur im Stil \"fast\""};
}

inline void prepare()
{
    // Refuses the variable, because GoogleTest reads it in each run and has no option that overrides it.
    if (std::getenv("GTEST_TOTAL_SHARDS") != nullptr)
    {
        throw std::wstring(L"Die Umgebungsvariable GTEST_TOTAL_SHARDS ist gesetzt: GoogleTest würde Tests auslassen");
    }
    // Resets the options before InitGoogleTest, which may connect to servers and install handlers.
    resetOptions();
    std::vector<std::string> texts = getDeathTestCommand();
    std::vector<char*> arguments;
    for (std::string& text : texts)
    {
        arguments.push_back(text.data());
    }
    int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    testing::InitGoogleTest(&count, arguments.data());
    testing::TestEventListeners& listeners = testing::UnitTest::GetInstance()->listeners();
    delete listeners.Release(listeners.default_result_printer());
    delete listeners.Release(listeners.default_xml_generator());
}

inline bool isDisabled(std::string_view name)
{
    // The names of parameterised suites begin with a prefix and "/".
    return name.starts_with("DISABLED_") || name.find("/DISABLED_") != name.npos;
}

inline void registerSuites()
{
    static std::deque<COwnedTest> s_tests;
    prepare();
    LuForeignTests::CNames suiteNames;
    const testing::UnitTest& all = *testing::UnitTest::GetInstance();
    for (int index = 0; index < all.total_test_suite_count(); ++index)
    {
        // GoogleTest's public interface returns suites only as const.
        auto& suite = const_cast<testing::TestSuite&>(*all.GetTestSuite(index));
        LuForeignTests::SSuite made{suiteNames.Make(LuForeignTests::AddPrefix(suite.name())), {}};
        LuForeignTests::CNames testNames;
        for (testing::TestInfo* const test : std::exchange(suite.*GetTestList(), Tests()))
        {
            s_tests.emplace_back(suite, test);
            made.tests.push_back(
                {testNames.Make(test->name()), isDisabled(suite.name()) || isDisabled(test->name()),
                 [&suite, test](LuForeignTests::CUnitTest& unitTest) { return run(unitTest, suite, *test); }});
        }
        LuForeignTests::Register(std::move(made));
    }
}

// Registers the suites after all static objects exist: GoogleTest creates the tests of TEST_P when it is initialised.
const LbLateClasses s_lateClasses(&registerSuites);

} // namespace

} // namespace LuGoogleTest
