#include "testing/lutestsuite/run/caserunner.h"

#include <algorithm>
#include <string>
#include <utility>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/lbrtti.h"
#include "base/subtesthints.h"
#include "testing/lutestsuite/run/executor.h"

namespace LuTestSuiteRun
{

bool WriteRequest(SWorkBuffer& buffer, const LuTestSuite::SUnitTest& unitTest, const LuTestSuite::STestCase& testCase,
                  const SParams& params)
{
    if (!StoreName(buffer.className, unitTest.className) || !StoreName(buffer.caseName, testCase.name) ||
        !StoreName(buffer.dataDirectory, unitTest.dataDirectory))
    {
        buffer.result = static_cast<std::uint32_t>(ECaseRunResult::NoMatchingCase);
        return false;
    }
    buffer.params = params;
    StoreLikelySubtest(buffer, std::nullopt);
    buffer.result = static_cast<std::uint32_t>(ECaseRunResult::Unknown);
    buffer.memoryGrowth = buffer.allocations = buffer.peakMemory = buffer.time = 0;
    buffer.messageLength = 0;
    buffer.messages[0] = u'\0';
    return true;
}

namespace
{

static_assert(LuTestSuite::CUnderWay::sc_uiCapacity == c_NameCapacity);

void readAnswer(const SWorkBuffer& buffer, SCaseInfo& info)
{
    info.result = LoadResult(buffer);
    info.memoryGrowth = buffer.memoryGrowth;
    info.allocations = buffer.allocations;
    info.peakMemory = buffer.peakMemory;
    info.time = buffer.time;
    info.messages = LoadMessages(buffer);
}

/// Appends lines to the messages. First ends the last message line, because a crash may have cut it off.
void appendLines(const std::wstring& lines, std::wstring& messages)
{
    messages += lines.empty() || messages.empty() || messages.ends_with(L'\n') ? L"" : L"\n";
    messages += lines;
}

/// The message lines for a case that WriteRequest has refused.
std::wstring describeRefusal(const LuTestSuite::SUnitTest& unitTest, const LuTestSuite::STestCase& testCase)
{
    const std::pair<const wchar_t*, const std::wstring*> names[] = {{L"Der Klassenname", &unitTest.className},
                                                                    {L"Der Name des Testfalls", &testCase.name},
                                                                    {L"Das Datenverzeichnis", &unitTest.dataDirectory}};
    std::wstring text;
    for (const auto& [kind, name] : names)
    {
        if (const std::size_t length = LbEncoding::ToUtf16(*name).size(); length >= c_NameCapacity)
        {
            text += LbFormat(L"\t\tERROR: %s ist zu lang: %u Zeichen, höchstens %u sind möglich\n", kind, length,
                             c_NameCapacity - 1);
        }
    }
    return text;
}

/// Tells whether the child processes certainly need the listing of the case's folder. Objects of a class that overrides
/// neither the list nor the running of sub-tests look up only the file of their case, and read the whole folder only if
/// the class asks for it. One read of the folder per process is cheap if a process runs many cases, but not if it runs
/// one.
EListingUse getListingUse(const SPlannedCase& planned)
{
    const LbRTTI* const type = LbRTTI::Find(planned.unitTest.className);
    const bool isPlain = type != nullptr && type->GetFacts().hasPlainList && type->GetFacts().hasPlainRun;
    return isPlain && !planned.params.isolated ? EListingUse::Possible : EListingUse::Certain;
}

/// The index where discovery found the sub-test of the case; empty if the class uses the list of LuUnitTest or is
/// unknown.
std::optional<std::uint32_t> findLikelySubtest(const SPlannedCase& planned)
{
    const LbRTTI* const type = LbRTTI::Find(planned.unitTest.className);
    const LbClassFacts facts = type == nullptr ? LbClassFacts() : type->GetFacts();
    return facts.type == nullptr || facts.hasPlainList
               ? std::nullopt
               : LbSubtestHints::Find(*facts.type, planned.unitTest.dataDirectory, planned.testCase.name);
}

void refuse(const SPlannedCase& planned, SCaseEnd& end)
{
    end.kind = ECaseEnd::Refused;
    planned.info.messages = describeRefusal(planned.unitTest, planned.testCase);
}

/// Counts the isolated cases among the next GetMost() cases; more spare children are never started.
std::size_t countIsolated(PlannedCases toCome)
{
    const PlannedCases next = toCome.first(std::min(toCome.size(), CSpareChildren::GetMost()));
    return static_cast<std::size_t>(std::ranges::count_if(
        next, [](const SPlannedCase& planned) { return planned.params.external && planned.params.isolated; }));
}

} // namespace

bool CCaseRunner::MakeReadyFor(const SPlannedCase& planned)
{
    return !planned.params.external || m_external.MakeReady(planned.params.isolated);
}

/// The id of the process that runs the case; 0 if there is none.
std::uint64_t CCaseRunner::findProcess(const SPlannedCase& planned)
{
    if (!planned.params.external)
    {
        return m_ownProcessId;
    }
    try
    {
        m_external.MakeReady(planned.params.isolated);
    }
    catch (const LbException&)
    {
        // Ignores the exception here: the case requests its child again and then reports the error.
    }
    return m_external.GetProcessId();
}

void CCaseRunner::Run(const SPlannedCase& planned, const ToCome& toCome)
{
    m_events.Start(planned, findProcess(planned));
    SCaseEnd end;
    execute(planned, toCome, end);
    m_events.Finish(planned, end);
}

void CCaseRunner::execute(const SPlannedCase& planned, const ToCome& toCome, SCaseEnd& end)
{
    if (m_events.IsCanceled())
    {
        end.kind = ECaseEnd::Canceled;
        return;
    }
    if (planned.params.external)
    {
        runInChild(planned, toCome, end);
    }
    else
    {
        runHere(planned, end);
    }
    SCaseInfo& info = planned.info;
    info.warning = planned.params.reportMemLeak && static_cast<std::int64_t>(info.memoryGrowth) > 0;
}

void CCaseRunner::runHere(const SPlannedCase& planned, SCaseEnd& end)
{
    if (!m_buffer)
    {
        m_buffer.emplace();
        m_crashThread.emplace();
    }
    {
        const CWorkBufferWriteView buffer = m_buffer->GetWriteAccess();
        if (!WriteRequest(*buffer, planned.unitTest, planned.testCase, planned.params))
        {
            refuse(planned, end);
            return;
        }
        const LuTestSuite::CUnderWay underWay(*m_crashThread, LuTestSuite::EActivity::RunCase, buffer->className,
                                              buffer->caseName);
        ExecuteInBuffer(*buffer);
    }
    end.processId = m_ownProcessId;
    readAnswer(*m_buffer->GetReadAccess(), planned.info);
}

void CCaseRunner::shareListing(const SPlannedCase& planned)
{
    const LuTestSuite::SUnitTest& unitTest = planned.unitTest;
    CSharedListings* const listings = m_spares.GetSettings().listings;
    const LuTestSuite::SUnitTest*& sharedFor = planned.params.isolated ? m_sharedForIsolated : m_sharedForOthers;
    if (listings != nullptr && sharedFor != &unitTest &&
        listings->Share(unitTest.dataDirectory, getListingUse(planned)))
    {
        sharedFor = &unitTest;
    }
}

void CCaseRunner::runInChild(const SPlannedCase& planned, const ToCome& toCome, SCaseEnd& end)
{
    const SParams& params = planned.params;
    shareListing(planned);
    CChildChannel& channel = m_external.Obtain(params.isolated);
    {
        const CWorkBufferWriteView buffer = channel.GetBuffer().GetWriteAccess();
        if (!WriteRequest(*buffer, planned.unitTest, planned.testCase, params))
        {
            refuse(planned, end);
            return;
        }
        StoreLikelySubtest(*buffer, findLikelySubtest(planned));
    }
    channel.Submit();
    if (params.isolated)
    {
        m_spares.Start([&toCome] { return countIsolated(toCome()); });
    }
    planned.info.processIndex = channel.WaitForAnswer(params.timeOutSec, m_isCanceled);
    end = channel.GetEnd();
    readAnswer(*channel.GetBuffer().GetReadAccess(), planned.info);
    appendLines(DescribeCaseEnd(end), planned.info.messages);
}

} // namespace LuTestSuiteRun
