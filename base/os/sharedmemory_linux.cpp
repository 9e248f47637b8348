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

/// A System V segment. It has no descriptor that a test could close, and no process can shrink it and thereby crash its
/// users.
struct CSharedMemory::SState
{
    std::string path;
    std::size_t size = 0;
    int segment = -1;
    std::shared_ptr<void> block; ///< attached, which keeps the segment alive
    Linux::CNamedFile file;      ///< a symbolic link that contains the ids of owner and segment
};

namespace
{

/// Forks made by a test do not inherit the view, because a surviving fork would keep the segment alive.
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

/// Creates a segment that vanishes with the last attached process; its id remains usable for other processes until
/// then. -1 on failure.
int makeSegment(const char* path, std::size_t size, std::shared_ptr<void>& block)
{
    constexpr int c_New = IPC_CREAT | IPC_EXCL | S_IRUSR | S_IWUSR;
    // If this process is killed before IPC_RMID, the keeper process (keeper.h) finds the segment by this key and
    // removes it. If another segment has the key, this one gets none.
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

int toFlags(EMemoryAccess access)
{
    return access == EMemoryAccess::Write ? 0 : SHM_RDONLY;
}

/// The contents of a link of the current user.
struct SPlace
{
    pid_t owner = 0;
    int segment = -1;

    bool operator==(const SPlace&) const = default;
};

/// Reads the link. If another user owns it, the result has no segment. The link also contains the id of the process
/// that created the segment, because the system reuses the ids of segments.
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

/// The size of the block; 0 if there is none.
std::size_t getBlockSize(const SPlace& place)
{
    shmid_ds status = {};
    const bool isBlock = place.segment >= 0 && shmctl(place.segment, IPC_STAT, &status) == 0 &&
                         status.shm_cpid == place.owner && status.shm_perm.cuid == geteuid();
    return isBlock ? status.shm_segsz : 0;
}

} // namespace

CSharedMemory::CSharedMemory(std::unique_ptr<SState> state) : m_state(std::move(state)) {}

CSharedMemory::~CSharedMemory() = default;

std::unique_ptr<CSharedMemory> CSharedMemory::Create(const std::wstring& name, std::size_t size, std::wstring* failure)
{
    auto state = std::make_unique<SState>();
    state->path = Linux::ToObjectPath(name);
    state->size = size;
    state->file = Linux::CNamedFile(state->path, failure, [&state, failure](const char* path) {
        state->segment = makeSegment(path, state->size, state->block);
        const std::string place = std::to_string(getpid()) + "/" + std::to_string(state->segment);
        const bool isMade = state->segment >= 0 && symlink(place.c_str(), path) == 0;
        if (!isMade)
        {
            Linux::DescribeFailure(failure, state->segment < 0 ? "shmget, shmat" : "symlink");
        }
        return isMade;
    });
    return state->file.Exists() ? std::unique_ptr<CSharedMemory>(new CSharedMemory(std::move(state))) : nullptr;
}

std::shared_ptr<void> CSharedMemory::Map(EMemoryAccess access) const
{
    return attach(m_state->segment, toFlags(access), m_state->size);
}

bool CSharedMemory::IsNamed() const
{
    return readOwnLink(m_state->path) == SPlace{getpid(), m_state->segment};
}

std::shared_ptr<void> MapSharedMemory(const std::wstring& name, std::size_t size, EMemoryAccess access)
{
    const SPlace place = readOwnLink(Linux::ToObjectPath(name));
    const std::size_t blockSize = getBlockSize(place);
    return blockSize != 0 && blockSize >= size ? attach(place.segment, toFlags(access), size) : nullptr;
}

CSharedView::CSharedView(const std::wstring& name)
{
    const SPlace place = readOwnLink(Linux::ToObjectPath(name));
    const std::size_t size = getBlockSize(place);
    const void* const view = size == 0 ? nullptr : shmat(place.segment, nullptr, SHM_RDONLY);
    if (size != 0 && view != reinterpret_cast<void*>(-1))
    {
        m_bytes = {static_cast<const std::byte*>(view), size};
    }
}

CSharedView::~CSharedView()
{
    if (!m_bytes.empty())
    {
        shmdt(m_bytes.data());
    }
}

CSharedView::CSharedView(CSharedView&& other) noexcept : m_bytes(std::exchange(other.m_bytes, {})) {}

CSharedView& CSharedView::operator=(CSharedView&& other) noexcept
{
    std::swap(m_bytes, other.m_bytes);
    return *this;
}

} // namespace LbOs
