/// The child process of external cases: executes cases for a parent run.

#include <cstdio>
#include <cstdlib>

#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/ludebugserialization.h"
#include "base/os/childprocess.h"
#include "base/os/crash.h"
#include "base/os/forkmark.h"
#include "base/os/namedevent.h"
#include "base/os/process.h"
#include "base/os/processors.h"
#include "base/os/signalstate.h"
#include "testing/lutestsuite/environment/crashnotes.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/run/children/briefwatch.h"
#include "testing/lutestsuite/run/children/childchannel.h"
#include "testing/lutestsuite/run/children/sharedworkbuffer.h"
#include "testing/lutestsuite/run/debugfolders.h"
#include "testing/lutestsuite/run/executor.h"
#include "testing/lutestsuite/run/preparation.h"

namespace LuTestSuiteRun
{

namespace
{

constexpr const wchar_t* c_Operation = L"LuTestSuiteRun::RunExternalExecution";

std::unique_ptr<LbOs::CNamedEvent> openEvent(const std::wstring& name)
{
    std::unique_ptr<LbOs::CNamedEvent> event = LbOs::CNamedEvent::Open(name);
    if (!event)
    {
        throw LbException(c_Operation, LbFormat(L"Das Ereignis '%s' kann nicht geöffnet werden", name));
    }
    return event;
}

void executeCase(SWorkBuffer& buffer, LuTestSuite::CCrashThread& thread)
{
    const LuTestSuite::CUnderWay underWay(thread, LuTestSuite::EActivity::RunCase, buffer.className, buffer.caseName);
    ExecuteInBuffer(buffer);
}

void answer(SWorkBuffer& buffer, LbOs::CNamedEvent& response)
{
    AnswerRequest(buffer);
    if (!response.Set())
    {
        throw LbException(c_Operation, L"Die Antwort kann nicht gemeldet werden");
    }
}

/// True if enough memory is free for another case to start.
bool hasMemory()
{
    constexpr std::size_t c_Enough = std::size_t{1} << 20U;
    // Volatile, so that the compiler keeps the unused allocation.
    void* volatile const memory = std::malloc(c_Enough);
    std::free(memory);
    return memory != nullptr;
}

/// Registers an exit handler that ends the processes that cases have started. Exit handlers of test modules run before
/// it, because the modules register them later.
void endDescendantsAtExit()
{
    static const std::uint64_t s_mark = LbOs::GetForkMark();
    std::atexit([] {
        // A process that a case has forked inherits this handler, but must not end other processes.
        if (LbOs::GetForkMark() == s_mark)
        {
            LbOs::EndDescendants();
        }
    });
}

void prepareProcess()
{
    // Under Wine, stderr has a buffer; after a crash, its content would be lost or be attributed to a later case.
    std::setvbuf(stderr, nullptr, _IONBF, 0);
    endDescendantsAtExit();
    LbOs::EndSilentlyOnCrash();
}

/// Ends this process immediately, because an orderly exit may need memory. The parent starts another child for later
/// cases.
[[noreturn]] void endWithoutMemory()
{
    LbOs::EndDescendants();
    LbOs::EndProcess(EXIT_SUCCESS);
}

} // namespace

void RunExternalExecution(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment)
{
    if (setup.memoryId.empty() || setup.requestEventId.empty() || setup.responseEventId.empty())
    {
        throw LbException(c_Operation, L"Namen gemeinsamer Objekte fehlen");
    }
    const auto request = openEvent(setup.requestEventId);
    const auto response = openEvent(setup.responseEventId);
    CSharedMemoryWorkBuffer buffer(setup.memoryId, CSharedMemoryWorkBuffer::eO_Open);
    prepareProcess();
    CCrashReporter reporter(setup.memoryId, *response);
    const LuTestSuite::CCrashNotes notes(&reporter);
    LuTestSuite::CCrashThread thread;
    const CPreparation preparation(setup, environment);
    const CDebugFolders debugFolders;
    LbOs::RecordSignals();
    LbOs::CThreadProcessors processors;
    CBriefWatch watch;
    const auto isRequested = [&buffer] { return HasRequest(*buffer.GetWriteAccess()); };
    // If the parent signals during Watch, the event stays set, so the next Wait returns at once although there is no
    // new request.
    while (watch.Watch(isRequested) || request->Wait(c_LongestIdleMilliseconds) == LbOs::EEventWait::Signaled)
    {
        const CWorkBufferWriteView view = buffer.GetWriteAccess();
        if (!TakeRequest(*view))
        {
            // There is no request: a test has set the event, or Watch has already seen the request of this signal.
            continue;
        }
        if (IsLeaveRequest(*view))
        {
            return;
        }
        // The parent may have bound this thread to the parent's processor. Restores the previous processors for the
        // case.
        processors.Restore();
        LuDebugSerializationGeneric::SetDefaultOutputDirectory(debugFolders.GetFolder(LoadName(view->caseName)));
        executeCase(*view, thread);
        processors.Read();
        answer(*view, *response);
        if (!hasMemory())
        {
            endWithoutMemory();
        }
    }
}

} // namespace LuTestSuiteRun
