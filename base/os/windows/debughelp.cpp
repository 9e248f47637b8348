#include "base/os/windows/debughelp.h"

#include <cstdlib>
#include <cstring>
#include <utility>

#include <cxxabi.h>
// Needs windows.h before it.
#include <dbghelp.h>

#include "base/lbencoding.h"

namespace LbOs::Windows
{

namespace
{

template<typename Function>
Function* find(const char* name)
{
    return FindSystemFunction<Function>(L"dbghelp.dll", name);
}

/// The functions of the library. Linking it would make each start of a process slower.
struct SLibrary
{
    decltype(&SymSetOptions) setOptions = find<decltype(SymSetOptions)>("SymSetOptions");
    decltype(&SymInitializeW) begin = find<decltype(SymInitializeW)>("SymInitializeW");
    decltype(&SymCleanup) end = find<decltype(SymCleanup)>("SymCleanup");
    decltype(&SymLoadModuleExW) loadModule = find<decltype(SymLoadModuleExW)>("SymLoadModuleExW");
    decltype(&StackWalk64) walk = find<decltype(StackWalk64)>("StackWalk64");
    decltype(&SymFromAddr) findName = find<decltype(SymFromAddr)>("SymFromAddr");
    decltype(&SymGetLineFromAddrW64) findLine = find<decltype(SymGetLineFromAddrW64)>("SymGetLineFromAddrW64");

    bool IsComplete() const
    {
        return setOptions != nullptr && begin != nullptr && end != nullptr && loadModule != nullptr &&
               walk != nullptr && findName != nullptr && findLine != nullptr;
    }
};

const SLibrary& getLibrary()
{
    static const SLibrary s_library;
    return s_library;
}

/// The tables of the current stack walk. The library's callbacks have no argument for them.
thread_local CFunctionTables* s_tables = nullptr;

void* WINAPI findFunction(HANDLE, DWORD64 address)
{
    return s_tables->FindFunction(address);
}

DWORD64 WINAPI findModuleStart(HANDLE, DWORD64 address)
{
    const SRemoteModule* const module = s_tables->FindModule(address);
    return module == nullptr ? 0 : module->start;
}

/// Symbols of this compiler are mangled; those of other compilers are readable.
std::wstring demangle(const char* name)
{
    int status = -1;
    const std::unique_ptr<char, decltype(&std::free)> readable(abi::__cxa_demangle(name, nullptr, nullptr, &status),
                                                               &std::free);
    const bool isEncoded = std::strncmp(name, "_Z", 2) == 0 && status == 0;
    return LbEncoding::FromNative(isEncoded ? readable.get() : name);
}

} // namespace

std::unique_lock<std::timed_mutex> LockDebugHelp(Deadline deadline)
{
    static std::timed_mutex s_mutex;
    return {s_mutex, deadline};
}

CDebugHelp::CDebugHelp(HANDLE process, CFunctionTables& tables, std::unique_lock<std::timed_mutex> lock)
    : m_lock(std::move(lock)), m_process(process), m_tables(tables)
{
}

CDebugHelp::~CDebugHelp()
{
    if (m_hasSession)
    {
        getLibrary().end(getSession());
    }
}

std::unique_ptr<CDebugHelp> CDebugHelp::Create(HANDLE process, CFunctionTables& tables, Deadline deadline)
{
    std::unique_lock<std::timed_mutex> lock = LockDebugHelp(deadline);
    const bool isUsable = lock && getLibrary().IsComplete();
    return std::unique_ptr<CDebugHelp>(isUsable ? new CDebugHelp(process, tables, std::move(lock)) : nullptr);
}

std::vector<std::uint64_t> CDebugHelp::Unwind(HANDLE thread, CONTEXT registers, Deadline deadline) const
{
    STACKFRAME64 frame = {};
    frame.AddrPC = {registers.Rip, 0, AddrModeFlat};
    frame.AddrFrame = {registers.Rbp, 0, AddrModeFlat};
    frame.AddrStack = {registers.Rsp, 0, AddrModeFlat};
    s_tables = &m_tables;
    std::vector<std::uint64_t> frames;
    while (frames.size() < SThreadStack::sc_uiMostFrames && std::chrono::steady_clock::now() < deadline &&
           getLibrary().walk(IMAGE_FILE_MACHINE_AMD64, m_process, thread, &frame, &registers, nullptr, &findFunction,
                             &findModuleStart, nullptr) != FALSE &&
           frame.AddrPC.Offset != 0)
    {
        frames.push_back(frame.AddrPC.Offset);
    }
    return frames;
}

bool CDebugHelp::ensureSymbols(const SRemoteModule& module)
{
    const SLibrary& library = getLibrary();
    if (!m_hasSession)
    {
        library.setOptions(SYMOPT_LOAD_LINES | SYMOPT_UNDNAME | SYMOPT_FAIL_CRITICAL_ERRORS | SYMOPT_NO_PROMPTS);
        // Passes a search path of its own, because the user's may name a server.
        m_hasSession = library.begin(getSession(), L".", FALSE) != FALSE;
    }
    if (m_hasSession && m_named.insert(module.start).second)
    {
        library.loadModule(getSession(), nullptr, module.path.c_str(), nullptr, module.start,
                           static_cast<DWORD>(module.end - module.start), nullptr, 0);
    }
    return m_hasSession;
}

/// A symbol without a size, such as that of an export, counts only at its own address. Otherwise the library would
/// return the nearest symbol, which may belong to another function.
std::wstring CDebugHelp::findNameAt(std::uint64_t address, bool isStart) const
{
    constexpr std::size_t c_LongestName = 4096;
    alignas(SYMBOL_INFO) char memory[sizeof(SYMBOL_INFO) + c_LongestName] = {};
    auto* const symbol = reinterpret_cast<SYMBOL_INFO*>(memory);
    symbol->SizeOfStruct = sizeof(SYMBOL_INFO);
    symbol->MaxNameLen = c_LongestName;
    DWORD64 distance = 0;
    const bool isFound = getLibrary().findName(getSession(), address, &distance, symbol) != FALSE &&
                         (isStart ? distance == 0 : distance < symbol->Size);
    return isFound ? demangle(symbol->Name) : std::wstring();
}

std::wstring CDebugHelp::findName(std::uint64_t address) const
{
    std::wstring name = findNameAt(address, false);
    const RUNTIME_FUNCTION* const function = m_tables.FindFunction(address);
    return name.empty() && function != nullptr
               ? findNameAt(m_tables.FindModule(address)->start + function->BeginAddress, true)
               : name;
}

void CDebugHelp::Name(SStackFrame& frame, bool isCall)
{
    const std::uint64_t address = frame.address - (isCall ? 1 : 0);
    const SRemoteModule* const module = m_tables.FindModule(address);
    if (module == nullptr || !ensureSymbols(*module))
    {
        return;
    }
    frame.function = findName(address);
    IMAGEHLP_LINEW64 line = {};
    line.SizeOfStruct = sizeof(line);
    DWORD offset = 0;
    if (getLibrary().findLine(getSession(), address, &offset, &line) != FALSE && line.FileName != nullptr)
    {
        frame.file = line.FileName;
        frame.line = line.LineNumber;
    }
}

} // namespace LbOs::Windows
