/// The page that compares two runs.

#include "testing/lutestsuite/report/companions.h"
#include "testing/lutestsuite/report/diffpage.h"
#include "testing/lutestsuite/report/matching.h"
#include "testing/lutestsuite/report/page.h"
#include "testing/lutestsuite/report/rundata.h"

namespace
{

using LuTestSuite::EDiffState;
using LuTestSuite::MarkupWriter;
using LuTestSuite::SCaseMatch;
using LuTestSuite::SClassMatch;
using SData = LuTestSuiteReport::SReportData;
using SClass = LuTestSuiteReport::SReportClass;
using SCase = LuTestSuiteReport::SReportCase;

struct SStateTexts
{
    const wchar_t* rowStart;
    const wchar_t* name;
};

/// Indexed by EDiffState.
constexpr SStateTexts c_StateTexts[] = {
    {L"<tr>", L""},
    {L"<tr class=\"diff\">", L"Different"},
    {L"<tr class=\"worse\">", L"Worse"},
    {L"<tr class=\"better\">", L"Improved"},
};

const SStateTexts& getTexts(EDiffState state)
{
    return c_StateTexts[static_cast<std::size_t>(state)];
}

/// The two sides of a comparison, and its options.
struct SComparison
{
    const SData& a;
    const SData& b;
    bool smallReport;
    bool tolerateWarnings;
};

void writeSources(MarkupWriter& writer, const std::wstring& pathA, const std::wstring& pathB)
{
    writer.WriteElement(L"h2", L"Diff Sources");
    writer.WriteLineOpen(L"<table id=\"diffsource\">");
    writer.WriteLine(L"<tr><th></th><th>Reference Data\"A\"</th><th>Test Data\"B\"</th></tr>");
    writer.WriteLine(LbFormat(L"<tr><td>Data Source</td><td>%s</td><td>%s</td></tr>", MarkupWriter::Escape(pathA),
                              MarkupWriter::Escape(pathB)));
    writer.WriteLineClose(L"</table>");
}

std::wstring getText(const LuTestSuite::SRunDataRow& row, const SData& data)
{
    return LuTestSuite::IsPresent(row, data) ? LuTestSuite::ToMarkup(row.getText(data)) : std::wstring();
}

void writeRunDataRow(MarkupWriter& writer, const LuTestSuite::SRunDataRow& row, const SData& a, const SData& b)
{
    if (LuTestSuite::IsPresent(row, a) || LuTestSuite::IsPresent(row, b))
    {
        const EDiffState state = row.compare == nullptr ? EDiffState::Plain : row.compare(a, b);
        LuTestSuite::WriteRow(writer, getTexts(state).rowStart, L"td", {row.label, getText(row, a), getText(row, b)});
    }
}

void writeRunData(MarkupWriter& writer, const SData& a, const SData& b)
{
    for (const LuTestSuite::SRunDataTable& table : LuTestSuite::GetRunDataTables())
    {
        writer.WriteElement(L"h2", table.heading);
        writer.WriteLineOpen(table.start);
        writer.WriteLine(L"<tr><th></th><th>A</th><th>B</th></tr>");
        for (const LuTestSuite::SRunDataRow& row : table.rows)
        {
            writeRunDataRow(writer, row, a, b);
        }
        writer.WriteLineClose(L"</table>");
    }
}

/// The result of `get` for a side; empty if the side is missing.
template<typename T, typename F>
std::wstring getCell(const T* side, const F& get)
{
    return side == nullptr ? std::wstring() : get(*side);
}

/// The class's name and a link to its contact; each is taken from run A only if run B lacks it.
std::wstring getClassCell(const SClass* a, const SClass* b)
{
    std::wstring link = b == nullptr ? std::wstring() : LuTestSuite::GetContactLink(*b);
    if (link.empty() && a != nullptr)
    {
        link = LuTestSuite::GetContactLink(*a);
    }
    const std::wstring name = LuTestSuite::ToMarkup((b != nullptr ? b : a)->Name);
    return link.empty() ? name : name + L' ' + link;
}

void writeClass(MarkupWriter& writer, const SClass* a, const SClass* b, EDiffState state)
{
    const auto getTotal = [](const SClass& side) { return LbFormat(L"%d", side.CasesTotal); };
    const auto getUnsuccessful = [](const SClass& side) { return LbFormat(L"%d", side.CasesTotal - side.Successful); };
    const auto getWarnings = [](const SClass& side) { return LbFormat(L"%d", side.Warnings); };
    LuTestSuite::WriteRow(writer, getTexts(state).rowStart, L"td",
                          {getClassCell(a, b), getCell(a, getTotal), getCell(b, getTotal), getCell(a, getUnsuccessful),
                           getCell(b, getUnsuccessful), getCell(a, getWarnings), getCell(b, getWarnings)});
}

void writeClasses(MarkupWriter& writer, const SComparison& comparison)
{
    std::vector<SClassMatch> matches =
        LuTestSuite::MatchClasses(comparison.a, comparison.b, comparison.tolerateWarnings);
    std::erase_if(matches, [](const SClassMatch& match) { return match.state == EDiffState::Plain; });
    if (matches.empty())
    {
        return;
    }
    writer.WriteElement(L"h2", L"Class Diff");
    writer.WriteLineOpen(L"<table id=\"testclasses\" class=\"sortable\">");
    LuTestSuite::WriteRow(writer, L"<tr>", L"th",
                          {L"Class", L"Cases&nbsp;A", L"Cases&nbsp;B", L"Unsuccessful&nbsp;A", L"Unsuccessful&nbsp;B",
                           L"Warnings&nbsp;A", L"Warnings&nbsp;B"});
    for (const SClassMatch& match : matches)
    {
        writeClass(writer, LuTestSuite::FindSide(comparison.a.Classes, match.indexA),
                   LuTestSuite::FindSide(comparison.b.Classes, match.indexB), match.state);
    }
    writer.WriteLineClose(L"</table>");
}

/// One cell per side, A first.
template<typename F>
void writePair(MarkupWriter& writer, const SCase* a, const SCase* b, const F& get)
{
    writer.WriteElement(L"td", getCell(a, get));
    writer.WriteElement(L"td", getCell(b, get));
}

void writeRatio(MarkupWriter& writer, bool areBothThere, float ratio)
{
    writer.WriteElement(L"td", areBothThere ? LbFormat(L"%4.2f", ratio) : std::wstring());
}

void writeCase(MarkupWriter& writer, const SCase* a, const SCase* b, const SCaseMatch& match)
{
    const bool areBothThere = a != nullptr && b != nullptr;
    const SCase& either = a != nullptr ? *a : *b;
    writer.WriteLineOpen(getTexts(match.state).rowStart);
    writer.WriteElement(L"td", getTexts(match.state).name);
    writePair(writer, a, b, [](const SCase& side) { return LbFormat(L"%u", side.Id); });
    writer.WriteElement(L"td", LuTestSuite::ToMarkup(either.ClassName));
    writer.WriteElement(L"td", MarkupWriter::Escape(either.CaseName));
    writePair(writer, a, b, [](const SCase& side) { return LbFormat(L"%f", side.Time); });
    writeRatio(writer, areBothThere, match.timeRatio);
    writePair(writer, a, b, [](const SCase& side) { return LbFormat(L"%I64u", side.Memory); });
    writeRatio(writer, areBothThere, match.memoryRatio);
    writePair(writer, a, b, [](const SCase& side) { return LuTestSuiteReport::toDescriptionString(side.Result); });
    writePair(writer, a, b, [](const SCase& side) { return side.Info; });
    writer.WriteLineClose(L"</tr>");
}

void writeCases(MarkupWriter& writer, const SComparison& comparison)
{
    writer.WriteElement(L"h2", L"Case Diff");
    writer.WriteLineOpen(L"<table id=\"testcases\" class=\"sortable\">");
    LuTestSuite::WriteRow(writer, L"<tr>", L"th",
                          {L"Diff", L"Id&nbsp;A", L"Id&nbsp;B", L"Class", L"Case", L"Time&nbsp;A", L"Time&nbsp;B",
                           L"Time&nbsp;(B/A)", L"Mem&nbsp;A", L"Mem&nbsp;B", L"Mem&nbsp;(B/A)", L"Result&nbsp;A",
                           L"Result&nbsp;B", L"Info&nbsp;A", L"Info&nbsp;B"});
    for (const SCaseMatch& match : LuTestSuite::MatchCases(comparison.a, comparison.b, comparison.tolerateWarnings))
    {
        if (match.state != EDiffState::Plain || !comparison.smallReport)
        {
            writeCase(writer, LuTestSuite::FindSide(comparison.a.Cases, match.indexA),
                      LuTestSuite::FindSide(comparison.b.Cases, match.indexB), match);
        }
    }
    writer.WriteLineClose(L"</table>");
}

} // namespace

