#include "testing/lutestsuite/report/xmlcases.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "base/lbencoding.h"
#include "testing/lutestsuite/report/leaknote.h"
#include "testing/lutestsuite/settings/valuereaders.h"

namespace
{

using SReportCase = LuTestSuiteReport::SReportCase;

/// A position in the bytes. Each operation moves past the expected bytes, or returns false if something else follows.
class CScanner
{
public:
    explicit CScanner(std::string_view bytes) : m_rest(bytes) {}

    bool Skip(std::string_view text)
    {
        const bool isThere = m_rest.starts_with(text);
        m_rest.remove_prefix(isThere ? text.size() : 0);
        return isThere;
    }

    /// Skips white space, then this text.
    bool Begin(std::string_view text)
    {
        constexpr std::string_view c_WhiteSpace = " \t\r\n";
        m_rest.remove_prefix(std::min(m_rest.find_first_not_of(c_WhiteSpace), m_rest.size()));
        return Skip(text);
    }

    /// Takes a value that ends before the first character of `end`, and skips `end`.
    bool Take(std::string_view end, std::string_view& value)
    {
        value = m_rest.substr(0, m_rest.find(end.front()));
        m_rest.remove_prefix(value.size());
        return Skip(end);
    }

    /// Takes the value of an element without attributes.
    bool TakeElement(std::string_view startTag, std::string_view endTag, std::string_view& value)
    {
        return Begin(startTag) && Take(endTag, value);
    }

    bool IsAtEnd() { return Begin("") && m_rest.empty(); }

private:
    std::string_view m_rest;
};

/// Converts numbers directly if they have the writer's format; otherwise `readOther` converts them as wide text.
template<typename T>
T readNumber(std::string_view text, T (*readOther)(const std::wstring&))
{
    const char* const end = text.data() + text.size();
    T value = 0;
    const auto [place, error] = std::from_chars(text.data(), end, value);
    const bool isUsual = error == std::errc() && place == end && std::isfinite(static_cast<double>(value));
    return isUsual ? value : readOther(LbEncoding::FromLatin1(text));
}

bool readStart(CScanner& scanner, SReportCase& testCase)
{
    std::string_view id;
    std::string_view className;
    std::string_view caseName;
    if (!scanner.Begin(LuTestSuite::c_CaseBegin) || !scanner.Take("\" classname=\"", id) ||
        !scanner.Take("\" name=\"", className) || !scanner.Take("\">", caseName))
    {
        return false;
    }
    testCase.Id = readNumber(id, LuTestSuite::ReadUInt32);
    testCase.ClassName = LbEncoding::FromLatin1(className);
    testCase.CaseName = LuTestSuiteUtils::LuMarkupWriter::Unescape(LbEncoding::FromLatin1(caseName));
    return true;
}

bool readMeasurements(CScanner& scanner, SReportCase& testCase)
{
    std::string_view time;
    std::string_view memory;
    std::string_view memoryDelta;
    if (!scanner.TakeElement("<time>", "</time>", time) || !scanner.TakeElement("<memory>", "</memory>", memory) ||
        !scanner.TakeElement("<memorydelta>", "</memorydelta>", memoryDelta))
    {
        return false;
    }
    testCase.Time = readNumber(time, LuTestSuite::ReadFloat);
    testCase.Memory = readNumber(memory, LuTestSuite::ReadUInt64);
    testCase.MemoryDelta = readNumber(memoryDelta, LuTestSuite::ReadInt64);
    testCase.Info = LuTestSuite::GetLeakNote(testCase.MemoryDelta);
    return true;
}

bool readResult(CScanner& scanner, SReportCase& testCase)
{
    std::string_view type;
    if (!scanner.TakeElement("<result type=\"", "\"", type))
    {
        return false;
    }
    testCase.Result = LuTestSuiteReport::resultStringToType(LbEncoding::FromLatin1(type));
    testCase.Warning = scanner.Skip(" warning=\"true\"");
    if (!scanner.Skip(">"))
    {
        return false;
    }
    while (scanner.Begin("<dump type=\""))
    {
        std::string_view kind;
        std::string_view text;
        if (!scanner.Take("\">", kind) || !scanner.Take("</dump>", text))
        {
            return false;
        }
        testCase.Dumps.push_back({kind != "info", LbEncoding::FromLatin1(text)});
    }
    return scanner.Begin("</result>");
}

/// Skips the element that tells other readers that the case failed.
bool skipFailure(CScanner& scanner)
{
    std::string_view description;
    if (scanner.Begin("<failure message=\"\" type=\""))
    {
        return scanner.Take("\"></failure>", description);
    }
    return !scanner.Begin("<error message=\"\" type=\"") || scanner.Take("\"></error>", description);
}

} // namespace

bool LuTestSuite::ReadXmlCases(std::string_view bytes, std::vector<SReportCase>& cases)
{
    CScanner scanner(bytes);
    while (!scanner.Begin("</testsuite>"))
    {
        SReportCase& testCase = cases.emplace_back();
        if (!readStart(scanner, testCase) || !readMeasurements(scanner, testCase) || !readResult(scanner, testCase) ||
            !skipFailure(scanner) || !scanner.Begin("</testcase>"))
        {
            return false;
        }
    }
    return scanner.IsAtEnd();
}
