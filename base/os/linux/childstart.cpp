#include "base/os/linux/childstart.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>

#include <fcntl.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/lbcommandline.h"
#include "base/lbencoding.h"
#include "base/os/childoutput.h"
#include "base/os/files.h"
#include "base/os/linux/descriptor.h"
#include "base/os/linux/namedfile.h"
#include "base/os/linux/openfiles.h"
#include "base/os/linux/processtree.h"
#include "base/os/linux/rawcalls.h"

/// The C library's clone(), under the name that no sanitizer intercepts as a fork.
extern "C" int __clone(int (*function)(void*), void* stack, int flags, void* argument, ...);

namespace LbOs::Linux
{

namespace
{

/// Resolves a relative path against the caller's working directory, not the child's; a bare name is searched later.
/// Empty if the working directory is unknown.
std::wstring fromHere(const std::wstring& program)
{
    if (program.find(L'/') == std::wstring::npos || IsAbsolutePath(program))
    {
        return program;
    }
    const std::wstring here = GetWorkingDirectory();
    return here.empty() ? here : here + L"/" + program;
}

/// Redirects standard input and, with `isSilent`, standard output and error to /dev/null. The child's process group is
/// in the background: reading from the terminal would stop it forever.
bool redirectToNothing(bool isSilent)
{
    const long nothing = Call(SYS_open, "/dev/null", O_RDWR);
    if (nothing < 0)
    {
        return false;
    }
    for (int standard = 0; standard <= (isSilent ? 2 : 0); ++standard)
    {
        Call(SYS_dup2, nothing, standard);
    }
    if (nothing > 2)
    {
        Call(SYS_close, nothing);
    }
    return true;
}

/// If the file cannot be opened, standard error stays as it is.
void redirectErrors(const std::string& path)
{
    const long file = path.empty() ? -1 : Call(SYS_open, path.c_str(), O_WRONLY | O_APPEND);
    if (file >= 0)
    {
        Call(SYS_dup2, file, STDERR_FILENO);
        Call(SYS_close, file);
    }
}

/// Resets the handlers that the child inherited from the caller: they must not run while child and caller share their
/// memory.
void resetSignals(const SStart& start)
{
    for (int signal = 1; signal < NSIG; ++signal)
    {
        SAction action = {};
        if (Call(SYS_rt_sigaction, signal, 0, &action, c_SignalSetSize) != 0)
        {
            continue;
        }
        const bool isIgnored =
            start.prepared ? (start.prepared->ignored & ToSignalBit(signal)) != 0 : action.handler == SIG_IGN;
        const auto wanted = isIgnored ? SIG_IGN : SIG_DFL;
        if (action.handler != wanted)
        {
            action = {};
            action.handler = wanted;
            Call(SYS_rt_sigaction, signal, &action, 0, c_SignalSetSize);
        }
    }
    const std::uint64_t blocked = start.prepared ? start.prepared->blocked : start.blocked;
    Call(SYS_rt_sigprocmask, SIG_SETMASK, &blocked, 0, c_SignalSetSize);
}

/// False if the owner's keeper cannot end the child: the owner has already ended or has another process namespace.
bool enterGroup(const SStart& start)
{
    if (start.group == nullptr)
    {
        return true;
    }
    if (Call(SYS_getppid) != start.owner)
    {
        return false;
    }
    EnterKeptGroup(*start.group);
    KeepDescendants();
    return Call(SYS_getppid) == start.owner;
}

/// Prepares the child and runs its program. Returns the step that failed.
EStep runProgram(const SStart& start)
{
    if (!enterGroup(start))
    {
        return eS_EnterGroup;
    }
    resetSignals(start);
    if (!redirectToNothing(start.isSilent))
    {
        return eS_OpenNull;
    }
    if (!start.workingDirectory.empty() && Call(SYS_chdir, start.workingDirectory.c_str()) != 0)
    {
        return eS_ChangeDirectory;
    }
    redirectErrors(start.errorPath);
    RestoreOpenFileLimit();
    const auto execute = start.isSearched ? &execvpe : &execve;
    execute(start.program.c_str(), start.arguments.data(), start.environment.data());
    return eS_Execute;
}

/// The child's function; returns only on failure.
int becomeProgram(void* argument)
{
    constexpr int c_CannotStart = 127;
    auto& start = *static_cast<SStart*>(argument);
    Call(SYS_setpgid, 0, 0);
    start.failedStep = runProgram(start);
    start.error = errno;
    Call(SYS_exit_group, c_CannotStart);
    return c_CannotStart;
}

/// Stores in `failure` which step of the child failed, and the system's reason.
void describeChildFailure(const SStart& start, std::wstring* failure)
{
    if (start.failedStep == eS_EnterGroup)
    {
        DescribeMissingKeeper(failure);
        return;
    }
    errno = start.error;
    DescribeFailure(failure, (start.failedStep == eS_OpenNull          ? "open /dev/null"
                              : start.failedStep == eS_ChangeDirectory ? "chdir " + start.workingDirectory
                                                                       : "execve " + start.program)
                                 .c_str());
}

/// Returns the child's id, negative on failure. Stores the child's descriptor in `file`; -1 if the system provides
/// none.
pid_t cloneProcess(SStart& start, char* top, int& file)
{
    constexpr int c_Flags = CLONE_VM | CLONE_VFORK | SIGCHLD;
    const pid_t process = __clone(&becomeProgram, top, c_Flags | CLONE_PIDFD, &start, &file);
    const bool mayTryWithout = errno == EMFILE || errno == ENFILE || errno == EINVAL;
    if (process >= 0 || !mayTryWithout)
    {
        return process;
    }
    file = -1;
    return __clone(&becomeProgram, top, c_Flags, &start);
}

/// An environment variable with a name that is unique in the system, so that a run inside a case adds another variable.
std::string makeMark()
{
    static std::atomic<unsigned> s_count = 0;
    return "LUTESTSUITE_CHILD_" + std::to_string(getpid()) + "_" + std::to_string(GetNanoseconds(CLOCK_BOOTTIME)) +
           "_" + std::to_string(++s_count) + "=1";
}

void fillEnvironment(SStart& start)
{
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable)
    {
        start.environment.push_back(*variable);
    }
    if (!start.mark.empty())
    {
        start.environment.push_back(start.mark.data());
    }
    start.environment.push_back(nullptr);
}

void reap(pid_t process)
{
    Retry([process] { return waitpid(process, nullptr, 0); });
}

} // namespace

