/// A program that tests start: it does what its first argument says, with what the others give.
///
///     arguments FILE ...       writes its arguments into the file, one in a line, and its working directory
///     exit STATUS              ends
///     print TEXT               prints
///     sleep                    ends after a minute
///     answer NAME              answers the event "NAME-q" with "NAME-a" for a minute
///     parent NAME              starts "answer NAME", sets "NAME-r", ends after a minute
///     starter NAME             as parent, but ends at once
///     runaway NAME             as parent, but what it starts leaves for a session of its own, where there are any
///     outsider NAME            goes over to its parent's process group, where there are any, sets "NAME-r", then
///                              answers
///     owner NAME COMMAND       starts "COMMAND NAME", which is to end with it, ends after a minute
///     leaver NAME COMMAND      as owner, but ends without a word when "NAME-l" is set
///     brought NAME             sets "NAME-r", waits for "NAME-q", ends with the number of processors that it may use
///     freed NAME               as brought, but frees itself from what others have chosen meanwhile
///     input                    ends with 0 when there is nothing to be read, else with 1
///     feeder                   starts "input", ends with its status

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "base/lbcommandline.h"
#include "base/lbencoding.h"
#include "base/lbpath.h"
#include "base/lustream.h"
#include "base/os/childprocess.h"
#include "base/os/console.h"
#include "base/os/namedevent.h"
#include "base/os/process.h"
#include "base/os/processors.h"
#include "base/os/testaids.h"

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
    // By the clock: whoever asks until there is no answer asks often.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(c_Minute);
    while (question && reply && std::chrono::steady_clock::now() < end)
    {
        if (question->Wait(c_Second) == LbOs::EEventWait::Signaled)
        {
            reply->Set();
        }
    }
    return 1;
}

/// Starts a process that answers, as any program would, and tells who has asked for it.
int beParent(const std::wstring& name, bool stays, bool isRunaway)
{
    const std::wstring command = LbCommandLine::Quote(LbOs::GetExecutablePath()) + L" answer " + name;
    const std::wstring inBackground =
        LbPath::c_Separator == L'\\' ? L"start \"\" /b " + command : (isRunaway ? L"setsid " : L"") + command + L" &";
    const auto ready = LbOs::CNamedEvent::Open(name + L"-r");
    const bool isStarted = std::system(LbEncoding::ToUtf8(inBackground).c_str()) == 0;
    if (!isStarted || !ready || !ready->Set())
    {
        return 1;
    }
    return stays ? sleepLong() : 0;
}

int beOutsider(const std::wstring& name)
{
    LbOs::JoinGroupOfParent();
    const auto ready = LbOs::CNamedEvent::Open(name + L"-r");
    return ready && ready->Set() ? answer(name) : 1;
}

LbOs::SChildOptions getOptions(const std::wstring& arguments)
{
    LbOs::SChildOptions options;
    options.program = LbOs::GetExecutablePath();
    options.commandLine = L"probe " + arguments;
    return options;
}

/// Starts such a parent, which is to end with it. With `leaves` it is gone, as if it had been killed, when "NAME-l" is
/// set.
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

int run(const Arguments& arguments)
{
    const std::wstring& command = arguments.at(1);
    if (command == L"arguments")
    {
        return writeArguments(arguments);
    }
    if (command == L"exit")
    {
        return std::stoi(arguments.at(2));
    }
    if (command == L"print")
    {
        LbOs::WriteStandardOutput(LbEncoding::ToUtf8(arguments.at(2)));
        return 0;
    }
    if (command == L"answer")
    {
        return answer(arguments.at(2));
    }
    if (command == L"parent" || command == L"starter" || command == L"runaway")
    {
        return beParent(arguments.at(2), command != L"starter", command == L"runaway");
    }
    if (command == L"outsider")
    {
        return beOutsider(arguments.at(2));
    }
    if (command == L"owner" || command == L"leaver")
    {
        return beOwner(arguments.at(2), arguments.at(3), command == L"leaver");
    }
    if (command == L"brought" || command == L"freed")
    {
        return countProcessors(arguments.at(2), command == L"freed");
    }
    if (command == L"input")
    {
        return std::getchar() == EOF ? 0 : 1;
    }
    return command == L"feeder" ? feed() : sleepLong();
}

} // namespace

int main(int count, char** arguments)
{
    return run(LbOs::GetArguments(count, arguments));
}
