/// A program that tests start. Its first argument selects what it does with the others.
///
///     arguments FILE ...       writes its arguments, one per line, and its working directory into the file
///     exit STATUS              ends with the status
///     print TEXT               prints the text
///     sleep                    ends after a minute
///     answer NAME              answers the event "NAME-q" with "NAME-a" for a minute, or until "NAME-e" is set
///     disguise NAME            like answer, but with the name of the processes that watch over others
///     parent NAME              starts "answer NAME", sets "NAME-r", ends after a minute
///     starter NAME             like parent, but ends at once
///     daemon NAME              like starter, but its child starts its own session, if the system has sessions
///     settled NAME             sets "NAME-d", then answers
///     orderly NAME             like daemon, but ends its descendants before it ends
///     runaway NAME             like parent, but its child starts its own session, if the system has sessions
///     disguised NAME           like runaway, and its child is disguised
///     headless NAME            starts "survivor NAME", ends after a minute
///     survivor NAME            starts "answer NAME", sets "NAME-r", runs for a minute without its first thread
///     holder NAME              creates the event "NAME-h", sets "NAME-r", ends after a minute
///     outsider NAME            moves to its parent's process group, if the system has groups, sets "NAME-r", then
///                              answers
///     owner NAME COMMAND       starts "COMMAND NAME", which must end with it, ends after a minute
///     crowd NAME               starts many "disguised NAME", which must end with it, sets "NAME-l", ends after a
///                              minute
///     neglected NAME           like "owner NAME parent", but first kills the process that watches over it
///     leaver NAME COMMAND      like owner, but ends abruptly when "NAME-l" is set
///     brought NAME             sets "NAME-r", waits for "NAME-q", ends with the number of processors it may use
///     freed NAME               like brought, but first removes the processor binding that others have set
///     crash HOW                crashes in that way, without delay and without output
///     dump HOW                 crashes with the system's default behaviour, if that writes dumps; else exits with 0
///     silence HOW              like dump, but first switches dumps and dialogs off
///     input                    exits with 0 if standard input is empty, otherwise with 1
///     feeder                   starts "input", exits with its status

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "base/lbcommandline.h"
#include "base/lbencoding.h"
#include "base/lbpath.h"
#include "base/lustream.h"
#include "base/os/childprocess.h"
#include "base/os/console.h"
#include "base/os/crash.h"
#include "base/os/namedevent.h"
#include "base/os/process.h"
#include "base/os/processors.h"
#include "tests/support/os/testaids.h"

