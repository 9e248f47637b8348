/// Call stacks of another process, read with the system's library dbghelp.dll. Internal to the Windows side.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "base/os/stackframe.h"
#include "base/os/windows/api.h"
#include "base/os/windows/functiontables.h"

namespace LbOs::Windows
{

using Deadline = std::chrono::steady_clock::time_point;

/// Locks the library, which serves one thread at a time. The result owns no lock if other threads use the library until
/// the deadline.
std::unique_lock<std::timed_mutex> LockDebugHelp(Deadline deadline);

/// Finds callers by the modules' unwind tables, and names by their symbols. Used by one thread.
class CDebugHelp
{
public:
    /// Null without the library, or if other threads use it until the deadline. The tables must outlive the object.
    static std::unique_ptr<CDebugHelp> Create(HANDLE process, CFunctionTables& tables, Deadline deadline);

    ~CDebugHelp();
    CDebugHelp(const CDebugHelp&) = delete;
    CDebugHelp& operator=(const CDebugHelp&) = delete;

    /// The addresses of the frames of a suspended thread with these registers, the innermost first.
    std::vector<std::uint64_t> Unwind(HANDLE thread, CONTEXT registers, Deadline deadline) const;

    /// Fills in function, file and line as far as they are known. The process may have ended. `isCall`: the address is
    /// the one after a call.
    void Name(SStackFrame& frame, bool isCall);

private:
    CDebugHelp(HANDLE process, CFunctionTables& tables, std::unique_lock<std::timed_mutex> lock);

    /// Loads the module's names unless that was done before. False if the library could not begin a session.
    bool ensureSymbols(const SRemoteModule& module);

    /// The function's readable name; empty if no symbol belongs to the address.
    std::wstring findName(std::uint64_t address) const;
    std::wstring findNameAt(std::uint64_t address, bool isStart) const;

    /// Identifies the session to the library. With the process handle instead, the library would examine that process.
    HANDLE getSession() const { return const_cast<CDebugHelp*>(this); }

    std::unique_lock<std::timed_mutex> m_lock;
    HANDLE m_process;
    CFunctionTables& m_tables;
    bool m_hasSession = false;
    std::set<std::uint64_t> m_named; ///< start addresses of the modules whose names the library has loaded
};

} // namespace LbOs::Windows
