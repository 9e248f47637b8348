/// The other end of external cases: a process that serves a parent run.

#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/os/crash.h"
#include "base/os/namedevent.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/run/executor.h"
#include "testing/lutestsuite/run/preparation.h"
#include "testing/lutestsuite/run/sharedworkbuffer.h"

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

} // namespace

void RunExternalExecution(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment)
{
    constexpr std::uint32_t c_LongestIdleMilliseconds = 5000;
    if (setup.memoryId.empty() || setup.requestEventId.empty() || setup.responseEventId.empty())
    {
        throw LbException(c_Operation, L"Namen gemeinsamer Objekte fehlen");
    }
    const auto request = openEvent(setup.requestEventId);
    const auto response = openEvent(setup.responseEventId);
    CSharedMemoryWorkBuffer buffer(setup.memoryId, CSharedMemoryWorkBuffer::eO_Open);
    LbOs::EndSilentlyOnCrash();
    const CPreparation preparation(setup, environment);
    while (request->Wait(c_LongestIdleMilliseconds) == LbOs::EEventWait::Signaled)
    {
        ExecuteInBuffer(*buffer.GetWriteAccess());
        if (!response->Set())
        {
            throw LbException(c_Operation, L"Die Antwort kann nicht gemeldet werden");
        }
    }
}

} // namespace LuTestSuiteRun