SStart PrepareStart(const SChildOptions& options)
{
    SStart start;
    const std::vector<std::wstring> words = LbCommandLine::Split(options.commandLine);
    for (const std::wstring& word : words)
    {
        start.words.push_back(LbEncoding::ToNative(word));
    }
    for (std::string& word : start.words)
    {
        start.arguments.push_back(word.data());
    }
    start.arguments.push_back(nullptr);
    start.isSearched = options.program.empty();
    start.program = LbEncoding::ToNative(fromHere(!start.isSearched ? options.program
                                                  : words.empty()   ? std::wstring()
                                                                    : words.front()));
    start.workingDirectory = LbEncoding::ToNative(options.workingDirectory);
    start.isSilent = options.isSilent;
    start.errorPath = options.errors == nullptr ? std::string() : LbEncoding::ToNative(options.errors->GetPath());
    start.mark = options.endsWithOwner ? makeMark() : std::string();
    fillEnvironment(start);
    start.owner = getpid();
    if (options.hasPreparedSignals)
    {
        start.prepared = GetRecordedSignals();
    }
    // execvpe needs stack to search for the program and to build a script's arguments.
    constexpr std::size_t c_StackSize = 65536;
    start.stackSize = c_StackSize + 2 * start.arguments.size() * sizeof(char*);
    start.stack.reset(new char[start.stackSize]);
    return start;
}

/// Like fork(), but shares the memory and blocks the caller until the program runs: copying the page tables of a large
/// process would take most of the time. The child reports failure through the shared memory, because tests may close
/// any descriptor.
pid_t StartProcess(SStart& start, CProcessFile& file, std::wstring* failure)
{
    constexpr std::uint64_t c_AllSignals = ~std::uint64_t{0};
    constexpr std::uintptr_t c_Alignment = 16;
    char* top = start.stack.get() + start.stackSize;
    top -= reinterpret_cast<std::uintptr_t>(top) % c_Alignment;
    int opened = -1;
    Call(SYS_rt_sigprocmask, SIG_SETMASK, &c_AllSignals, &start.blocked, c_SignalSetSize);
    const pid_t process = cloneProcess(start, top, opened);
    const int error = errno;
    Call(SYS_rt_sigprocmask, SIG_SETMASK, &start.blocked, 0, c_SignalSetSize);
    if (process < 0)
    {
        errno = error;
        DescribeFailure(failure, "clone");
        return process;
    }
    file.Adopt(process, opened);
    if (start.failedStep != eS_None)
    {
        reap(process);
        describeChildFailure(start, failure);
        return -1;
    }
    return process;
}

} // namespace LbOs::Linux
