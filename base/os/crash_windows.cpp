#include "base/os/crash.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cwchar>
#include <iterator>

#include "base/lbencoding.h"
#include "base/lbutf8.h"
#include "base/os/windows/api.h"

#include <psapi.h>

namespace
{

using namespace LbOs;

struct SException
{
    DWORD code;
    SCrashKind kind;
};

constexpr DWORD c_HeapCorruption = 0xC0000374;
constexpr DWORD c_StackBufferOverrun = 0xC0000409;
constexpr DWORD c_CommitmentLimit = 0xC000012D;
constexpr DWORD c_MissingLibrary = 0xC0000135;
constexpr DWORD c_MissingFunction = 0xC0000139;
constexpr DWORD c_FailedInitialization = 0xC0000142;
constexpr DWORD c_InvalidImage = 0xC000007B;
constexpr DWORD c_MissingOrdinal = 0xC0000138;
constexpr DWORD c_BadStack = 0xC0000028;
constexpr DWORD c_InvalidUnwindTarget = 0xC0000029;
constexpr DWORD c_Deadlock = 0xC0000194;
constexpr DWORD c_InvalidHandler = 0xC00001A5;
constexpr DWORD c_CallbackException = 0xC000041D;
constexpr DWORD c_CppException = 0xE06D7363; ///< of compilers that throw exceptions of C++ as exceptions of the system

constexpr SException c_Exceptions[] = {
    {STATUS_ACCESS_VIOLATION, {"STATUS_ACCESS_VIOLATION", "unzulässiger Speicherzugriff"}},
    {STATUS_STACK_OVERFLOW, {"STATUS_STACK_OVERFLOW", "Stapelüberlauf"}},
    {STATUS_INTEGER_DIVIDE_BY_ZERO, {"STATUS_INTEGER_DIVIDE_BY_ZERO", "Division durch null"}},
    {STATUS_INTEGER_OVERFLOW, {"STATUS_INTEGER_OVERFLOW", "unzulässige Rechenoperation"}},
    {STATUS_FLOAT_DIVIDE_BY_ZERO, {"STATUS_FLOAT_DIVIDE_BY_ZERO", "Division durch null"}},
    {STATUS_FLOAT_INVALID_OPERATION, {"STATUS_FLOAT_INVALID_OPERATION", "unzulässige Rechenoperation"}},
    {STATUS_FLOAT_OVERFLOW, {"STATUS_FLOAT_OVERFLOW", "unzulässige Rechenoperation"}},
    {STATUS_FLOAT_UNDERFLOW, {"STATUS_FLOAT_UNDERFLOW", "unzulässige Rechenoperation"}},
    {STATUS_FLOAT_INEXACT_RESULT, {"STATUS_FLOAT_INEXACT_RESULT", "unzulässige Rechenoperation"}},
    {STATUS_FLOAT_DENORMAL_OPERAND, {"STATUS_FLOAT_DENORMAL_OPERAND", "unzulässige Rechenoperation"}},
    {STATUS_FLOAT_STACK_CHECK, {"STATUS_FLOAT_STACK_CHECK", "unzulässige Rechenoperation"}},
    {STATUS_FLOAT_MULTIPLE_FAULTS, {"STATUS_FLOAT_MULTIPLE_FAULTS", "unzulässige Rechenoperation"}},
    {STATUS_FLOAT_MULTIPLE_TRAPS, {"STATUS_FLOAT_MULTIPLE_TRAPS", "unzulässige Rechenoperation"}},
    {STATUS_ILLEGAL_INSTRUCTION, {"STATUS_ILLEGAL_INSTRUCTION", "unzulässiger Befehl"}},
    {STATUS_PRIVILEGED_INSTRUCTION, {"STATUS_PRIVILEGED_INSTRUCTION", "unzulässiger Befehl"}},
    {STATUS_IN_PAGE_ERROR, {"STATUS_IN_PAGE_ERROR", "Zugriff auf Speicher, hinter dem nichts steht"}},
    {STATUS_GUARD_PAGE_VIOLATION, {"STATUS_GUARD_PAGE_VIOLATION", "Zugriff auf eine Wächterseite"}},
    {STATUS_DATATYPE_MISALIGNMENT, {"STATUS_DATATYPE_MISALIGNMENT", "schlecht ausgerichteter Speicherzugriff"}},
    {STATUS_ARRAY_BOUNDS_EXCEEDED, {"STATUS_ARRAY_BOUNDS_EXCEEDED", "Zugriff hinter ein Feld"}},
    {STATUS_INVALID_HANDLE, {"STATUS_INVALID_HANDLE", "ungültiges Handle"}},
    {STATUS_INVALID_PARAMETER, {"STATUS_INVALID_PARAMETER", "unzulässiges Argument"}},
    {STATUS_INVALID_CRUNTIME_PARAMETER, {"STATUS_INVALID_CRUNTIME_PARAMETER", "unzulässiges Argument"}},
    {STATUS_NONCONTINUABLE_EXCEPTION, {"STATUS_NONCONTINUABLE_EXCEPTION", "Fortsetzung nach einem Abbruch"}},
    {STATUS_INVALID_DISPOSITION, {"STATUS_INVALID_DISPOSITION", "gescheiterte Behandlung einer Ausnahme"}},
    {c_InvalidHandler, {"STATUS_INVALID_EXCEPTION_HANDLER", "gescheiterte Behandlung einer Ausnahme"}},
    {c_CallbackException, {"STATUS_FATAL_USER_CALLBACK_EXCEPTION", "Ausnahme in einer Rückruffunktion"}},
    {c_BadStack, {"STATUS_BAD_STACK", "zerstörter Stapel"}},
    {c_InvalidUnwindTarget, {"STATUS_INVALID_UNWIND_TARGET", "zerstörter Stapel"}},
    {c_Deadlock, {"STATUS_POSSIBLE_DEADLOCK", "Verklemmung"}},
    {STATUS_ASSERTION_FAILURE, {"STATUS_ASSERTION_FAILURE", "verletzte Zusicherung"}},
    {STATUS_FATAL_APP_EXIT, {"STATUS_FATAL_APP_EXIT", "Abbruch durch das Programm selbst"}},
    {c_CppException, {"C++", "nicht gefangene Exception"}},
    {STATUS_BREAKPOINT, {"STATUS_BREAKPOINT", "Haltepunkt"}},
    {STATUS_SINGLE_STEP, {"STATUS_SINGLE_STEP", "Haltepunkt"}},
    {STATUS_NO_MEMORY, {"STATUS_NO_MEMORY", "Speichermangel"}},
    {STATUS_CONTROL_C_EXIT, {"STATUS_CONTROL_C_EXIT", "Unterbrechung"}},
    {c_CommitmentLimit, {"STATUS_COMMITMENT_LIMIT", "Speichermangel"}},
    {c_HeapCorruption, {"STATUS_HEAP_CORRUPTION", "zerstörte Speicherverwaltung"}},
    {c_StackBufferOverrun, {"STATUS_STACK_BUFFER_OVERRUN", "sofortiger Abbruch durch das Programm selbst"}},
    {c_MissingLibrary, {"STATUS_DLL_NOT_FOUND", "fehlendes Modul"}},
    {c_MissingFunction, {"STATUS_ENTRYPOINT_NOT_FOUND", "fehlende Funktion eines Moduls"}},
    {c_MissingOrdinal, {"STATUS_ORDINAL_NOT_FOUND", "fehlende Funktion eines Moduls"}},
    {c_InvalidImage, {"STATUS_INVALID_IMAGE_FORMAT", "unbrauchbares Modul"}},
    {c_FailedInitialization, {"STATUS_DLL_INIT_FAILED", "gescheiterter Start eines Moduls"}},
};

/// Null for a code that is not in the table.
const SCrashKind* findKind(std::int64_t code)
{
    const auto* const found = std::ranges::find(c_Exceptions, code, &SException::code);
    return found == std::end(c_Exceptions) ? nullptr : &found->kind;
}

/// True if a process with this exit status, whose meaning is unknown, has probably ended by an exception: the code of
/// an error, or one of a program. RaiseException clears bit 28, which -1 and other small negative statuses have. A
/// status of 0x8nnnnnnn is rather a COM result that the program has returned.
constexpr bool mayBeException(std::int64_t status)
{
    constexpr unsigned c_FirstBit = 28;
    const std::int64_t kind = status >> c_FirstBit;
    return kind == 0xA || kind == 0xC || kind == 0xE;
}

/// The exit status of the run-time's own abort().
constexpr UINT c_AbortStatus = 3;

/// STATUS_FATAL_APP_EXIT, the code by which debuggers recognise abort().
constexpr DWORD c_AbortCode = 0x40000015;

std::atomic<CrashReport> s_report = nullptr;
std::atomic<LPTOP_LEVEL_EXCEPTION_FILTER> s_former = nullptr;
std::atomic<DWORD> s_reporter = 0; ///< thread that calls the report

/// Queries the mapping of the pages instead of the loader, whose lock another thread may hold.
void findPlace(SCrash& crash)
{
    MEMORY_BASIC_INFORMATION pages = {};
    const auto* const address = reinterpret_cast<const void*>(crash.address);
    if (VirtualQuery(address, &pages, sizeof(pages)) == 0 || pages.Type != MEM_IMAGE)
    {
        return;
    }
    // Not on the stack, which may have overflowed. One thread at a time reports a crash.
    static wchar_t path[1024];
    const DWORD length = K32GetMappedFileNameW(GetCurrentProcess(), pages.AllocationBase, path, std::size(path) - 1);
    const std::wstring_view name =
        std::wstring_view(path, length).substr(std::wstring_view(path, length).rfind(L'\\') + 1);
    // On Windows wchar_t is a unit of UTF-16.
    const std::u16string_view units(reinterpret_cast<const char16_t*>(name.data()), name.size());
    const std::size_t size = LbEncoding::ToUtf8(units, {crash.module, SCrash::sc_uiNameCapacity - 1});
    crash.module[size] = '\0';
    crash.offset = crash.address - reinterpret_cast<std::uintptr_t>(pages.AllocationBase);
}

/// A thread that crashes during another thread's report waits for the end of the process. A crash within the report
/// itself ends the process.
void report(SCrash& crash, EXCEPTION_POINTERS& exception)
{
    const CrashReport report = s_report.load();
    const DWORD thread = GetCurrentThreadId();
    DWORD reporter = 0;
    if (report == nullptr || (!s_reporter.compare_exchange_strong(reporter, thread) && reporter == thread))
    {
        return;
    }
    while (reporter != 0)
    {
        Sleep(INFINITE);
    }
    findPlace(crash);
    crash.thread = thread;
    crash.context = reinterpret_cast<std::uint64_t>(&exception);
    report(crash);
}

LONG CALLBACK endWithCode(EXCEPTION_POINTERS* exception)
{
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    const LPTOP_LEVEL_EXCEPTION_FILTER former = s_former.load();
    // The run-time's own filter passes C++ exceptions to std::terminate and calls the handlers set by std::signal.
    // After a stack overflow there is hardly any stack left for that filter.
    if (former != nullptr && record.ExceptionCode != EXCEPTION_STACK_OVERFLOW &&
        former(exception) == EXCEPTION_CONTINUE_EXECUTION)
    {
        return EXCEPTION_CONTINUE_EXECUTION;
    }
    const SCrashKind* const kind = findKind(record.ExceptionCode);
    SCrash crash;
    crash.kind = kind == nullptr ? SCrashKind{"Ausnahme", ""} : *kind;
    crash.code = record.ExceptionCode;
    crash.address = reinterpret_cast<std::uintptr_t>(record.ExceptionAddress);
    if (record.ExceptionCode == STATUS_ACCESS_VIOLATION && record.NumberParameters > 1)
    {
        crash.target = record.ExceptionInformation[1];
    }
    report(crash, *exception);
    TerminateProcess(GetCurrentProcess(), record.ExceptionCode);
    return EXCEPTION_EXECUTE_HANDLER;
}

void endAborted(int /*signal*/)
{
    SCrash crash;
    crash.kind = {"abort", "Abbruch durch das Programm selbst"};
    crash.code = c_AbortStatus;
    crash.address = reinterpret_cast<std::uintptr_t>(__builtin_return_address(0));
    // An abort raises no exception, but the reader of the stacks needs registers.
    CONTEXT registers;
    RtlCaptureContext(&registers);
    EXCEPTION_RECORD record = {};
    record.ExceptionCode = c_AbortCode;
    record.ExceptionAddress = __builtin_return_address(0);
    EXCEPTION_POINTERS exception = {&record, &registers};
    report(crash, exception);
    TerminateProcess(GetCurrentProcess(), c_AbortStatus);
}

/// Installs the filter, and the handler of SIGABRT unless the process has set another one. May be called repeatedly.
void takeExceptions()
{
    const LPTOP_LEVEL_EXCEPTION_FILTER former = SetUnhandledExceptionFilter(&endWithCode);
    if (former != &endWithCode)
    {
        s_former = former;
    }
    // The run-time would show a message before it ends the process.
    const auto handler = std::signal(SIGABRT, &endAborted);
    if (handler != SIG_DFL && handler != &endAborted)
    {
        std::signal(SIGABRT, handler);
    }
}

void releaseExceptions()
{
    const LPTOP_LEVEL_EXCEPTION_FILTER last = SetUnhandledExceptionFilter(s_former.load());
    if (last != &endWithCode)
    {
        SetUnhandledExceptionFilter(last);
    }
    const auto handler = std::signal(SIGABRT, SIG_DFL);
    if (handler != &endAborted)
    {
        std::signal(SIGABRT, handler);
    }
}

/// Wine commits a whole stack at once and keeps the guard page at the stack's end, regardless of the guarantee. If the
/// handler then overflows the stack, only the thread ends, and the process continues. So this function places a guard
/// page before the guaranteed part. On Windows it does nothing, because that page is not committed yet.
void guardStack(ULONG guarantee)
{
    constexpr SIZE_T c_PageSize = 4096;
    MEMORY_BASIC_INFORMATION own = {};
    VirtualQuery(&own, &own, sizeof(own));
    auto* const page = static_cast<char*>(own.AllocationBase) + guarantee;
    MEMORY_BASIC_INFORMATION last = {};
    if (VirtualQuery(page, &last, sizeof(last)) != 0 && last.State == MEM_COMMIT && last.Protect == PAGE_READWRITE)
    {
        DWORD former = 0;
        VirtualProtect(page, c_PageSize, PAGE_READWRITE | PAGE_GUARD, &former);
    }
}

/// Reserves stack for the filter in case the stack overflows.
void keepStack()
{
    constexpr ULONG c_Guarantee = 65536;
    ULONG guarantee = c_Guarantee;
    SetThreadStackGuarantee(&guarantee);
    guardStack(c_Guarantee);
}

/// True after EndSilentlyOnCrash: the handlers then stay installed when the report is removed.
std::atomic<bool> s_isSilent = false;

/// The file that receives crash texts in addition to standard error.
std::atomic<HANDLE> s_copy = INVALID_HANDLE_VALUE;

void writeLines(HANDLE file, std::string_view text) noexcept
{
    const auto write = [file](std::string_view bytes) {
        DWORD written = 0;
        WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    };
    while (!text.empty())
    {
        const std::size_t length = std::min(text.find('\n'), text.size());
        write(text.substr(0, length));
        write(length < text.size() ? "\r\n" : "");
        text.remove_prefix(std::min(length + 1, text.size()));
    }
}

} // namespace

