/// How the current process ends when it crashes, and what it reports.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "base/lbexport.h"
#include "base/os/files.h"

namespace LbOs
{

/// From now on a crash ends the process at once: an access violation, a division by zero, an overflow of the calling
/// thread's stack, abort(). Shows no dialog, starts no debugger, dumps no memory; the exit status shows the kind of
/// crash. For processes that run arbitrary code.
LB_API void EndSilentlyOnCrash();

/// A signal or an exception. The texts are constants.
struct SCrashKind
{
    const char* name = "";    ///< the system's name of the signal or exception
    const char* meaning = ""; ///< readable, in UTF-8; empty if only the code is known
};

/// A German description of an exit status as returned by CChildProcess: number, name and meaning of a signal or an
/// exception, otherwise the status. Any thread.
LB_API std::wstring DescribeExitStatus(std::int64_t exitStatus);

/// The exit status of a process that ends by a crash with this SCrash::code. Any thread.
LB_API std::int64_t GetCrashStatus(std::uint32_t code) noexcept;

/// True if this is the exit status of a process that ended itself by abort(), as std::terminate() does. On Windows a
/// process may also have returned this status. Any thread.
LB_API bool MayBeAbort(std::int64_t exitStatus) noexcept;

/// True if the system may have ended a process with this exit status for lack of memory. Any thread.
LB_API bool MayBeMemoryKill(std::int64_t exitStatus) noexcept;

/// How many processes the system has killed for lack of memory since boot; 0 if unknown. Any thread.
LB_API std::uint64_t CountMemoryKills();

/// A crash of the current process, reported on the crashed thread.
struct SCrash
{
    static constexpr std::size_t sc_uiNameCapacity = 256;

    SCrashKind kind;
    std::uint32_t code = 0;     ///< number of the signal or exception; for abort() on Windows, the exit status
    std::uintptr_t address = 0; ///< of the instruction
    std::optional<std::uintptr_t> target; ///< the memory address that the instruction accessed
    char module[sc_uiNameCapacity] = {};  ///< bare name in UTF-8 of the instruction's module; empty if there is none
    std::uintptr_t offset = 0;            ///< of the instruction in that module
    std::uint64_t thread = 0;             ///< the system's id of the crashed thread
    std::uint64_t context = 0;            ///< address of the system's record of the crash, which has its registers: on
                                          ///< Linux ucontext_t, on Windows EXCEPTION_POINTERS; 0 where unknown
};

/// Runs on the crashed thread, in an arbitrary state: must neither allocate memory nor take locks. A crash during the
/// report ends the process.
using CrashReport = void (*)(const SCrash& crash) noexcept;

/// During its lifetime, a crash of the current process calls the report and then ends the process with the status that
/// the system assigns to the crash. Other handlers (of a test module, of a sanitizer) take precedence, whether they
/// were installed before or after this object; on Linux they replace the report unless they call the former handler. If
/// a sanitizer ends the process, the report follows the sanitizer's own. Forks crash without a report. One object at a
/// time; any thread.
class LB_API CCrashHandler
{
public:
    explicit CCrashHandler(CrashReport report);
    ~CCrashHandler();
    CCrashHandler(const CCrashHandler&) = delete;
    CCrashHandler& operator=(const CCrashHandler&) = delete;
};

/// During its lifetime, the calling thread can report an overflow of its stack. Must be destroyed by the same thread.
class LB_API CCrashStack
{
public:
    CCrashStack();
    ~CCrashStack();
    CCrashStack(const CCrashStack&) = delete;
    CCrashStack& operator=(const CCrashStack&) = delete;

private:
    void* m_memory = nullptr; ///< null if the object has not installed a stack
    std::size_t m_size = 0;
};

/// Writes UTF-8 to standard error without the C library, whose locks a crashed thread may hold. Line feeds become the
/// platform's line ends.
LB_API void WriteCrashText(std::string_view text) noexcept;

/// From now on WriteCrashText also writes to this file; c_InvalidFile ends this. The caller keeps the file open. Any
/// thread.
LB_API void CopyCrashTexts(FileHandle file) noexcept;

} // namespace LbOs
