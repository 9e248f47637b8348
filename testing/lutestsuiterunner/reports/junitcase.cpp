#include "testing/lutestsuiterunner/reports/junitcase.h"

#include <algorithm>
#include <optional>

#include "base/lbformat.h"
#include "base/lbpath.h"
#include "testing/lutestsuite/lutestsuitereport.h"
#include "testing/lutestsuiterunner/model/names.h"
#include "testing/lutestsuiterunner/model/skips.h"
#include "testing/lutestsuiterunner/reports/casenotes.h"
#include "testing/lutestsuiterunner/reports/xmltext.h"

namespace Runner
{

namespace
{

constexpr const wchar_t* c_Interrupted = L"Lief noch, als der Prozess endete, der den Lauf ausführte";

std::string makeAttribute(std::string_view name, std::wstring_view value)
{
    return std::string(" ").append(name) + "=\"" + ToXmlAttribute(value) + "\"";
}

/// If the path is below the run's working directory, makes it relative to that, with "/", because build servers turn
/// such paths into links.
std::wstring getShownPath(const SPlan& plan, std::wstring path)
{
    const std::wstring root = LbPath::WithSeparator(plan.workingDirectory);
    if (!root.empty() && path.starts_with(root))
    {
        path.erase(0, root.size());
    }
    std::ranges::replace(path, LbPath::c_Separator, L'/');
    return path;
}

std::string makeStart(std::wstring_view name, std::wstring_view suiteName, const std::wstring& file, std::uint64_t time)
{
    std::string start = "\t\t<testcase" + makeAttribute("name", name) + makeAttribute("classname", suiteName);
    start += file.empty() ? std::string() : makeAttribute("file", file);
    return start + " time=\"" + ToXmlSeconds(time) + "\"";
}

/// The lines about an attempt that was running when its host ended; empty if there is none.
std::wstring describeInterruption(const CRunState& state, const SOpenCases& open, std::uint32_t caseIndex)
{
    const auto found = open.interrupted.find(caseIndex);
    if (found == open.interrupted.end())
    {
        return {};
    }
    std::wstring text = LbFormat(L"%u. Versuch: %s\n", state.GetAttempts(caseIndex).size(), c_Interrupted);
    return found->second.empty() ? text : text + L"Meldungen dieses Prozesses:\n" + found->second;
}

/// The text of a case: notes, messages, the last lines of output of a process that ended, and its stacks. Stacks come
/// last, because they may be long and texts are cut at their end.
std::string makeText(const CRunState& state, const SOpenCases& open, std::uint32_t caseIndex)
{
    std::wstring text = describeInterruption(state, open, caseIndex);
    for (const std::wstring& note : GetCaseNotes(state, caseIndex))
    {
        text += note + L"\n";
    }
    if (const SAttempt* const reported = state.GetReported(caseIndex))
    {
        text += reported->result.info.messages;
        if (!reported->result.output.empty())
        {
            text += L"Letzte Ausgabe:\n" + reported->result.output;
        }
        text += reported->result.stacks;
    }
    return ToXmlText(text);
}

EJunitStatus getStatus(const CRunState& state, const SOpenCases& open, std::uint32_t caseIndex)
{
    const EVerdict verdict = state.GetVerdict(caseIndex);
    const SAttempt* const reported = state.GetReported(caseIndex);
    if (verdict == EVerdict::Missing && reported == nullptr)
    {
        // A run that ended but left out cases without a reason must not look complete.
        const bool isLeftOut = state.IsEnded() && !state.IsCanceled();
        return isLeftOut || open.interrupted.contains(caseIndex) ? EJunitStatus::Error : EJunitStatus::Skipped;
    }
    if (verdict == EVerdict::Passed || verdict == EVerdict::Flaky)
    {
        return FindSkipReason(state, caseIndex) ? EJunitStatus::Skipped : EJunitStatus::Passed;
    }
    if (state.GetPlan().cases[caseIndex].isQuarantined)
    {
        return EJunitStatus::Skipped;
    }
    return LuTestSuiteReport::getReportResult(reported->result.info.result) == LuTestSuiteReport::eRR_Failure
               ? EJunitStatus::Failure
               : EJunitStatus::Error;
}

std::wstring getMessage(const CRunState& state, const SOpenCases& open, std::uint32_t caseIndex)
{
    constexpr std::size_t c_Longest = 300;
    const SAttempt* const reported = state.GetReported(caseIndex);
    if (reported == nullptr)
    {
        return open.interrupted.contains(caseIndex) ? c_Interrupted
               : open.Contains(caseIndex)           ? L"Begonnen, noch nicht beendet"
                                                    : L"Nicht ausgeführt";
    }
    if (const std::optional<std::wstring> reason = FindSkipReason(state, caseIndex))
    {
        return reason->empty() ? L"Übersprungen" : reason->substr(0, c_Longest);
    }
    const bool isQuarantined = state.GetPlan().cases[caseIndex].isQuarantined;
    return (isQuarantined ? L"In Quarantäne: " : L"") + GetFailureLine(*reported).substr(0, c_Longest);
}

/// Encloses the text in the element that the status requires.
void enclose(const std::string& message, std::string_view type, SJunitCase& element)
{
    const std::string attribute = " message=\"" + message + "\"";
    switch (element.status)
    {
    case EJunitStatus::Passed:
        element.start += element.text.empty() ? "/>\n" : ">\n\t\t\t<system-out>";
        element.end = element.text.empty() ? "" : "</system-out>\n\t\t</testcase>\n";
        break;
    case EJunitStatus::Skipped:
        element.start += ">\n\t\t\t<skipped" + attribute + "/>\n";
        element.start += element.text.empty() ? "" : "\t\t\t<system-out>";
        element.end = element.text.empty() ? "" : "</system-out>\n";
        element.end += "\t\t</testcase>\n";
        break;
    default:
        const std::string name = element.status == EJunitStatus::Failure ? "failure" : "error";
        element.start += ">\n\t\t\t<" + name + attribute + " type=\"" + std::string(type) + "\">";
        element.end = "</" + name + ">\n\t\t</testcase>\n";
        break;
    }
}

} // namespace

SJunitCase MakeJunitCase(const CRunState& state, const SOpenCases& open, std::uint32_t caseIndex,
                         std::wstring_view suiteName)
{
    const SPlan& plan = state.GetPlan();
    const SPlannedCase& planned = plan.cases[caseIndex];
    const LuTestSuite::STestCase& testCase = plan.unitTests[planned.unitTest].cases[planned.testCase];
    const SAttempt* const reported = state.GetReported(caseIndex);
    SJunitCase element;
    element.status = getStatus(state, open, caseIndex);
    element.time = reported == nullptr ? 0 : reported->result.info.time;
    element.start = makeStart(GetRunName(testCase.name, planned.repetition), suiteName,
                              getShownPath(plan, testCase.dataSetFile), element.time);
    // A case that simply passed has no text; otherwise green reports would contain everything that tests print.
    if (element.status != EJunitStatus::Passed || state.GetVerdict(caseIndex) != EVerdict::Passed ||
        planned.isQuarantined)
    {
        element.text = makeText(state, open, caseIndex);
    }
    const std::string_view type = reported != nullptr                    ? GetName(reported->result.info.result)
                                  : open.interrupted.contains(caseIndex) ? "interrupted"
                                                                         : "missing";
    enclose(ToXmlAttribute(getMessage(state, open, caseIndex)), type, element);
    return element;
}

SJunitCase MakeJunitCase(const SPlan& plan, const SDisabledCase& disabled, std::wstring_view suiteName)
{
    SJunitCase element;
    element.status = EJunitStatus::Skipped;
    element.start = makeStart(disabled.name, suiteName, getShownPath(plan, disabled.dataSetFile), 0);
    enclose(ToXmlAttribute(L"Deaktiviert"), {}, element);
    return element;
}

SJunitCase MakeJunitProblem(std::wstring_view name, std::wstring_view problem, std::wstring_view suiteName,
                            std::wstring_view details)
{
    SJunitCase element;
    element.status = EJunitStatus::Error;
    element.start = makeStart(name, suiteName, {}, 0);
    element.text = ToXmlText(details.empty() ? problem : details);
    enclose(ToXmlAttribute(problem), "run", element);
    return element;
}

} // namespace Runner
