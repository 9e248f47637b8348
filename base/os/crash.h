/// How the present process ends when it crashes, and what it says then.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/lbexport.h"

namespace LbOs
{

/// From now on a crash ends the process at once: an access violation, a division by zero, an overflow of the calling
/// thread's stack, abort(). No dialog appears, no debugger starts, no memory is dumped; the exit status tells what
/// happened. For processes that run code that may do anything.
LB_API void EndSilentlyOnCrash();

/// A signal or an exception. The texts are constants.
struct SCrashKind
{
    const char* name = "";    ///< the system's: of a signal, or of an exception
    const char* meaning = ""; ///< for a person, in UTF-8; empty where only the code is known
};

/// What an exit status, as CChildProcess gives it, says, in German: a signal or an exception by number, name and
/// meaning, else the status. Any thread.
LB_API std::wstring DescribeExitStatus(std::int64_t exitStatus);

/// True if the system may have ended a process of that exit status for lack of memory. Any thread.
LB_API bool MayBeMemoryKill(std::int64_t exitStatus) noexcept;

/// How many processes the system has ended for lack of memory since its start; 0 where it does not say. Any thread.
LB_API std::uint64_t CountMemoryKills();

/// A crash of the present process, told by the thread that has crashed.
struct SCrash
{
    static constexpr std::size_t sc_uiNameCapacity = 256;

    SCrashKind kind;
    std::uint32_t code = 0;               ///< number of the signal or exception
    std::uintptr_t address = 0;           ///< of the instruction
    std::optional<std::uintptr_t> target; ///< memory that the instruction has asked for
    char module[sc_uiNameCapacity] = {};  ///< bare name of the module of the instruction in UTF-8; empty: of none
    std::uintptr_t offset = 0;            ///< of the instruction in that module
    std::uint64_t thread = 0;             ///< the system's number of the crashed thread
    std::uint64_t context = 0;            ///< address of its registers as the system keeps them; 0 where unknown
};

/// Runs on the crashed thread, in an arbitrary state: must neither allocate memory nor take locks. A crash within ends
/// the process.
using CrashReport = void (*)(const SCrash& crash) noexcept;

/// While it lives, a crash of the present process calls the report and then ends the process at once with the status
/// that the system gives to that crash. Handlers of others (a test module, a sanitizer) come first, whether they were
/// installed before or after this object. If a sanitizer ends the process, the report follows the sanitizer's own.
/// Copies of the process that a fork makes crash without a report. One object at a time; any thread.
class LB_API CCrashHandler
{
public:
    explicit CCrashHandler(CrashReport report);
    ~CCrashHandler();
    CCrashHandler(const CCrashHandler&) = delete;
    CCrashHandler& operator=(const CCrashHandler&) = delete;
};

/// While it lives, the calling thread can report that its stack has overflowed. Destroyed by the same thread.
class LB_API CCrashStack
{
public:
    CCrashStack();
    ~CCrashStack();
    CCrashStack(const CCrashStack&) = delete;
    CCrashStack& operator=(const CCrashStack&) = delete;

private:
    void* m_memory = nullptr; ///< where the platform has to give it some
    std::size_t m_size = 0;
};

/// Writes UTF-8 to standard error past the run-time, whose locks a crashed thread may hold. Line feeds become the
/// platform's line ends.
LB_API void WriteCrashText(std::string_view text) noexcept;

} // namespace LbOs
