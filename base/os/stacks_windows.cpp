#include "base/os/stacks.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <string_view>

#include "base/os/childprocess.h"
#include "base/os/windows/debughelp.h"
#include "base/os/windows/functiontables.h"
#include "base/os/windows/remotemodules.h"
#include "base/os/windows/stoppedthreads.h"

namespace
{

using namespace LbOs;
using Windows::CStoppedThreads;
using Windows::Deadline;
using Windows::SRemoteModule;
using Windows::SStoppedThread;

constexpr std::chrono::milliseconds c_LongestReading(1200);

enum class EModules
{
    Own,
    System
};

bool isOfSystem(const SRemoteModule& module)
{
    static const std::wstring s_directory =
        Windows::ReadText([](wchar_t* buffer, DWORD size) { return GetSystemDirectoryW(buffer, size); });
    const std::wstring_view directory = std::wstring_view(module.path).substr(0, s_directory.size());
    return CompareStringOrdinal(directory.data(), static_cast<int>(directory.size()), s_directory.data(),
                                static_cast<int>(s_directory.size()), TRUE) == CSTR_EQUAL;
}

void describeModule(const SRemoteModule& module, SStackFrame& frame)
{
    frame.module = module.path.substr(module.path.find_last_of(L"\\/") + 1);
    frame.offset = frame.address - module.start;
}

std::optional<CONTEXT> readCrash(HANDLE process, std::uint64_t address)
{
    EXCEPTION_POINTERS exception = {};
    CONTEXT registers = {};
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    const bool isRead = Windows::ReadValue(process, reinterpret_cast<const void*>(address), exception) &&
                        Windows::ReadValue(process, exception.ContextRecord, registers);
    return isRead ? std::optional(registers) : std::nullopt;
}

/// Reads the stacks while the threads are stopped, and the names afterwards.
class CReading
{
public:
    CReading(const CChildProcess& child, const std::optional<SCrashedThread>& crashed)
        : m_process(reinterpret_cast<HANDLE>(child.GetWaitHandle())), m_id(static_cast<DWORD>(child.GetId())),
          m_crashed(crashed)
    {
    }

    std::vector<SThreadStack> Read()
    {
        readAddresses();
        // System modules come last: their symbols may use up all remaining time, and are less useful.
        nameFrames(EModules::Own);
        nameFrames(EModules::System);
        return std::move(m_stacks);
    }

private:
    void readAddresses()
    {
        const CStoppedThreads stopped(m_id, m_crashed ? static_cast<DWORD>(m_crashed->thread) : 0);
        if (stopped.GetThreads().empty())
        {
            return;
        }
        // After a crash, the first thread is the crashed one. Otherwise the oldest thread is the one at fault, because
        // the process began with it.
        const auto faulty = m_crashed ? stopped.GetThreads().begin()
                                      : std::ranges::min_element(stopped.GetThreads(), {}, &SStoppedThread::creation);
        // Loaded only after the threads have stopped, because a crashed process waits only for a short time.
        m_modules = Windows::ListModules(m_process);
        m_library = Windows::CDebugHelp::Create(m_process, m_tables, m_deadline);
        readThread(*faulty, true);
        for (const SStoppedThread& thread : stopped.GetThreads())
        {
            if (thread.id != faulty->id)
            {
                readThread(thread, false);
            }
        }
    }

    void readThread(const SStoppedThread& thread, bool isAtFault)
    {
        // The crashed thread waits in its crash handler, so its present registers are not those of the crash.
        const std::optional<CONTEXT> registers =
            isAtFault && m_crashed ? readCrash(m_process, m_crashed->context) : CStoppedThreads::ReadRegisters(thread);
        if (!registers)
        {
            return;
        }
        SThreadStack& stack = m_stacks.emplace_back();
        stack.thread = thread.id;
        stack.isAtFault = isAtFault;
        for (const std::uint64_t address : unwind(thread, *registers))
        {
            stack.frames.emplace_back().address = address;
        }
    }

    /// Innermost first, at least one.
    std::vector<std::uint64_t> unwind(const SStoppedThread& thread, const CONTEXT& registers)
    {
        std::vector<std::uint64_t> addresses;
        if (m_library)
        {
            addresses = m_library->Unwind(thread.handle.get(), findCaller(registers), m_deadline);
        }
        if (addresses.empty() || addresses.front() != registers.Rip)
        {
            addresses.insert(addresses.begin(), registers.Rip);
        }
        addresses.resize(std::min<std::size_t>(addresses.size(), SThreadStack::sc_uiMostFrames));
        return addresses;
    }

    /// If the instruction has no unwind table, returns the registers of the caller. This concerns addresses without
    /// code, such as null; functions that call no other; and the compiler's stack probe, in which a stack overflow
    /// crashes the thread. The probe has saved two registers on the stack. Otherwise, or if no caller is found, returns
    /// the registers unchanged.
    CONTEXT findCaller(CONTEXT registers)
    {
        constexpr std::size_t c_MostSaved = 2;
        if (m_tables.FindFunction(registers.Rip) != nullptr)
        {
            return registers;
        }
        std::uint64_t top[c_MostSaved + 1] = {};
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        if (!Windows::ReadValue(m_process, reinterpret_cast<const void*>(registers.Rsp), top))
        {
            return registers;
        }
        const auto isInFunction = [this](std::uint64_t address) { return m_tables.FindFunction(address) != nullptr; };
        const auto* const caller = std::ranges::find_if(top, isInFunction);
        if (caller != std::end(top))
        {
            registers.Rip = *caller;
            registers.Rsp += sizeof(*caller) * (caller - top + 1);
        }
        return registers;
    }

    void nameFrames(EModules modules)
    {
        for (SThreadStack& stack : m_stacks)
        {
            for (SStackFrame& frame : stack.frames)
            {
                const SRemoteModule* const module = m_tables.FindModule(frame.address);
                if (module != nullptr && (modules == EModules::System) == isOfSystem(*module))
                {
                    nameFrame(*module, frame, &frame != &stack.frames.front());
                }
            }
        }
    }

    void nameFrame(const SRemoteModule& module, SStackFrame& frame, bool isCall) const
    {
        describeModule(module, frame);
        if (m_library && std::chrono::steady_clock::now() < m_deadline)
        {
            m_library->Name(frame, isCall);
        }
    }

    const HANDLE m_process;
    const DWORD m_id;
    const std::optional<SCrashedThread>& m_crashed;
    const Deadline m_deadline = std::chrono::steady_clock::now() + c_LongestReading;
    std::vector<SRemoteModule> m_modules;
    Windows::CFunctionTables m_tables{m_process, m_modules};
    std::unique_ptr<Windows::CDebugHelp> m_library;
    std::vector<SThreadStack> m_stacks;
};

} // namespace

std::vector<LbOs::SThreadStack> LbOs::ReadStacks(const CChildProcess& child,
                                                 const std::optional<SCrashedThread>& crashed)
{
    return CReading(child, crashed).Read();
}
