/// Turns the tests of a Catch2 program into cases of a test module. For Catch2 3.3 or later.
///
/// The module consists of the program's sources without its `main`, linked with Catch2::Catch2 (not
/// Catch2::Catch2WithMain), and of one source that includes this header:
///
///     #include "testing/lutestsuite/catch2.h"
///
/// Each source file with tests becomes a class, named after the file without folder and extension; each TEST_CASE
/// becomes a case with all of its sections and generated values. Characters that file names cannot contain become "_",
/// and "/" becomes ".". A failure becomes an error line with file, line, sections and messages; an exception makes the
/// result eR_Exception. A skipped test passes, with the information line "Übersprungen: " and the reason;
/// LuTestSuiteRunner recognises skipped tests by this line. If several loaded modules have a class of the same name,
/// only the class of the first module runs. To avoid that, define the macro LUTESTSUITE_SUITE_PREFIX before this
/// header: a literal that is put in front of all class names of the module.
///
/// Hidden tests ("[.]") are disabled cases. "[!mayfail]" and "[!shouldfail]" keep their meaning. Other tags have no
/// effect: -i and -e select by the names of classes and cases. Sections are not cases, because their names are known
/// only after the test has run.
///
/// If Catch2 could not register a test (a reserved tag, two tests with the same name and tags), the host ends with an
/// error and runs no test, as the program would.
///
/// The program's listeners see each case as a test run of its own. Tests of one process run one after another, also on
/// worker threads (-p); in child processes (-x -w 4) they run side by side. Random numbers start from seed 1.
/// Benchmarks are skipped.
#pragma once

#include <algorithm>
#include <cstdint>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Catch2 2 has no such header.
#if __has_include(<catch2/catch_version_macros.hpp>)
#include <catch2/catch_version_macros.hpp>
#endif

#if !defined(CATCH_VERSION_MAJOR) || CATCH_VERSION_MAJOR < 3 || (CATCH_VERSION_MAJOR == 3 && CATCH_VERSION_MINOR < 3)
#error "testing/lutestsuite/catch2.h needs Catch2 3.3 or later"
#endif

#include <catch2/catch_config.hpp>
#include <catch2/catch_session.hpp>
#include <catch2/catch_test_case_info.hpp>
#include <catch2/interfaces/catch_interfaces_registry_hub.hpp>
#include <catch2/interfaces/catch_interfaces_reporter_factory.hpp>
#include <catch2/interfaces/catch_interfaces_testcase.hpp>
#include <catch2/internal/catch_context.hpp>
#include <catch2/internal/catch_random_number_generator.hpp>
#include <catch2/internal/catch_reporter_registry.hpp>
#include <catch2/internal/catch_run_context.hpp>
#include <catch2/internal/catch_startup_exception_registry.hpp>
#include <catch2/reporters/catch_reporter_event_listener.hpp>
#include <catch2/reporters/catch_reporter_multi.hpp>

#include "testing/lutestsuite/foreigntests.h"

/// Adapter for tests of Catch2.
namespace LuCatch2
{

// Each module has its own classes and objects, because it has its own copy of Catch2.
namespace
{

/// Reports failed assertions, skips and messages of a test case to its unit test.
class CReporter : public Catch::EventListenerBase
{
public:
    CReporter(const Catch::IConfig& config, LuForeignTests::CUnitTest& unitTest, bool& hasException)
        : EventListenerBase(&config), m_unitTest(unitTest), m_hasException(hasException)
    {
    }

    void testCaseStarting(const Catch::TestCaseInfo& test) override { m_mayFail = test.okToFail(); }

    void sectionStarting(const Catch::SectionInfo& section) override { m_sections.push_back(section.name); }

    void sectionEnded(const Catch::SectionStats& /*section*/) override { m_sections.pop_back(); }

    void assertionEnded(const Catch::AssertionStats& stats) override
    {
        const Catch::AssertionResult& result = stats.assertionResult;
        const Catch::ResultWas::OfType type = result.getResultType();
        const bool isSkip = type == Catch::ResultWas::ExplicitSkip;
        const bool isNote = type == Catch::ResultWas::Info || type == Catch::ResultWas::Warning;
        if (result.isOk() && !isSkip && !isNote)
        {
            return;
        }
        const bool isError = !result.isOk() && !isSkip && !m_mayFail;
        m_hasException = m_hasException || (isError && type == Catch::ResultWas::ThrewException);
        const Catch::SourceLineInfo place = result.getSourceInfo();
        const auto line = static_cast<std::int64_t>(place.line);
        if (isSkip)
        {
            m_unitTest.ReportSkip(place.file, line, std::string(result.getMessage()));
        }
        else
        {
            m_unitTest.Report(isError, place.file, line, describe(stats));
        }
    }

private:
    // Not `"\n" + line`, because GCC 12 warns about it.
    static void addLine(std::string& text, std::string_view line)
    {
        text += '\n';
        text += line;
    }

