#include "base/os/sharedmemory.h"

#include <algorithm>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/os/namedfile_linux.h"

namespace LbOs
{

struct CSharedMemory::SState
{
    Linux::CDescriptor memory;
    Linux::CNamedFile file; ///< a link to the memory
};

namespace
{

/// Memory that there must be from the start. The rest comes as it is used: most blocks are hardly filled.
constexpr std::size_t c_ReservedSize = 8192;

/// Without a name of its own, because only such memory can be kept from being cut: a broken process at the other end of
/// it could otherwise take this one down.
Linux::CDescriptor makeBlock(std::size_t size)
{
    Linux::CDescriptor memory(memfd_create("LuTestSuite", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    const bool isMade = memory.IsOpen() && fchmod(memory.Get(), S_IRUSR | S_IWUSR) == 0 &&
                        ftruncate(memory.Get(), static_cast<off_t>(size)) == 0 &&
                        posix_fallocate(memory.Get(), 0, static_cast<off_t>(std::min(size, c_ReservedSize))) == 0 &&
                        fcntl(memory.Get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_SEAL) == 0;
    return isMade ? std::move(memory) : Linux::CDescriptor();
}

/// Where any process of the same user finds the memory, for as long as the present one has it open.
std::string getPlace(const Linux::CDescriptor& memory)
{
    return "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(memory.Get());
}

/// What a link of the present user leads to; empty when there is none.
std::string readOwnLink(const std::string& path)
{
    char target[64];
    struct stat status = {};
    const bool isOwn = lstat(path.c_str(), &status) == 0 && status.st_uid == geteuid();
    const ssize_t length = isOwn ? readlink(path.c_str(), target, sizeof(target)) : -1;
    return length > 0 ? std::string(target, static_cast<std::size_t>(length)) : std::string();
}

/// The descriptor in the link may by now be that of another file, which is not to be mapped.
bool isBlock(const Linux::CDescriptor& memory, std::size_t size)
{
    struct stat status = {};
    if (!memory.IsOpen() || fstat(memory.Get(), &status) != 0 || static_cast<std::size_t>(status.st_size) < size)
    {
        return false;
    }
    const int seals = fcntl(memory.Get(), F_GET_SEALS);
    return seals != -1 && (seals & F_SEAL_SHRINK) != 0;
}

} // namespace

CSharedMemory::CSharedMemory(std::unique_ptr<SState> state) : m_state(std::move(state)) {}

CSharedMemory::~CSharedMemory() = default;

std::unique_ptr<CSharedMemory> CSharedMemory::Create(const std::wstring& name, std::size_t size)
{
    auto state = std::make_unique<SState>();
    state->memory = makeBlock(size);
    if (!state->memory.IsOpen())
    {
        return nullptr;
    }
    const std::string place = getPlace(state->memory);
    state->file = Linux::CNamedFile(Linux::ToObjectPath(name),
                                    [&place](const char* path) { return symlink(place.c_str(), path) == 0; });
    return state->file.Exists() ? std::unique_ptr<CSharedMemory>(new CSharedMemory(std::move(state))) : nullptr;
}

std::shared_ptr<void> MapSharedMemory(const std::wstring& name, std::size_t size, EMemoryAccess access)
{
    const bool isWritable = access == EMemoryAccess::Write;
    const Linux::CDescriptor memory =
        Linux::OpenOwnFile(readOwnLink(Linux::ToObjectPath(name)), isWritable ? O_RDWR : O_RDONLY, S_IFREG, 0);
    if (!isBlock(memory, size))
    {
        return nullptr;
    }
    void* const view =
        mmap(nullptr, size, isWritable ? PROT_READ | PROT_WRITE : PROT_READ, MAP_SHARED, memory.Get(), 0);
    if (view == MAP_FAILED)
    {
        return nullptr;
    }
    return {view, [size](void* mapped) { munmap(mapped, size); }};
}

} // namespace LbOs
