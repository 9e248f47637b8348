#include "base/os/sharedmemory.h"

#include <utility>

#include "base/os/windows/namedobject.h"

namespace LbOs
{

struct CSharedMemory::SState
{
    Windows::Handle mapping;
    std::size_t size = 0;
};

namespace
{

/// Null on failure, or if the block has fewer than `size` bytes. The view keeps the block alive, so the handle can be
/// closed.
std::shared_ptr<void> mapView(HANDLE mapping, std::size_t size, DWORD rights)
{
    void* const view = mapping == nullptr ? nullptr : MapViewOfFile(mapping, rights, 0, 0, size);
    if (view == nullptr)
    {
        return nullptr;
    }
    return {view, [](void* memory) { UnmapViewOfFile(memory); }};
}

DWORD toRights(EMemoryAccess access)
{
    return access == EMemoryAccess::Write ? FILE_MAP_WRITE | FILE_MAP_READ : FILE_MAP_READ;
}

/// A block of the current user; null if there is none of this name, or access is denied.
Windows::Handle openOwn(const std::wstring& name, DWORD rights)
{
    const std::wstring objectName = Windows::ToObjectName(name);
    Windows::Handle mapping(objectName.empty() ? nullptr
                                               : OpenFileMappingW(rights | READ_CONTROL, FALSE, objectName.c_str()));
    return mapping && Windows::IsOwn(mapping.get()) ? std::move(mapping) : Windows::Handle();
}

} // namespace

CSharedMemory::CSharedMemory(std::unique_ptr<SState> state) : m_state(std::move(state)) {}

CSharedMemory::~CSharedMemory() = default;

std::unique_ptr<CSharedMemory> CSharedMemory::Create(const std::wstring& name, std::size_t size, std::wstring* failure)
{
    const std::wstring objectName = Windows::ToObjectName(name);
    auto state = std::make_unique<SState>();
    state->size = size;
    if (!objectName.empty())
    {
        state->mapping = Windows::CreateNew([&](SECURITY_ATTRIBUTES* access) {
            return CreateFileMappingW(INVALID_HANDLE_VALUE, access, PAGE_READWRITE, static_cast<DWORD>(size >> 32U),
                                      static_cast<DWORD>(size), objectName.c_str());
        });
    }
    if (!state->mapping)
    {
        Windows::DescribeFailure(failure);
    }
    return state->mapping ? std::unique_ptr<CSharedMemory>(new CSharedMemory(std::move(state))) : nullptr;
}

std::shared_ptr<void> CSharedMemory::Map(EMemoryAccess access) const
{
    return mapView(m_state->mapping.get(), m_state->size, toRights(access));
}

bool CSharedMemory::IsNamed() const
{
    // The system keeps the name as long as there is a handle.
    return true;
}

std::shared_ptr<void> MapSharedMemory(const std::wstring& name, std::size_t size, EMemoryAccess access)
{
    const DWORD rights = toRights(access);
    return mapView(openOwn(name, rights).get(), size, rights);
}

CSharedView::CSharedView(const std::wstring& name)
{
    const Windows::Handle mapping = openOwn(name, FILE_MAP_READ);
    const void* const view = mapping ? MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, 0) : nullptr;
    MEMORY_BASIC_INFORMATION pages = {};
    if (view != nullptr && VirtualQuery(view, &pages, sizeof(pages)) != 0)
    {
        m_bytes = {static_cast<const std::byte*>(view), pages.RegionSize};
    }
}

CSharedView::~CSharedView()
{
    if (!m_bytes.empty())
    {
        UnmapViewOfFile(m_bytes.data());
    }
}

CSharedView::CSharedView(CSharedView&& other) noexcept : m_bytes(std::exchange(other.m_bytes, {})) {}

CSharedView& CSharedView::operator=(CSharedView&& other) noexcept
{
    std::swap(m_bytes, other.m_bytes);
    return *this;
}

} // namespace LbOs
