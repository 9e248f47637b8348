#include "base/os/process.h"

#include <algorithm>
#include <climits>
#include <csignal>
#include <cstdlib>

#include <pthread.h>
#include <syslog.h>
#include <unistd.h>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/os/carriedcall.h"
#include "base/os/console.h"

namespace
{

void* runCall(void* argument)
{
    static_cast<LbOs::CCarriedCall*>(argument)->Run();
    return nullptr;
}

/// The system requires whole pages, and a minimum for its own needs.
std::size_t toStackSize(std::size_t wanted)
{
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t smallest = std::max(wanted, static_cast<std::size_t>(PTHREAD_STACK_MIN));
    return (smallest + page - 1) / page * page;
}

} // namespace

std::vector<std::wstring> LbOs::GetArguments(int count, const char* const* arguments)
{
    std::vector<std::wstring> result;
    for (int index = 0; index < count; ++index)
    {
        result.push_back(LbEncoding::FromNative(arguments[index]));
    }
    return result;
}

void LbOs::RunOnStack(std::size_t stackSize, const std::function<void()>& function)
{
    CCarriedCall call(function);
    pthread_attr_t attributes;
    pthread_t thread = {};
    pthread_attr_init(&attributes);
    // The run-time maps the stack, so the system gives memory only as it grows.
    const bool isStarted = pthread_attr_setstacksize(&attributes, toStackSize(stackSize)) == 0 &&
                           pthread_create(&thread, &attributes, &runCall, &call) == 0;
    pthread_attr_destroy(&attributes);
    if (!isStarted)
    {
        throw LbException(L"Ein Thread konnte nicht gestartet werden");
    }
    pthread_join(thread, nullptr);
    call.Rethrow();
}

void LbOs::SetCurrentThreadName(const std::wstring& name)
{
    constexpr std::size_t c_LongestName = 15;
    std::string bytes = LbEncoding::ToNative(name);
    if (bytes.size() > c_LongestName)
    {
        std::size_t length = c_LongestName;
        while (length > 0 && (static_cast<unsigned char>(bytes[length]) & 0xC0U) == 0x80U)
        {
            --length;
        }
        bytes.resize(length);
    }
    pthread_setname_np(pthread_self(), bytes.c_str());
}

void LbOs::TraceToSystem(const std::wstring& text)
{
    syslog(LOG_USER | LOG_DEBUG, "%s", LbEncoding::ToUtf8(text).c_str());
}

LbOs::EAssertAnswer LbOs::ShowAssertDialog(const std::wstring& text)
{
    WriteStandardError(LbEncoding::ToUtf8(text) + "\n");
    return EAssertAnswer::Ignore;
}

void LbOs::BreakIntoDebugger()
{
    raise(SIGTRAP);
}

void LbOs::CallAroundForks(const SForkHandlers& handlers)
{
    pthread_atfork(handlers.before, handlers.afterInParent, handlers.afterInChild);
}

unsigned long LbOs::GetProcessId()
{
    return static_cast<unsigned long>(getpid());
}

void LbOs::CallAtQuickExit(void (*function)())
{
    std::at_quick_exit(function);
}

void LbOs::EndProcess(int status)
{
    _exit(status);
}
