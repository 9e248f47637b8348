/// Starts the program of a child process. Internal to the Linux side.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "base/os/childoptions.h"
#include "base/os/linux/keeper.h"
#include "base/os/linux/processfile.h"
#include "base/os/linux/recordedsignals.h"

namespace LbOs::Linux
{

/// A step that may fail in the child before the program runs.
enum EStep : int
{
    eS_None,
    eS_EnterGroup,
    eS_OpenNull,
    eS_ChangeDirectory,
    eS_Execute
};

/// All data that the child needs, prepared in advance: before it runs its program it may only make system calls.
struct SStart
{
    std::string program;
    std::vector<std::string> words;
    std::vector<char*> arguments;   ///< `words` in the form that execve takes
    std::string mark;               ///< an environment variable that all descendants inherit; empty: none
    std::vector<char*> environment; ///< the caller's variables and the mark
    std::string workingDirectory;
    std::string errorPath; ///< the file for standard error; empty: standard error is not redirected to a file
    bool isSilent = false;
    bool isSearched = false; ///< look up the program in PATH
    SKeptGroup* group = nullptr;
    pid_t owner = 0;
    std::uint64_t blocked = 0;        ///< the caller's signal mask
    std::optional<SSignals> prepared; ///< empty: the child inherits the caller's signal state
    std::unique_ptr<char[]> stack;    ///< the child's stack
    std::size_t stackSize = 0;
    volatile EStep failedStep = eS_None; ///< set by the child
    volatile int error = 0;              ///< set by the child
};

SStart PrepareStart(const SChildOptions& options);

/// Returns the id of the process once it runs its program; -1 on failure, which is described in `failure` unless that
/// is null. Stores the descriptor of the process in `file` if the system provides one.
pid_t StartProcess(SStart& start, CProcessFile& file, std::wstring* failure);

} // namespace LbOs::Linux
