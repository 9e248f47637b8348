/// A program that tests start: it does what its first argument says, with what the others give.
///
///     arguments FILE ...       writes its arguments into the file, one in a line, and its working directory
///     exit STATUS              ends
///     print TEXT               prints
///     sleep                    ends after a minute
///     answer NAME              answers the event "NAME-q" with "NAME-a" for a minute
///     parent NAME              starts "answer NAME", sets "NAME-r", ends after a minute
///     starter NAME             the same, but ends at once
///     leaver NAME              as owner, but ends without a word when "NAME-l" is set
///     owner NAME               starts "parent NAME", which is to end with it, ends after a minute

#include <chrono>
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
    for (int second = 0; question && reply && second < c_Minute; ++second)
    {
        if (question->Wait(c_Second) == LbOs::EEventWait::Signaled)
        {
            reply->Set();
        }
    }
    return 1;
}

/// Starts a process that answers, as any program would, and tells who has asked for it.
int beParent(const std::wstring& name, bool stays)
{
    const std::wstring command = LbCommandLine::Quote(LbOs::GetExecutablePath()) + L" answer " + name;
    const std::wstring inBackground = LbPath::c_Separator == L'\\' ? L"start \"\" /b " + command : command + L" &";
    const auto ready = LbOs::CNamedEvent::Open(name + L"-r");
    const bool isStarted = std::system(LbEncoding::ToUtf8(inBackground).c_str()) == 0;
    if (!isStarted || !ready || !ready->Set())
    {
        return 1;
    }
    return stays ? sleepLong() : 0;
}

/// Starts such a parent, which is to end with it. With `leaves` it is gone, as if it had been killed, when "NAME-l" is
/// set.
int beOwner(const std::wstring& name, bool leaves)
{
    LbOs::SChildOptions options;
    options.program = LbOs::GetExecutablePath();
    options.commandLine = L"probe parent " + LbCommandLine::Quote(name);
    const auto child = LbOs::CChildProcess::Start(options);
    const auto leave = LbOs::CNamedEvent::Open(name + L"-l");
    if (child && leaves && leave->Wait(c_Minute * c_Second) == LbOs::EEventWait::Signaled)
    {
        constexpr int c_Left = 3;
        std::_Exit(c_Left);
    }
    return child ? sleepLong() : 1;
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
    if (command == L"parent" || command == L"starter")
    {
        return beParent(arguments.at(2), command == L"parent");
    }
    const bool leaves = command == L"leaver";
    return leaves || command == L"owner" ? beOwner(arguments.at(2), leaves) : sleepLong();
}

} // namespace

int main(int count, char** arguments)
{
    return run(LbOs::GetArguments(count, arguments));
}
