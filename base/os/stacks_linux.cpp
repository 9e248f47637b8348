#include "base/os/stacks.h"

#include <algorithm>
#include <fstream>
#include <string>

#include "base/lbencoding.h"
#include "base/os/childprocess.h"
#include "base/os/linux/crashplace.h"
#include "base/os/linux/tracedthreads.h"
#include "base/os/linux/unwinder.h"

namespace
{

using namespace LbOs;
using Linux::Deadline;

constexpr std::chrono::milliseconds c_LongestReading(1200);

/// A range of addresses to which a file is mapped.
struct SPlace
{
    std::uint64_t start = 0;
    std::uint64_t end = 0;
    std::uint64_t moduleStart = 0;
    std::string path;
};

std::vector<SPlace> readPlaces(pid_t process)
{
    std::vector<SPlace> places;
    std::ifstream file("/proc/" + std::to_string(process) + "/maps");
    for (std::string line; std::getline(file, line);)
    {
        const Linux::SMapping mapping = Linux::ParseMapping(line);
        if (mapping.path.empty())
        {
            continue;
        }
        const bool isSame = !places.empty() && places.back().path == mapping.path;
        const std::uint64_t moduleStart = isSame ? places.back().moduleStart : mapping.start;
        places.push_back({mapping.start, mapping.end, moduleStart, std::string(mapping.path)});
    }
    return places;
}

/// Null for an address to which no file is mapped.
const SPlace* findPlace(const std::vector<SPlace>& places, std::uint64_t address)
{
    const auto place = std::ranges::find_if(
        places, [address](const SPlace& candidate) { return address >= candidate.start && address < candidate.end; });
    return place == places.end() ? nullptr : &*place;
}

void findModule(const std::vector<SPlace>& places, SStackFrame& frame)
{
    if (const SPlace* const place = findPlace(places, frame.address))
    {
        frame.module = LbEncoding::FromNative(place->path.substr(place->path.rfind('/') + 1));
        frame.offset = frame.address - place->moduleStart;
    }
}

/// Reads the stacks while the threads are stopped, and the names afterwards.
class CReading
{
public:
    CReading(pid_t process, const std::optional<SCrashedThread>& crashed)
        : m_process(process), m_crashed(crashed), m_faulty(crashed ? static_cast<pid_t>(crashed->thread) : process),
          m_unwinder(Linux::CUnwinder::Create(process))
    {
    }

    std::vector<SThreadStack> Read()
    {
        readAddresses();
        for (SThreadStack& stack : m_stacks)
        {
            name(stack);
        }
        return std::move(m_stacks);
    }

private:
    void readAddresses()
    {
        const Linux::CTracedThreads traced(m_process, m_faulty, m_deadline);
        for (const pid_t thread : traced.GetThreads())
        {
            readThread(thread);
        }
    }

    void readThread(pid_t thread)
    {
        const bool isAtFault = thread == m_faulty;
        // The crashed thread waits in its crash handler, so its present registers are not those of the crash.
        const std::optional<Linux::Registers> registers = isAtFault && m_crashed
                                                              ? Linux::ReadSignalContext(m_process, m_crashed->context)
                                                              : Linux::CTracedThreads::ReadRegisters(thread);
        if (!registers)
        {
            return;
        }
        SThreadStack& stack = m_stacks.emplace_back();
        stack.thread = static_cast<std::uint64_t>(thread);
        stack.isAtFault = isAtFault;
        for (const std::uint64_t address : unwind(thread, *registers))
        {
            stack.frames.emplace_back().address = address;
        }
    }

    /// Innermost first, at least one.
    std::vector<std::uint64_t> unwind(pid_t thread, const Linux::Registers& registers) const
    {
        const std::uint64_t innermost = registers[Linux::c_InstructionRegister];
        std::vector<std::uint64_t> addresses;
        if (m_unwinder)
        {
            addresses = m_unwinder->Unwind(thread, findCaller(registers), m_deadline);
        }
        if (addresses.empty() || addresses.front() != innermost)
        {
            addresses.insert(addresses.begin(), innermost);
        }
        addresses.resize(std::min<std::size_t>(addresses.size(), SThreadStack::sc_uiMostFrames));
        return addresses;
    }

    /// If the thread has called an address without code, such as null, returns the registers of the caller. No unwind
    /// table covers that address, but the return address is on top of the stack. Otherwise returns the registers
    /// unchanged.
    Linux::Registers findCaller(Linux::Registers registers) const
    {
        if (findPlace(m_places, registers[Linux::c_InstructionRegister]) == nullptr)
        {
            const std::optional<std::uint64_t> caller = Linux::ReadWord(m_process, registers[Linux::c_StackRegister]);
            if (caller && findPlace(m_places, *caller) != nullptr)
            {
                registers[Linux::c_InstructionRegister] = *caller;
                registers[Linux::c_StackRegister] += sizeof(*caller);
            }
        }
        return registers;
    }

    void name(SThreadStack& stack) const
    {
        for (SStackFrame& frame : stack.frames)
        {
            findModule(m_places, frame);
            if (m_unwinder && std::chrono::steady_clock::now() < m_deadline)
            {
                m_unwinder->Name(frame, &frame != &stack.frames.front());
            }
        }
    }

    const pid_t m_process;
    const std::optional<SCrashedThread>& m_crashed;
    const pid_t m_faulty;
    const Deadline m_deadline = std::chrono::steady_clock::now() + c_LongestReading;
    const std::vector<SPlace> m_places = readPlaces(m_process);
    std::unique_ptr<Linux::CUnwinder> m_unwinder;
    std::vector<SThreadStack> m_stacks;
};

} // namespace

std::vector<LbOs::SThreadStack> LbOs::ReadStacks(const CChildProcess& child,
                                                 const std::optional<SCrashedThread>& crashed)
{
    return CReading(static_cast<pid_t>(child.GetId()), crashed).Read();
}
