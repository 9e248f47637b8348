#include "base/os/dumps.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include <elf.h>
#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include "base/os/childprocess.h"
#include "base/os/linux/corenotes.h"
#include "base/os/linux/descriptor.h"
#include "base/os/linux/memorymap.h"
#include "base/os/linux/systempath.h"
#include "base/os/linux/tracedthreads.h"

namespace
{

using namespace LbOs;
using Linux::c_PageSize;
using Linux::Deadline;
using Linux::SMemoryRange;

constexpr std::size_t c_PagesAtOnce = 256;

std::wstring describe(int error)
{
    switch (error)
    {
    case ENOENT:
    case ENOTDIR:
        return L"den Ordner gibt es nicht";
    case EACCES:
    case EPERM:
    case EROFS:
        return L"der Zugriff ist nicht erlaubt";
    case ENOSPC:
    case EDQUOT:
        return L"der Datenträger ist voll";
    case EFBIG:
        return L"die Datei wird zu groß";
    case ETIME:
        return L"die Zeit reichte nicht";
    case ESRCH:
        return L"der Prozess lässt sich nicht anhalten";
    default:
        return L"Systemfehler " + std::to_wstring(error);
    }
}

/// A part of the process's memory, and how much of it the core contains.
struct SSegment
{
    const SMemoryRange& range;
    std::uint64_t size = 0;   ///< of the content in the core
    bool isSparse = false;    ///< unchanged pages are zeros and need no space on the disk
    std::uint64_t offset = 0; ///< in the core
};

/// A core of a process whose threads are stopped. Functions that return int return 0 or the system's error number.
class CCore
{
public:
    CCore(pid_t process, int file, Deadline deadline)
        : m_process(process), m_file(file), m_deadline(deadline), m_pages(process),
          m_ranges(Linux::ReadMemoryRanges(process))
    {
    }

    int Write(const std::vector<pid_t>& threads, const std::optional<SCrashedThread>& crashed)
    {
        const std::string notes = Linux::MakeCoreNotes(m_process, threads, crashed, m_ranges);
        std::vector<SSegment> segments;
        for (const SMemoryRange& range : m_ranges)
        {
            segments.push_back(choose(range));
        }
        const std::uint64_t end = place(notes.size(), segments);
        int error = writeHead(notes, segments);
        for (const SSegment& segment : segments)
        {
            error = error != 0 ? error : writeMemory(segment);
        }
        // If the core ends with a hole, no write has extended the file to its full size.
        return error == 0 && ftruncate(m_file, static_cast<off_t>(end)) != 0 ? errno : error;
    }

private:
    /// Debuggers read unchanged parts of a mapped file from the file, so the core contains only the file's first page,
    /// by which debuggers recognise the file.
    SSegment choose(const SMemoryRange& range) const
    {
        const bool isHidden = !range.isReadable || (range.isShared && !range.path.empty());
        if (isHidden)
        {
            return {range};
        }
        const std::uint64_t all = range.end - range.start;
        if (range.path.empty())
        {
            return {range, all, true};
        }
        return hasChanged(range) ? SSegment{range, all} : SSegment{range, range.offset == 0 ? c_PageSize : 0};
    }

    bool hasChanged(const SMemoryRange& range) const
    {
        for (std::uint64_t start = range.start; start < range.end; start += c_PagesAtOnce * c_PageSize)
        {
            const std::vector<bool> changed = m_pages.FindChanged(start, countPages(start, range.end));
            if (std::ranges::find(changed, true) != changed.end())
            {
                return true;
            }
        }
        return false;
    }

    static std::size_t countPages(std::uint64_t start, std::uint64_t end)
    {
        return static_cast<std::size_t>(std::min<std::uint64_t>((end - start) / c_PageSize, c_PagesAtOnce));
    }

    static std::uint64_t getHeadSize(std::size_t segmentCount)
    {
        // Adds one segment for the notes.
        return sizeof(Elf64_Ehdr) + (segmentCount + 1) * sizeof(Elf64_Phdr);
    }

    /// Returns the size of the core.
    static std::uint64_t place(std::size_t noteSize, std::vector<SSegment>& segments)
    {
        const std::uint64_t head = getHeadSize(segments.size()) + noteSize;
        std::uint64_t offset = (head + c_PageSize - 1) / c_PageSize * c_PageSize;
        for (SSegment& segment : segments)
        {
            segment.offset = offset;
            offset += segment.size;
        }
        return offset;
    }

    int writeHead(const std::string& notes, const std::vector<SSegment>& segments) const
    {
        Elf64_Ehdr file = {};
        std::memcpy(file.e_ident, ELFMAG, SELFMAG);
        file.e_ident[EI_CLASS] = ELFCLASS64;
        file.e_ident[EI_DATA] = ELFDATA2LSB;
        file.e_ident[EI_VERSION] = EV_CURRENT;
        file.e_type = ET_CORE;
        file.e_machine = EM_X86_64;
        file.e_version = EV_CURRENT;
        file.e_phoff = sizeof(file);
        file.e_ehsize = sizeof(file);
        file.e_phentsize = sizeof(Elf64_Phdr);
        // By default, the kernel allows fewer mappings than the field can count.
        file.e_phnum = static_cast<Elf64_Half>(segments.size() + 1);
        Elf64_Phdr note = {};
        note.p_type = PT_NOTE;
        note.p_offset = getHeadSize(segments.size());
        note.p_filesz = notes.size();
        std::string bytes(reinterpret_cast<const char*>(&file), sizeof(file));
        bytes.append(reinterpret_cast<const char*>(&note), sizeof(note));
        for (const SSegment& segment : segments)
        {
            const Elf64_Phdr header = describeSegment(segment);
            bytes.append(reinterpret_cast<const char*>(&header), sizeof(header));
        }
        return writeAt(0, bytes + notes);
    }