void LuTestSuite::WriteDiffPage(const std::wstring& path, const SDiffSide& a, const SDiffSide& b, bool smallReport,
                                bool tolerateWarnings)
{
    WritePage(path, L"LuTestSuite Report Diff", [&](MarkupWriter& writer) {
        const SComparison comparison = {a.data, b.data, smallReport, tolerateWarnings};
        writeSources(writer, a.path, b.path);
        writeRunData(writer, a.data, b.data);
        writeClasses(writer, comparison);
        writeCases(writer, comparison);
    });
}

bool LuTestSuite::WriteDiffWithCompanions(const std::wstring& path, const SDiffSide& a, const SDiffSide& b,
                                          bool writeCss, bool writeJs, bool smallReport, bool tolerateWarnings)
{
    return WorkOrReport(c_PageFailed, path, [&] {
        WriteDiffPage(path, a, b, smallReport, tolerateWarnings);
        WriteCompanions(path, writeCss, writeJs);
    });
}

void LuTestSuiteReport::GenerateHTMLDiffReport(const std::wstring& path, const std::wstring& pathA,
                                               const std::wstring& pathB, const SReportData& a, const SReportData& b,
                                               bool writeCss, bool writeJs, bool smallReport, bool tolerateWarnings)
{
    LuTestSuite::WriteDiffWithCompanions(path, {pathA, a}, {pathB, b}, writeCss, writeJs, smallReport,
                                         tolerateWarnings);
}
