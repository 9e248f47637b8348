/// The way of a child process to its program. Internal to the Linux side.
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

/// All that the child needs, made before it exists: between its birth and its program it may only make system calls.
struct SStart
{
    std::string program;
    std::vector<std::string> words;
    std::vector<char*> arguments; ///< the words as the system takes them
    std::string workingDirectory;
    std::string errorPath; ///< of the file behind standard error; empty: nothing is behind it
    bool isSilent = false;
    bool isSearched = false; ///< the program's name is to be looked up
    SKeptGroup* group = nullptr;
    pid_t owner = 0;
    sigset_t signals = {};         ///< blocked in the caller
    std::unique_ptr<char[]> stack; ///< the child's
    std::size_t stackSize = 0;
    volatile bool hasFailed = false; ///< the child's word
};

SStart PrepareStart(const SChildOptions& options);

/// Number of a process that runs its program; -1 on failure.
pid_t StartProcess(SStart& start);

} // namespace LbOs::Linux
