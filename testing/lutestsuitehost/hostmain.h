/// What the main functions of the hosts share: arguments, exceptions, and the end of the process.
#pragma once

#include <string>
#include <vector>

#include "base/inoncopyable.h"

namespace LuTestSuiteHost
{

/// The exit status of all hosts.
constexpr int c_Succeeded = 0;
constexpr int c_Failed = 1; ///< cases or checks failed, or the library refused the arguments
constexpr int c_Broken = 2; ///< an exception reached Main, a case ended the process, or standard output was lost

/// The arguments of a program, its name first.
using Arguments = std::vector<std::wstring>;

/// Returns what `run` returns for the arguments of main(). Any exception of `run` (LbException, a message as
/// std::wstring, or another) becomes one German line on standard error and the status c_Broken.
int Main(int count, const char* const* arguments, int (*run)(const Arguments& arguments));

/// A terminal shows the library's lines in colour unless NO_COLOR is set and not empty; files and pipes get plain text.
void ChooseOutput();

/// Writes one line to standard error, with the prefix of errors unless the message has it.
void WriteError(std::wstring message);

/// True if another host started this process to run cases; the other host checks how this process ends.
bool IsChild(const Arguments& arguments);

/// While an object exists, exit() and quick_exit() in this process print an error line that names the case, and end
/// the process with the status c_Broken, so that a case that calls them does not look like a success. Forked copies of
/// the process may end in any way.
class CWork : public INonCopyable
{
public:
    CWork();
    ~CWork();
};

/// Creates the environment and executes the library's own command line. Throws as the library does.
int RunLibrary(const Arguments& arguments);

} // namespace LuTestSuiteHost