namespace
{

using Arguments = std::vector<std::wstring>;

constexpr int c_Minute = 60;
constexpr std::uint32_t c_Second = 1000;

int writeArguments(const Arguments& arguments)
{
    std::string text;
    for (const std::wstring& argument : arguments)
    {
        text += LbEncoding::ToUtf8(argument) + "\n";
    }
    text += LbEncoding::ToUtf8(LbOs::GetWorkingDirectory()) + "\n";
    LuStreamWriteBinaryFile file(arguments.at(2));
    file.Write(text.data(), text.size());
    file.Close();
    return 0;
}

int sleepLong()
{
    std::this_thread::sleep_for(std::chrono::seconds(c_Minute));
    return 0;
}

int answer(const std::wstring& name)
{
    const auto question = LbOs::CNamedEvent::Open(name + L"-q");
    const auto reply = LbOs::CNamedEvent::Open(name + L"-a");
    const auto enough = LbOs::CNamedEvent::Open(name + L"-e");
    // Limits the time and not the number of questions, because a test that waits for the end of the probe asks often.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(c_Minute);
    while (question && reply && std::chrono::steady_clock::now() < end)
    {
        if (question->Wait(c_Second) != LbOs::EEventWait::Signaled)
        {
            continue;
        }
        if (enough && enough->Reset())
        {
            return 0;
        }
        reply->Set();
    }
    return 1;
}

int answerInDisguise(const std::wstring& name)
{
    LbOs::SetCurrentThreadName(L"LuKeeper");
    return answer(name);
}

bool setReady(const std::wstring& name)
{
    const auto ready = LbOs::CNamedEvent::Open(name + L"-r");
    return ready && ready->Set();
}

/// Starts a process as any program would, without waiting for it.
bool startAside(const std::wstring& name, bool isRunaway, const std::wstring& started)
{
    const std::wstring command = LbCommandLine::Quote(LbOs::GetExecutablePath()) + L" " + started + L" " + name;
    const std::wstring inBackground =
        LbPath::c_Separator == L'\\' ? L"start \"\" /b " + command : (isRunaway ? L"setsid " : L"") + command + L" &";
    return std::system(LbEncoding::ToUtf8(inBackground).c_str()) == 0;
}

/// Starts a process that answers, and then sets "NAME-r". If `stays`, sleeps for a minute afterwards.
int beParent(const std::wstring& name, bool stays, bool isRunaway, const std::wstring& started = L"answer")
{
    if (!startAside(name, isRunaway, started) || !setReady(name))
    {
        return 1;
    }
    return stays ? sleepLong() : 0;
}

/// Starts a daemon and returns when it has its own session.
int startDaemon(const std::wstring& name)
{
    const auto settled = LbOs::CNamedEvent::Create(name + L"-d");
    const bool isSettled = settled && startAside(name, true, L"settled") &&
                           settled->Wait(c_Minute * c_Second) == LbOs::EEventWait::Signaled;
    return isSettled && setReady(name) ? 0 : 1;
}

int settle(const std::wstring& name)
{
    const auto settled = LbOs::CNamedEvent::Open(name + L"-d");
    return settled && settled->Set() ? answer(name) : 1;
}

int beOutsider(const std::wstring& name)
{
    LbOs::JoinGroupOfParent();
    return setReady(name) ? answer(name) : 1;
}

int beOrderly(const std::wstring& name)
{
    const int status = startDaemon(name);
    LbOs::EndDescendants();
    return status;
}

LbOs::SChildOptions getOptions(const std::wstring& arguments)
{
    LbOs::SChildOptions options;
    options.program = LbOs::GetExecutablePath();
    options.commandLine = L"probe " + arguments;
    return options;
}

/// Starts a child that must end with this process. With `leaves`, this process ends abruptly when "NAME-l" is set.
int beOwner(const std::wstring& name, const std::wstring& command, bool leaves)
{
    const auto child = LbOs::CChildProcess::Start(getOptions(command + L" " + LbCommandLine::Quote(name)));
    const auto leave = LbOs::CNamedEvent::Open(name + L"-l");
    if (child && leaves && leave->Wait(c_Minute * c_Second) == LbOs::EEventWait::Signaled)
    {
        constexpr int c_Left = 3;
        std::_Exit(c_Left);
    }
    return child ? sleepLong() : 1;
}

int beCrowd(const std::wstring& name)
{
    constexpr std::size_t c_Children = 32;
    const auto ready = LbOs::CNamedEvent::Open(name + L"-r");
    const auto areStarted = LbOs::CNamedEvent::Open(name + L"-l");
    std::vector<std::unique_ptr<LbOs::CChildProcess>> children;
    while (children.size() < c_Children)
    {
        children.push_back(LbOs::CChildProcess::Start(getOptions(L"disguised " + name)));
        if (!children.back() || ready->Wait(c_Minute * c_Second, children.back().get()) != LbOs::EEventWait::Signaled)
        {
            return 1;
        }
    }
    areStarted->Set();
    return sleepLong();
}

int beNeglected(const std::wstring& name)
{
    const auto first = LbOs::CChildProcess::Start(getOptions(L"exit 0"));
    LbOs::EndKeeper();
    return first ? beOwner(name, L"parent", false) : 1;
}

/// Starts a direct child that may outlive this process.
std::unique_ptr<LbOs::CChildProcess> startFree(const std::wstring& arguments)
{
    LbOs::SChildOptions options = getOptions(arguments);
    options.endsWithOwner = false;
    return LbOs::CChildProcess::Start(options);
}

int beHeadless(const std::wstring& name)
{
    const auto child = startFree(L"survivor " + name);
    return child ? sleepLong() : 1;
}

int survive(const std::wstring& name)
{
    const auto child = startFree(L"answer " + name);
    std::thread([name, first = LbOs::GetOwnThreadId()] {
        while (!LbOs::HasThreadEnded(first))
        {
            std::this_thread::yield();
        }
        std::_Exit(setReady(name) ? sleepLong() : 1);
    }).detach();
    LbOs::LeaveThread();
}

int hold(const std::wstring& name)
{
    const auto held = LbOs::CNamedEvent::Create(name + L"-h");
    return held && setReady(name) ? sleepLong() : 1;
}

int countProcessors(const std::wstring& name, bool isFreed)
{
    const auto ready = LbOs::CNamedEvent::Open(name + L"-r");
    const auto question = LbOs::CNamedEvent::Open(name + L"-q");
    LbOs::CThreadProcessors processors;
    processors.Read();
    if (!ready || !question || !ready->Set() || question->Wait(c_Minute * c_Second) != LbOs::EEventWait::Signaled)
    {
        return 0;
    }
    if (isFreed)
    {
        processors.Restore();
    }
    return static_cast<int>(LbOs::CountOwnProcessors());
}

int feed()
{
    const auto child = LbOs::CChildProcess::Start(getOptions(L"input"));
    return child && child->Wait() ? static_cast<int>(child->GetExitStatus().value_or(2)) : 2;
}

// Volatile, so that the compiler does not recognise the crash.
volatile int s_zero = 0;
int* volatile s_nothing = nullptr;

int overflowStack(int depth)
{
    volatile char used[4096];
    used[0] = static_cast<char>(depth);
    return s_zero == 0 ? overflowStack(depth + 1) + used[0] : depth;
}

int crash(const std::wstring& how)
{
    if (how == L"access")
    {
        *s_nothing = 1;
    }
    if (how == L"stack")
    {
        return overflowStack(0);
    }
    if (how == L"division")
    {
        return 100 / s_zero;
    }
    if (how == L"exception")
    {
        LbOs::RaiseOwnException();
    }
    if (how == L"terminate")
    {
        std::terminate();
    }
    std::abort();
}

int crashInSilence(const std::wstring& how)
{
    LbOs::EndSilentlyOnCrash();
    return crash(how);
}

int run(const Arguments& arguments)
{
    using Command = int (*)(const std::wstring&);
    static const std::map<std::wstring, Command> c_Commands = {
        {L"exit", [](const std::wstring& status) { return std::stoi(status); }},
        {L"print",
         [](const std::wstring& text) {
             LbOs::WriteStandardOutput(LbEncoding::ToUtf8(text));
             return 0;
         }},
        {L"sleep", [](const std::wstring&) { return sleepLong(); }},
        {L"answer", &answer},
        {L"disguise", &answerInDisguise},
        {L"parent", [](const std::wstring& name) { return beParent(name, true, false); }},
        {L"starter", [](const std::wstring& name) { return beParent(name, false, false); }},
        {L"daemon", &startDaemon},
        {L"settled", &settle},
        {L"orderly", &beOrderly},
        {L"runaway", [](const std::wstring& name) { return beParent(name, true, true); }},
        {L"disguised", [](const std::wstring& name) { return beParent(name, true, true, L"disguise"); }},
        {L"crowd", &beCrowd},
        {L"neglected", &beNeglected},
        {L"headless", &beHeadless},
        {L"survivor", &survive},
        {L"holder", &hold},
        {L"outsider", &beOutsider},
        {L"brought", [](const std::wstring& name) { return countProcessors(name, false); }},
        {L"freed", [](const std::wstring& name) { return countProcessors(name, true); }},
        {L"crash", &crashInSilence},
        {L"dump", [](const std::wstring& how) { return LbOs::AllowDumps() ? crash(how) : 0; }},
        {L"silence", [](const std::wstring& how) { return LbOs::AllowDumps() ? crashInSilence(how) : 0; }},
        {L"input", [](const std::wstring&) { return std::getchar() == EOF ? 0 : 1; }},
        {L"feeder", [](const std::wstring&) { return feed(); }},
    };
    const std::wstring& command = arguments.at(1);
    if (command == L"arguments")
    {
        return writeArguments(arguments);
    }
    if (command == L"owner" || command == L"leaver")
    {
        return beOwner(arguments.at(2), arguments.at(3), command == L"leaver");
    }
    return c_Commands.at(command)(arguments.size() > 2 ? arguments[2] : std::wstring());
}

} // namespace

int main(int count, char** arguments)
{
    return run(LbOs::GetArguments(count, arguments));
}
