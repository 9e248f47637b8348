/// Starts the program of a child process. Internal to the Linux side.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <signal.h>
#include <sys/types.h>

#include "base/os/childprocess.h"
#include "base/os/linux/keeper.h"

namespace LbOs::Linux
{

/// All data that the child needs, prepared in advance: before it runs its program it may only make system calls.
struct SStart
{
    std::string program;
    std::vector<std::string> words;
    std::vector<char*> arguments; ///< `words` in the form of execv
    std::string workingDirectory;
    std::string errorPath; ///< the file for standard error; empty: standard error is not redirected to a file
    bool isSilent = false;
    bool isSearched = false; ///< search the program by name
    SKeptGroup* group = nullptr;
    pid_t owner = 0;
    sigset_t signals = {};         ///< the caller's signal mask
    std::unique_ptr<char[]> stack; ///< the child's stack
    std::size_t stackSize = 0;
    volatile bool hasFailed = false; ///< set by the child
};

SStart PrepareStart(const SChildOptions& options);

/// The id of a process that runs its program; -1 on failure.
pid_t StartProcess(SStart& start);

} // namespace LbOs::Linux
