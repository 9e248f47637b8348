#include "base/os/pages.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "base/os/linux/cancellation.h"

namespace
{

// User addresses end here (47 bits); the last page is never mapped.
constexpr std::uintptr_t c_AddressEnd = 0x7FFFFFFFF000;
// The system never maps the first pages.
constexpr std::uintptr_t c_AddressBegin = 0x10000;

void* mapPages(void* address, std::size_t size, int flags) noexcept
{
    void* const pages = mmap(address, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | flags, -1, 0);
    return pages == MAP_FAILED ? nullptr : pages;
}

/// Reads the system's table of mappings without stdio, whose buffers come from the heap.
class CMapsReader
{
public:
    CMapsReader() noexcept : m_file(open("/proc/self/maps", O_RDONLY | O_CLOEXEC)) {}
    ~CMapsReader()
    {
        if (m_file >= 0)
        {
            close(m_file);
        }
    }
    CMapsReader(const CMapsReader&) = delete;
    CMapsReader& operator=(const CMapsReader&) = delete;

    /// Reads the next mapping; false at the end.
    bool Next(LbOs::SRegion& region) noexcept
    {
        if (!readNumber(region.begin, '-') || !readNumber(region.end, ' '))
        {
            return false;
        }
        const bool isReadable = readCharacter() == 'r';
        const bool isWritable = readCharacter() == 'w';
        region.isExecutable = readCharacter() == 'x';
        region.protection = static_cast<std::uint32_t>((isReadable ? PROT_READ : 0) | (isWritable ? PROT_WRITE : 0) |
                                                       (region.isExecutable ? PROT_EXEC : 0));
        region.isFree = false;
        return skipLine();
    }

private:
    int readCharacter() noexcept
    {
        if (m_position == m_length)
        {
            ssize_t count = -1;
            do
            {
                count = read(m_file, m_buffer, sizeof(m_buffer));
            }
            while (count < 0 && errno == EINTR);
            if (count <= 0)
            {
                return -1;
            }
            m_position = 0;
            m_length = static_cast<std::size_t>(count);
        }
        return static_cast<unsigned char>(m_buffer[m_position++]);
    }

    bool readNumber(std::uintptr_t& number, int end) noexcept
    {
        number = 0;
        int character = readCharacter();
        for (; character >= 0 && character != end; character = readCharacter())
        {
            const int digit = character <= '9' ? character - '0' : character - 'a' + 10;
            number = number * 16 + static_cast<std::uintptr_t>(digit);
        }
        return character == end;
    }

    bool skipLine() noexcept
    {
        int character = 0;
        do
        {
            character = readCharacter();
        }
        while (character >= 0 && character != '\n');
        return character == '\n';
    }

    const LbOs::Linux::CCancellationOff
        m_cancellationOff; ///< declared first: in effect while the file opens and closes
    int m_file;
    std::size_t m_position = 0;
    std::size_t m_length = 0;
    char m_buffer[4096];
};

} // namespace

const std::uint32_t LbOs::c_ProtectionReadExecute = PROT_READ | PROT_EXEC;
const std::uint32_t LbOs::c_ProtectionAll = PROT_READ | PROT_WRITE | PROT_EXEC;

void* LbOs::AllocatePages(std::size_t size) noexcept
{
    return mapPages(nullptr, size, 0);
}

void* LbOs::AllocatePagesAt(std::uintptr_t address, std::size_t size) noexcept
{
    void* const wanted = reinterpret_cast<void*>(address); // NOLINT(performance-no-int-to-ptr)
    void* const pages = mapPages(wanted, size, MAP_FIXED_NOREPLACE);
    if (pages != nullptr && pages != wanted)
    {
        // Kernels before 4.17 treat the address as a hint.
        munmap(pages, size);
        return nullptr;
    }
    return pages;
}

void LbOs::ReleasePages(void* pages, std::size_t size) noexcept
{
    munmap(pages, size);
}

void LbOs::VisitRegions(std::uintptr_t begin, std::uintptr_t end, FVisitRegion visit, void* context) noexcept
{
    const auto goOn = [=](const SRegion& region) {
        return region.begin == region.end || region.end <= begin || (region.begin < end && visit(region, context));
    };
    CMapsReader maps;
    SRegion mapping;
    std::uintptr_t gapBegin = c_AddressBegin;
    bool isAny = false;
    while (maps.Next(mapping) && mapping.begin < c_AddressEnd)
    {
        isAny = true;
        if (!goOn({gapBegin, mapping.begin, true, false, 0}) || !goOn(mapping))
        {
            return;
        }
        gapBegin = mapping.end;
    }
    if (isAny)
    {
        goOn({gapBegin, c_AddressEnd, true, false, 0});
    }
}

bool LbOs::QueryRegion(std::uintptr_t address, SRegion& region) noexcept
{
    if (address < c_AddressBegin || address >= c_AddressEnd)
    {
        return false;
    }
    const auto take = [](const SRegion& found, void* context) noexcept {
        *static_cast<SRegion*>(context) = found;
        return false;
    };
    region = {};
    VisitRegions(address, address + 1, take, &region);
    return region.end != 0;
}

LbOs::SPageSizes LbOs::GetPageSizes() noexcept
{
    const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return {size, size};
}

bool LbOs::ProtectPages(void* address, std::size_t size, std::uint32_t protection) noexcept
{
    const std::uintptr_t mask = GetPageSizes().page - 1;
    const auto begin = reinterpret_cast<std::uintptr_t>(address) & ~mask;
    const auto end = (reinterpret_cast<std::uintptr_t>(address) + size + mask) & ~mask;
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    return mprotect(reinterpret_cast<void*>(begin), end - begin, static_cast<int>(protection)) == 0;
}

void LbOs::FlushCode(void* address, std::size_t size) noexcept
{
    char* const begin = static_cast<char*>(address);
    __builtin___clear_cache(begin, begin + size);
}
