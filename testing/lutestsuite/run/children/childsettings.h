/// The settings with which a run starts all its child processes.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuite/run/children/leavingchildren.h"
#include "testing/lutestsuite/run/children/sharedlistings.h"

namespace LuTestSuiteRun
{

/// The settings with which a run starts all its child processes.
struct SChildSettings
{
    std::wstring dataDirectory;     ///< full path
    std::vector<std::wstring> dlls; ///< test modules to load besides the fixed list
    bool assertDialog = true;
    CLeavingChildren* leaving = nullptr; ///< receives children that should exit; null: the run ends them
    bool takeStacks = false;             ///< read the stacks of children that crash or are ended at the time limit
    std::wstring dumpDirectory = {};     ///< receives memory dumps of such children; empty: no dumps
    CSharedListings* listings = nullptr; ///< shares listings of data directories; null: children read the directories
};

} // namespace LuTestSuiteRun
