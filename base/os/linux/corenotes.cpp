#include "base/os/linux/corenotes.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>

#include <elf.h>
#include <sys/procfs.h>
#include <sys/ptrace.h>
#include <sys/user.h>

#include "base/os/linux/tracedthreads.h"

namespace LbOs::Linux
{

namespace
{

template<typename T>
std::string toBytes(const T& value)
{
    return {reinterpret_cast<const char*>(&value), sizeof(value)};
}

/// Appends one note. Pads its parts to multiples of four bytes.
void addNote(std::uint32_t type, const std::string& name, const std::string& content, std::string& notes)
{
    const auto padded = [](std::string bytes) {
        bytes.resize((bytes.size() + 3) / 4 * 4);
        return bytes;
    };
    Elf64_Nhdr header = {};
    header.n_namesz = static_cast<Elf64_Word>(name.size() + 1);
    header.n_descsz = static_cast<Elf64_Word>(content.size());
    header.n_type = type;
    notes += toBytes(header) + padded(name + '\0') + padded(content);
}

void addNote(std::uint32_t type, const std::string& content, std::string& notes)
{
    addNote(type, "CORE", content, notes);
}

std::string readFile(pid_t process, const std::string& name)
{
    std::ifstream file("/proc/" + std::to_string(process) + "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// Replaces the registers of the crash handler by those of the crash.
void restore(const Registers& crash, user_regs_struct& all)
{
    decltype(&user_regs_struct::rax) const c_Order[] = {
        &user_regs_struct::rax, &user_regs_struct::rdx, &user_regs_struct::rcx, &user_regs_struct::rbx,
        &user_regs_struct::rsi, &user_regs_struct::rdi, &user_regs_struct::rbp, &user_regs_struct::rsp,
        &user_regs_struct::r8,  &user_regs_struct::r9,  &user_regs_struct::r10, &user_regs_struct::r11,
        &user_regs_struct::r12, &user_regs_struct::r13, &user_regs_struct::r14, &user_regs_struct::r15,
        &user_regs_struct::rip};
    static_assert(std::size(c_Order) == std::tuple_size_v<Registers>);
    for (std::size_t index = 0; index < crash.size(); ++index)
    {
        all.*c_Order[index] = crash[index];
    }
    // -1 means: not inside a system call. The crash handler is inside one now, but the crash was not.
    all.orig_rax = ~std::uint64_t{0};
}

void addThread(pid_t process, pid_t thread, const std::optional<SCrashedThread>& crashed, std::string& notes)
{
    user_regs_struct registers = {};
    user_fpregs_struct floating = {};
    ptrace(PTRACE_GETREGS, thread, nullptr, &registers);
    const bool hasFloating = ptrace(PTRACE_GETFPREGS, thread, nullptr, &floating) == 0;
    elf_prstatus status = {};
    status.pr_pid = thread;
    status.pr_fpvalid = hasFloating ? 1 : 0;
    if (crashed && static_cast<pid_t>(crashed->thread) == thread)
    {
        status.pr_info.si_signo = static_cast<int>(crashed->code);
        status.pr_cursig = static_cast<short>(crashed->code);
        if (const std::optional<Registers> crash = ReadSignalContext(process, crashed->context))
        {
            restore(*crash, registers);
        }
    }
    static_assert(sizeof(status.pr_reg) == sizeof(registers));
    std::memcpy(&status.pr_reg, &registers, sizeof(registers));
    addNote(NT_PRSTATUS, toBytes(status), notes);
    if (hasFloating)
    {
        addNote(NT_FPREGSET, toBytes(floating), notes);
    }
}

void addProcess(pid_t process, std::string& notes)
{
    elf_prpsinfo info = {};
    info.pr_sname = 't';
    info.pr_pid = process;
    std::string name = readFile(process, "comm");
    std::erase(name, '\n');
    name.copy(info.pr_fname, sizeof(info.pr_fname) - 1);
    std::string arguments = readFile(process, "cmdline");
    std::ranges::replace(arguments, '\0', ' ');
    arguments.copy(info.pr_psargs, sizeof(info.pr_psargs) - 1);
    addNote(NT_PRPSINFO, toBytes(info), notes);
}

/// Lists the mapped files, from which debuggers read what the core omits.
void addFiles(const std::vector<SMemoryRange>& ranges, std::string& notes)
{
    std::uint64_t count = 0;
    std::string places;
    std::string paths;
    for (const SMemoryRange& range : ranges)
    {
        if (!range.path.empty())
        {
            ++count;
            places += toBytes(range.start) + toBytes(range.end) + toBytes(range.offset / c_PageSize);
            paths += range.path + '\0';
        }
    }
    addNote(NT_FILE, toBytes(count) + toBytes(c_PageSize) + places + paths, notes);
}

} // namespace

std::string MakeCoreNotes(pid_t process, const std::vector<pid_t>& threads,
                          const std::optional<SCrashedThread>& crashed, const std::vector<SMemoryRange>& ranges)
{
    std::string notes;
    for (const pid_t thread : threads)
    {
        addThread(process, thread, crashed, notes);
        if (thread == threads.front())
        {
            addProcess(process, notes);
        }
    }
    addNote(NT_AUXV, readFile(process, "auxv"), notes);
    addFiles(ranges, notes);
    return notes;
}

} // namespace LbOs::Linux
