#include "base/os/sharedmemory.h"

#include <algorithm>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include "base/os/namedfile_linux.h"

namespace LbOs
{

struct CSharedMemory::SState
{
    Linux::CNamedFile file;
};

namespace
{

/// Memory that there must be from the start. The rest comes as it is used: most blocks are hardly filled.
constexpr std::size_t c_ReservedSize = 8192;

bool makeBlock(const char* path, std::size_t size)
{
    const Linux::CDescriptor file(open(path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    if (!file.IsOpen())
    {
        return false;
    }
    const bool isMade = ftruncate(file.Get(), static_cast<off_t>(size)) == 0 &&
                        posix_fallocate(file.Get(), 0, static_cast<off_t>(std::min(size, c_ReservedSize))) == 0;
    if (!isMade)
    {
        unlink(path);
    }
    return isMade;
}

} // namespace

CSharedMemory::CSharedMemory(std::unique_ptr<SState> state) : m_state(std::move(state)) {}

CSharedMemory::~CSharedMemory() = default;

std::unique_ptr<CSharedMemory> CSharedMemory::Create(const std::wstring& name, std::size_t size)
{
    auto state = std::make_unique<SState>();
    state->file =
        Linux::CNamedFile(Linux::ToObjectPath(name), [size](const char* path) { return makeBlock(path, size); });
    return state->file.Exists() ? std::unique_ptr<CSharedMemory>(new CSharedMemory(std::move(state))) : nullptr;
}

std::shared_ptr<void> MapSharedMemory(const std::wstring& name, std::size_t size, EMemoryAccess access)
{
    const bool isWritable = access == EMemoryAccess::Write;
    const Linux::CDescriptor file =
        Linux::OpenOwnFile(Linux::ToObjectPath(name), isWritable ? O_RDWR : O_RDONLY, S_IFREG);
    struct stat status = {};
    if (!file.IsOpen() || fstat(file.Get(), &status) != 0 || static_cast<std::size_t>(status.st_size) < size)
    {
        return nullptr;
    }
    void* const view = mmap(nullptr, size, isWritable ? PROT_READ | PROT_WRITE : PROT_READ, MAP_SHARED, file.Get(), 0);
    if (view == MAP_FAILED)
    {
        return nullptr;
    }
    return {view, [size](void* memory) { munmap(memory, size); }};
}

} // namespace LbOs
