#include "base/os/sharedmemory.h"

#include <cstdlib>
#include <string>
#include <utility>

#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/os/linux/namedfile.h"

namespace LbOs
{

/// A segment of the system's shared memory: it has no descriptor that a test could close, and nobody can cut it, which
/// would take down whoever uses it.
struct CSharedMemory::SState
{
    std::shared_ptr<void> block; ///< attached, which keeps the segment in existence
    Linux::CNamedFile file;      ///< a link that says which it is
};

namespace
{

/// Not for the copies that a test makes of the process: whoever of them stays would keep the segment in existence.
std::shared_ptr<void> attach(int segment, int flags, std::size_t size)
{
    void* const view = shmat(segment, nullptr, flags);
    if (view == reinterpret_cast<void*>(-1))
    {
        return nullptr;
    }
    madvise(view, size, MADV_DONTFORK);
    return {view, [](void* attached) { shmdt(attached); }};
}

/// A new segment that goes with the last process that has it attached; the others find it by its number all the same.
/// -1 without one.
int makeSegment(const char* path, std::size_t size, std::shared_ptr<void>& block)
{
    constexpr int c_New = IPC_CREAT | IPC_EXCL | S_IRUSR | S_IWUSR;
    // By its key the keeper finds what is left when the present process is killed in the midst of this.
    int segment = shmget(Linux::ToMemoryKey(path), size, c_New);
    if (segment < 0 && errno == EEXIST)
    {
        segment = shmget(IPC_PRIVATE, size, c_New);
    }
    if (segment >= 0)
    {
        block = attach(segment, 0, size);
        shmctl(segment, IPC_RMID, nullptr);
    }
    return block ? segment : -1;
}

/// Whom a link of the present user leads to.
struct SPlace
{
    pid_t owner = 0;
    int segment = -1;
};

/// The owner makes it sure: numbers of segments come again.
SPlace readOwnLink(const std::string& path)
{
    char target[64] = {};
    struct stat status = {};
    const bool isOwn = lstat(path.c_str(), &status) == 0 && status.st_uid == geteuid();
    if (!isOwn || readlink(path.c_str(), target, sizeof(target) - 1) <= 0)
    {
        return {};
    }
    char* end = nullptr;
    const auto owner = static_cast<pid_t>(std::strtol(target, &end, 10));
    return *end == '/' ? SPlace{owner, static_cast<int>(std::strtol(end + 1, nullptr, 10))} : SPlace();
}

bool isBlock(const SPlace& place, std::size_t size)
{
    shmid_ds status = {};
    return place.segment >= 0 && shmctl(place.segment, IPC_STAT, &status) == 0 && status.shm_cpid == place.owner &&
           status.shm_perm.cuid == geteuid() && status.shm_segsz >= size;
}

} // namespace

CSharedMemory::CSharedMemory(std::unique_ptr<SState> state) : m_state(std::move(state)) {}

CSharedMemory::~CSharedMemory() = default;

std::unique_ptr<CSharedMemory> CSharedMemory::Create(const std::wstring& name, std::size_t size, std::wstring* failure)
{
    auto state = std::make_unique<SState>();
    state->file = Linux::CNamedFile(Linux::ToObjectPath(name), failure, [&state, size, failure](const char* path) {
        const int segment = makeSegment(path, size, state->block);
        const std::string place = std::to_string(getpid()) + "/" + std::to_string(segment);
        const bool isMade = segment >= 0 && symlink(place.c_str(), path) == 0;
        if (!isMade)
        {
            Linux::DescribeFailure(failure, segment < 0 ? "shmget, shmat" : "symlink");
        }
        return isMade;
    });
    return state->file.Exists() ? std::unique_ptr<CSharedMemory>(new CSharedMemory(std::move(state))) : nullptr;
}

std::shared_ptr<void> MapSharedMemory(const std::wstring& name, std::size_t size, EMemoryAccess access)
{
    const SPlace place = readOwnLink(Linux::ToObjectPath(name));
    return isBlock(place, size) ? attach(place.segment, access == EMemoryAccess::Write ? 0 : SHM_RDONLY, size)
                                : nullptr;
}

} // namespace LbOs