void LbOs::EndSilentlyOnCrash()
{
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    s_isSilent = true;
    takeExceptions();
    keepStack();
}

std::wstring LbOs::DescribeExitStatus(std::int64_t exitStatus)
{
    const SCrashKind* const kind = findKind(exitStatus);
    if (kind == nullptr && !mayBeException(exitStatus))
    {
        return L"Status " + std::to_wstring(exitStatus);
    }
    wchar_t code[16] = {};
    std::swprintf(code, std::size(code), L"0x%08X", static_cast<unsigned>(exitStatus));
    const std::string meaning = kind == nullptr ? "" : std::string(" (") + kind->name + ", " + kind->meaning + ")";
    return std::wstring(L"Ausnahme ") + code + LbEncoding::FromUtf8(meaning);
}

std::int64_t LbOs::GetCrashStatus(std::uint32_t code) noexcept
{
    return code;
}

bool LbOs::MayBeAbort(std::int64_t exitStatus) noexcept
{
    return exitStatus == c_AbortStatus;
}

// Windows kills no process for lack of memory; a process that gets no memory ends by itself.
bool LbOs::MayBeMemoryKill(std::int64_t /*exitStatus*/) noexcept
{
    return false;
}

std::uint64_t LbOs::CountMemoryKills()
{
    return 0;
}

LbOs::CCrashHandler::CCrashHandler(CrashReport report)
{
    s_report = report;
    takeExceptions();
}

LbOs::CCrashHandler::~CCrashHandler()
{
    s_report = nullptr;
    if (!s_isSilent)
    {
        releaseExceptions();
    }
}

LbOs::CCrashStack::CCrashStack()
{
    keepStack();
}

LbOs::CCrashStack::~CCrashStack() = default;

void LbOs::WriteCrashText(std::string_view text) noexcept
{
    writeLines(GetStdHandle(STD_ERROR_HANDLE), text);
    if (const HANDLE copy = s_copy; copy != INVALID_HANDLE_VALUE)
    {
        writeLines(copy, text);
    }
}

void LbOs::CopyCrashTexts(FileHandle file) noexcept
{
    s_copy = reinterpret_cast<HANDLE>(file);
}
