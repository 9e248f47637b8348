/// How to start a child process.
#pragma once

#include <string>

namespace LbOs
{

class CChildOutput;

struct SChildOptions
{
    /// The executable's full path; empty: the first word of the command line, looked up as the system does.
    std::wstring program;

    /// The first word is the program's name. Words must be quoted as by LbCommandLine::Quote: Windows passes the text
    /// on unchanged; on Linux this library splits it.
    std::wstring commandLine;

    /// Empty: the caller's own.
    std::wstring workingDirectory;

    /// True: no console window, and standard input, output and error are the null device. False: the child has the
    /// caller's streams, but on Linux no input, because reading from a terminal would stop a process in the background.
    bool isSilent = false;

    /// Receives what a silent child writes to standard error; null: the text is lost. Must exist until
    /// CChildProcess::Start returns.
    const CChildOutput* errors = nullptr;

    /// True: the child starts with the blocked and ignored signals that RecordSignals recorded. False, or without a
    /// record: with those of the caller. No effect on Windows.
    bool hasPreparedSignals = false;

    /// True: the child and the processes that it started are ended when its CChildProcess is destroyed and when the
    /// current process ends, even if the current process is killed. False: they may outlive that object and the current
    /// process, and only Terminate ends them.
    bool endsWithOwner = true;
};

} // namespace LbOs
