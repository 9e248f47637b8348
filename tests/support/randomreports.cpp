#include "tests/support/randomreports.h"

#include <cmath>
#include <iterator>
#include <limits>
#include <string_view>

namespace
{

using LuTestSuiteRun::ECaseRunResult;
using SReportData = LuTestSuiteReport::SReportData;
using SReportClass = LuTestSuiteReport::SReportClass;
using SReportCase = LuTestSuiteReport::SReportCase;

/// The results that a report file distinguishes.
constexpr ECaseRunResult c_Results[] = {ECaseRunResult::Ok,       ECaseRunResult::Error,     ECaseRunResult::Exception,
                                        ECaseRunResult::NoInput,  ECaseRunResult::Different, ECaseRunResult::Unknown,
                                        ECaseRunResult::Canceled, ECaseRunResult::TimeOut};

/// Makes random content for a record.
class CRandom
{
public:
    explicit CRandom(std::mt19937& random) : m_random(random) {}

    template<typename T>
    T Number()
    {
        return std::uniform_int_distribution<T>(std::numeric_limits<T>::min(), std::numeric_limits<T>::max())(m_random);
    }

    std::uint32_t Below(std::uint32_t limit)
    {
        return std::uniform_int_distribution<std::uint32_t>(0, limit - 1)(m_random);
    }

    bool Flag() { return Below(2) == 0; }

    /// A number of almost any magnitude that a float can have; not negative.
    float Float()
    {
        constexpr int c_LargestExponent = 120;
        const float mantissa = std::uniform_real_distribution<float>(0.0F, 1.0F)(m_random);
        return std::ldexp(mantissa, static_cast<int>(Below(2 * c_LargestExponent)) - c_LargestExponent);
    }

    /// A text of any characters that a report file can contain.
    std::wstring Text(std::uint32_t shortest = 0)
    {
        std::wstring text;
        const std::uint32_t length = shortest + Below(12);
        while (text.size() < length)
        {
            const auto character = static_cast<wchar_t>(Below(256));
            const bool isControl = character < L' ' || (character >= 0x7F && character < 0xA0);
            const bool isLayout = std::wstring_view(L"\t\n\r").find(character) != std::wstring::npos;
            text.push_back(isControl && !isLayout ? L' ' : character);
        }
        return text;
    }

    /// A text without markup characters. It sometimes contains references, which writing and reading do not change.
    std::wstring RawText(std::uint32_t shortest = 0)
    {
        std::wstring text = Text(shortest);
        for (wchar_t& character : text)
        {
            character = std::wstring_view(L"<>&\"'").find(character) == std::wstring::npos ? character : L'_';
        }
        return Below(8) == 0 ? text + L"&lt;&auml;&#65;" : text;
    }

private:
    std::mt19937& m_random;
};

void randomizeDescription(CRandom& random, SReportData& data)
{
    for (std::wstring* text : {&data.BuildConfiguration, &data.Processor, &data.GPU, &data.MachineName,
                               &data.DataDirectory, &data.ExecutionMode, &data.DateBegin, &data.DateEnd})
    {
        *text = random.RawText();
    }
    if (random.Flag())
    {
        data.SvnInfo = std::make_unique<LuTestSuiteUtils::SSvnInfo>();
        data.SvnInfo->URL = random.RawText(1);
        data.SvnInfo->Revision = random.RawText();
    }
    if (random.Flag())
    {
        data.PscmInfo = std::make_unique<LuTestSuiteUtils::SPscmInfo>();
        data.PscmInfo->Repository = random.RawText(1);
        data.PscmInfo->Branch = random.RawText();
    }
}

void randomizeFigures(CRandom& random, SReportData& data)
{
    for (std::uint32_t* number : {&data.ThreadCount, &data.TimeOut, &data.ClassesTotal, &data.ClassesSuccessful,
                                  &data.CasesTotal, &data.Successful, &data.Failures, &data.Errors, &data.Warnings})
    {
        *number = random.Number<std::uint32_t>();
    }
    for (std::uint64_t* number : {&data.MemoryAvg, &data.MemoryMax, &data.MemoryMin})
    {
        *number = random.Number<std::uint64_t>();
    }
    for (float* number : {&data.TimeTotal, &data.TimeAvg, &data.TimeMax, &data.TimeMin})
    {
        *number = random.Float();
    }
}

SReportClass makeRandomClass(CRandom& random)
{
    SReportClass unitTest;
    unitTest.Name = random.RawText();
    unitTest.CasesTotal = random.Number<std::uint32_t>();
    unitTest.Errors = random.Number<std::uint32_t>();
    unitTest.Failures = random.Number<std::uint32_t>();
    unitTest.Warnings = random.Number<std::uint32_t>();
    unitTest.ContactName = random.RawText();
    unitTest.ContactEMail = random.RawText();
    return unitTest;
}

SReportCase makeRandomCase(CRandom& random)
{
    SReportCase testCase;
    testCase.Id = random.Number<std::uint32_t>();
    testCase.ClassName = random.RawText();
    testCase.CaseName = random.Text();
    testCase.Time = random.Float();
    testCase.Memory = random.Number<std::uint64_t>();
    testCase.MemoryDelta = random.Flag() ? 0 : random.Number<std::int64_t>();
    testCase.Result = c_Results[random.Below(std::size(c_Results))];
    testCase.Warning = random.Flag();
    for (std::uint32_t count = random.Below(4); count > 0; --count)
    {
        testCase.Dumps.push_back({random.Flag(), LuTestSuiteUtils::LuMarkupWriter::Escape(random.Text())});
    }
    return testCase;
}

} // namespace

SReportData MakeRandomReport(std::mt19937& random)
{
    CRandom source(random);
    SReportData data;
    randomizeDescription(source, data);
    randomizeFigures(source, data);
    for (std::uint32_t count = source.Below(4); count > 0; --count)
    {
        data.Classes.push_back(makeRandomClass(source));
    }
    for (std::uint32_t count = source.Below(16); count > 0; --count)
    {
        data.Cases.push_back(makeRandomCase(source));
    }
    return data;
}