    static Elf64_Phdr describeSegment(const SSegment& segment)
    {
        Elf64_Phdr header = {};
        header.p_type = PT_LOAD;
        header.p_flags = (segment.range.isReadable ? PF_R : 0U) | (segment.range.isWritable ? PF_W : 0U) |
                         (segment.range.isExecutable ? PF_X : 0U);
        header.p_offset = segment.offset;
        header.p_vaddr = segment.range.start;
        header.p_filesz = segment.size;
        header.p_memsz = segment.range.end - segment.range.start;
        header.p_align = c_PageSize;
        return header;
    }

    int writeMemory(const SSegment& segment)
    {
        const std::uint64_t end = segment.range.start + segment.size;
        for (std::uint64_t start = segment.range.start; start < end; start += c_PagesAtOnce * c_PageSize)
        {
            const std::size_t count = countPages(start, end);
            const std::vector<bool> wanted =
                segment.isSparse ? m_pages.FindChanged(start, count) : std::vector<bool>(count, true);
            const int error =
                std::chrono::steady_clock::now() < m_deadline ? writePages(segment, start, wanted) : ETIME;
            if (error != 0)
            {
                return error;
            }
        }
        return 0;
    }

    /// Pages that cannot be read stay zeros: the system hides some of its own pages.
    int writePages(const SSegment& segment, std::uint64_t start, const std::vector<bool>& wanted)
    {
        for (std::size_t first = 0; first < wanted.size();)
        {
            const auto begin = wanted.begin() + static_cast<std::ptrdiff_t>(first);
            const auto count = static_cast<std::size_t>(std::find(begin, wanted.end(), !*begin) - begin);
            const std::uint64_t address = start + first * c_PageSize;
            const int error =
                *begin ? copy(address, count * c_PageSize, segment.offset + address - segment.range.start) : 0;
            if (error != 0)
            {
                return error;
            }
            first += count;
        }
        return 0;
    }

    int copy(std::uint64_t address, std::size_t size, std::uint64_t offset)
    {
        m_buffer.resize(size);
        const iovec local = {m_buffer.data(), size};
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        const iovec remote = {reinterpret_cast<void*>(address), size};
        const ssize_t count = process_vm_readv(m_process, &local, 1, &remote, 1, 0);
        return count > 0 ? writeAt(offset, std::string_view(m_buffer).substr(0, static_cast<std::size_t>(count))) : 0;
    }

    int writeAt(std::uint64_t offset, std::string_view bytes) const
    {
        while (!bytes.empty())
        {
            const ssize_t count =
                Linux::Retry([&] { return pwrite(m_file, bytes.data(), bytes.size(), static_cast<off_t>(offset)); });
            if (count <= 0)
            {
                return count < 0 ? errno : ENOSPC;
            }
            bytes.remove_prefix(static_cast<std::size_t>(count));
            offset += static_cast<std::uint64_t>(count);
        }
        return 0;
    }

    const pid_t m_process;
    const int m_file;
    const Deadline m_deadline;
    const Linux::CPageStates m_pages;
    const std::vector<SMemoryRange> m_ranges;
    std::string m_buffer;
};

int writeCore(pid_t process, const std::optional<SCrashedThread>& crashed, int file, Deadline deadline)
{
    const auto faulty = crashed ? static_cast<pid_t>(crashed->thread) : process;
    const Linux::CTracedThreads traced(process, faulty, deadline);
    const std::vector<pid_t> threads = traced.GetThreads();
    return threads.empty() ? ESRCH : CCore(process, file, deadline).Write(threads, crashed);
}

} // namespace

LbOs::SDump LbOs::WriteDump(const CChildProcess& child, const std::optional<SCrashedThread>& crashed,
                            const std::wstring& path, std::chrono::milliseconds longest)
{
    const Deadline deadline = std::chrono::steady_clock::now() + longest;
    const std::wstring file = path + L".core";
    const std::string name = Linux::ToSystemPath(file);
    // Removes an existing file, so that the new one gets the right owner and rights, and no link is followed.
    unlink(name.c_str());
    constexpr int c_Flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
    const Linux::CDescriptor descriptor = Linux::AboveStandard(open(name.c_str(), c_Flags, S_IRUSR | S_IWUSR));
    const int error =
        descriptor.IsOpen() ? writeCore(static_cast<pid_t>(child.GetId()), crashed, descriptor.Get(), deadline) : errno;
    if (error == 0)
    {
        return {file, L""};
    }
    if (descriptor.IsOpen())
    {
        unlink(name.c_str());
    }
    return {L"", describe(error)};
}
