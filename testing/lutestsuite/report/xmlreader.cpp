/// Reading the XML report.

#include <algorithm>
#include <iterator>
#include <new>
#include <span>

#include "base/lbformat.h"
#include "base/xmlnode.h"
#include "testing/lutestsuite/output/warning.h"
#include "testing/lutestsuite/report/leaknote.h"
#include "testing/lutestsuite/report/xmlcases.h"
#include "testing/lutestsuite/report/xmlformat.h"
#include "testing/lutestsuite/settings/valuereaders.h"

namespace
{

using LuTestSuite::ReportClass;
using LuTestSuite::ReportData;
using SReportCase = LuTestSuiteReport::SReportCase;

void readValue(const XMLNode& node, std::wstring& value)
{
    value = node.GetText();
}

void readValue(const XMLNode& node, std::uint32_t& value)
{
    LuTestSuiteUtils::GetUInt32(node, value);
}

void readValue(const XMLNode& node, std::uint64_t& value)
{
    LuTestSuiteUtils::GetUInt64(node, value);
}

void readValue(const XMLNode& node, float& value)
{
    value = LuTestSuite::ReadFloat(node.GetText());
}

template<typename Record>
void readFields(const XMLNode& node, std::span<const LuTestSuite::SXmlField<Record>> fields, Record& record)
{
    for (const LuTestSuite::SXmlField<Record>& field : fields)
    {
        std::visit([&](const auto member) { readValue(node.GetChild(field.element), record.*member); }, field.member);
    }
}

/// Null if the field that marks the record's presence is empty.
template<typename Record>
std::unique_ptr<Record> readRecord(const XMLNode& node, std::span<const LuTestSuite::SXmlField<Record>> fields,
                                   std::wstring Record::*tellingField)
{
    auto record = std::make_unique<Record>();
    readFields(node, fields, *record);
    return ((*record).*tellingField).empty() ? nullptr : std::move(record);
}

void readBuildInfo(const XMLNode& node, ReportData& data)
{
    readFields<ReportData>(node, LuTestSuite::c_BuildInfoFields, data);
    data.SvnInfo = readRecord<LuTestSuite::SvnInfo>(node, LuTestSuite::c_SvnInfoFields, &LuTestSuite::SvnInfo::URL);
    data.PscmInfo =
        readRecord<LuTestSuite::PscmInfo>(node, LuTestSuite::c_PscmInfoFields, &LuTestSuite::PscmInfo::Repository);
}

ReportClass readClass(const XMLNode& node)
{
    ReportClass unitTest;
    unitTest.Name = node.GetAttribute("Name");
    readFields<ReportClass>(node, LuTestSuite::c_ClassFields, unitTest);
    unitTest.Successful = unitTest.CasesTotal - unitTest.Failures - unitTest.Errors;
    return unitTest;
}

void readResult(const XMLNode& node, SReportCase& testCase)
{
    testCase.Result = LuTestSuiteReport::resultStringToType(node.GetAttribute("type"));
    testCase.Warning = node.GetAttribute("warning") == L"true";
    for (const XMLNode& dump : node.GetChildren("dump"))
    {
        testCase.Dumps.push_back({dump.GetAttribute("type") != L"info", dump.GetText()});
    }
}

SReportCase readCase(const XMLNode& node)
{
    SReportCase testCase;
    testCase.Id = LuTestSuite::ReadUInt32(node.GetAttribute("id"));
    testCase.ClassName = node.GetAttribute("classname");
    testCase.CaseName = LuTestSuiteUtils::LuMarkupWriter::Unescape(node.GetAttribute("name"));
    readValue(node.GetChild("time"), testCase.Time);
    readValue(node.GetChild("memory"), testCase.Memory);
    testCase.MemoryDelta = LuTestSuite::ReadInt64(node.GetChild("memorydelta").GetText());
    testCase.Info = LuTestSuite::GetLeakNote(testCase.MemoryDelta);
    readResult(node.GetChild("result"), testCase);
    return testCase;
}

void readReport(const XMLNode& root, ReportData& data)
{
    const XMLNode runInfo = root.GetChild("RunInfo");
    const XMLNode classStatistics = root.GetChild("ClassStatistics");
    readFields<ReportData>(root.GetChild("SystemInfo"), LuTestSuite::c_SystemInfoFields, data);
    readBuildInfo(root.GetChild("BuildInfo"), data);
    readFields<ReportData>(runInfo, LuTestSuite::c_RunInfoFields, data);
    readValue(runInfo.GetChild("TimeOut"), data.TimeOut);
    readFields<ReportData>(root.GetChild("Statistics"), LuTestSuite::c_StatisticsFields, data);
    readFields<ReportData>(classStatistics, LuTestSuite::c_ClassStatisticsFields, data);
    for (const XMLNode& child : classStatistics.GetChildren("Class"))
    {
        data.Classes.push_back(readClass(child));
    }
    const auto testCases = root.GetChildren("testcase");
    data.Cases.reserve(static_cast<std::size_t>(std::distance(testCases.begin(), testCases.end())));
    for (const XMLNode& child : testCases)
    {
        data.Cases.push_back(readCase(child));
    }
}

bool readText(std::string bytes, ReportData& data)
{
    XMLDocument document;
    if (document.LoadText(std::move(bytes), "testsuite", XMLDocument::EText::AsWritten) != XMLDocument::EResult::Ok)
    {
        return false;
    }
    readReport(document.GetRoot(), data);
    return true;
}

/// Reads a report that this library wrote: builds a tree of the part before the first case, and reads the cases without
/// a tree. False, with some of the record filled, if the bytes have another layout. The caller then builds a tree of
/// the whole file.
bool readOwnLayout(const std::string& bytes, ReportData& data)
{
    // In bytes; no case is shorter.
    constexpr std::size_t c_ShortestCase = 100;
    const std::size_t start = bytes.find(LuTestSuite::c_CaseBegin);
    if (!bytes.starts_with(LuTestSuite::c_XmlDeclaration) || start == std::string::npos ||
        bytes.find('\0') != std::string::npos || !readText(bytes.substr(0, start) + "</testsuite>", data))
    {
        return false;
    }
    data.Cases.reserve(std::min<std::size_t>(data.CasesTotal, bytes.size() / c_ShortestCase));
    return LuTestSuite::ReadXmlCases(std::string_view(bytes).substr(start), data.Cases);
}

/// False if the file does not exist. Throws the reason if the file cannot be read.
bool readFile(const std::wstring& path, ReportData& data)
{
    std::string bytes;
    switch (XMLDocument::ReadFile(path, bytes))
    {
    case XMLDocument::EResult::Missing:
        return false;
    case XMLDocument::EResult::Unreadable:
        throw LbFormat(L"Datei %s konnte nicht gelesen werden", path);
    default:
        break;
    }
    if (!readOwnLayout(bytes, data))
    {
        data = {};
        if (!readText(std::move(bytes), data))
        {
            throw std::wstring(L"XML-Syntax Fehler");
        }
    }
    return true;
}

} // namespace

bool LuTestSuiteReport::LoadReportDataFromXMLFile(const std::wstring& path, SReportData& data)
{
    data = {};
    try
    {
        return readFile(path, data);
    }
    catch (const std::wstring& message)
    {
        LuTestSuite::WriteWarning(L"Fehler in Config-File: %s\n", message);
    }
    catch (const std::bad_alloc&)
    {
        LuTestSuite::WriteWarning(L"Fehler in Config-File: %s\n", LbFormat(L"Datei %s ist zu groß", path));
    }
    return false;
}