    std::string describe(const Catch::AssertionStats& stats) const
    {
        const Catch::AssertionResult& result = stats.assertionResult;
        std::string text = result.hasExpression() ? result.getExpressionInMacro() : std::string(result.getMessage());
        if (result.hasExpandedExpression())
        {
            addLine(text, result.getExpandedExpression());
        }
        if (result.hasExpression() && result.hasMessage())
        {
            addLine(text, std::string(result.getMessage()));
        }
        for (const Catch::MessageInfo& message : stats.infoMessages)
        {
            if (message.type == Catch::ResultWas::Info)
            {
                addLine(text, message.message);
            }
        }
        // The first section is the test case itself.
        for (std::size_t index = 1; index < m_sections.size(); ++index)
        {
            text += index == 1 ? "\nSECTION " : " / ";
            text += m_sections[index];
        }
        return text;
    }

    LuForeignTests::CUnitTest& m_unitTest;
    bool& m_hasException;
    bool m_mayFail = false;
    std::vector<std::string> m_sections;
};

inline Catch::ConfigData makeConfigData()
{
    Catch::ConfigData data;
    data.rngSeed = 1;
    data.skipBenchmarks = true;
    return data;
}

inline const Catch::Config& getConfig()
{
    static const Catch::Config s_config(makeConfigData());
    return s_config;
}

/// Creates the program's listeners and the reporter.
inline Catch::IEventListenerPtr makeReporters(LuForeignTests::CUnitTest& unitTest, bool& hasException)
{
    auto reporters = Catch::Detail::make_unique<Catch::MultiReporter>(&getConfig());
    for (const auto& listener : Catch::getRegistryHub().getReporterRegistry().getListeners())
    {
        reporters->addListener(listener->create(&getConfig()));
    }
    reporters->addReporter(Catch::Detail::make_unique<CReporter>(getConfig(), unitTest, hasException));
    return reporters;
}

/// Runs the test without a Catch2 session: to find the test, a session would compare the names of all tests.
inline LuUnitTest::EResult run(LuForeignTests::CUnitTest& unitTest, const Catch::TestCaseHandle& test)
{
    Catch::getCurrentMutableContext().setConfig(&getConfig());
    Catch::seedRng(getConfig());
    bool hasException = false;
    Catch::Totals totals;
    {
        Catch::RunContext context(&getConfig(), makeReporters(unitTest, hasException));
        totals = context.runTest(test);
    }
    if (totals.testCases.failed > 0 && !unitTest.HasErrors())
    {
        unitTest.Report(true, test.getTestCaseInfo().lineInfo.file,
                        static_cast<std::int64_t>(test.getTestCaseInfo().lineInfo.line),
                        test.getTestCaseInfo().expectedToFail() ? "[!shouldfail], aber kein Fehler"
                                                                : "Catch2 meldet einen Fehler ohne Text");
    }
    return hasException ? LuUnitTest::eR_Exception : unitTest.GetResultByErrors();
}

/// Returns "vectors" for "tests/vectors.cpp"; accepts "/" and "\" on any platform.
inline std::string getFileStem(std::string_view path)
{
    path.remove_prefix(std::min(path.find_last_of("/\\") + 1, path.size()));
    return std::string(path.substr(0, path.rfind('.')));
}

/// Throws a text if Catch2 could not register a test, for example because of a reserved tag, or because another test
/// case has the same name and tags. A Catch2 session would print this text and run no test. Without this check, the
/// tests concerned would be missing silently.
inline void checkRegistration()
{
    std::vector<std::exception_ptr> exceptions = Catch::getRegistryHub().getStartupExceptionRegistry().getExceptions();
    try
    {
        Catch::getRegistryHub().getTestCaseRegistry().getAllTestsSorted(getConfig());
    }
    catch (...)
    {
        exceptions.push_back(std::current_exception());
    }
    std::wstring errors;
    for (const std::exception_ptr& exception : exceptions)
    {
        try
        {
            std::rethrow_exception(exception);
        }
        catch (...)
        {
            errors += L"\n" + LbEncoding::FromUtf8(Catch::translateActiveException());
        }
    }
    if (!errors.empty())
    {
        throw std::wstring(L"Catch2 hat nicht alle Tests angemeldet:" + errors);
    }
}

inline void registerSuites()
{
    // Creates objects of Catch2 here; otherwise their memory would count as growth of the first case.
    Catch::getCurrentMutableContext().setConfig(&getConfig());
    checkRegistration();
    std::map<std::string, LuForeignTests::SSuite> suites;
    std::map<std::string, LuForeignTests::CNames> names;
    for (const Catch::TestCaseHandle& test : Catch::getRegistryHub().getTestCaseRegistry().getAllTests())
    {
        const Catch::TestCaseInfo& info = test.getTestCaseInfo();
        const std::string file = getFileStem(info.lineInfo.file);
        suites[file].tests.push_back({names[file].Make(info.name), info.isHidden(),
                                      [test](LuForeignTests::CUnitTest& unitTest) { return run(unitTest, test); }});
    }
    LuForeignTests::CNames suiteNames;
    for (auto& [file, suite] : suites)
    {
        suite.name = suiteNames.Make(LuForeignTests::AddPrefix(file));
        LuForeignTests::Register(std::move(suite));
    }
}

// Registers the suites after all static objects exist, because only then all tests are known.
const LbLateClasses s_lateClasses(&registerSuites);

} // namespace

} // namespace LuCatch2
