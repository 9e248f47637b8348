/// Named memory shared by processes.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

#include "base/lbexport.h"

namespace LbOs
{

enum class EMemoryAccess
{
    Read,
    Write ///< also allows reading
};

/// Keeps a named block of zeroed memory alive. Only processes of the same user can map it. A name consists of letters,
/// digits and "-". Any thread.
class LB_API CSharedMemory
{
public:
    /// Creates a block. Null on failure, also if the name exists; then `failure`, if not null, receives the reason. The
    /// name is removed with the object, or when the current process ends in any way; existing views of the block stay
    /// valid.
    static std::unique_ptr<CSharedMemory> Create(const std::wstring& name, std::size_t size,
                                                 std::wstring* failure = nullptr);

    ~CSharedMemory();

    /// The whole block, valid as long as a copy of the pointer exists. Works even if the block has lost its name. Null
    /// on failure.
    std::shared_ptr<void> Map(EMemoryAccess access) const;

    /// True if the block still has its name. On Linux a name is a file, which the user's processes can remove.
    bool IsNamed() const;

    CSharedMemory(const CSharedMemory&) = delete;
    CSharedMemory& operator=(const CSharedMemory&) = delete;

private:
    struct SState;
    explicit CSharedMemory(std::unique_ptr<SState> state);

    std::unique_ptr<SState> m_state;
};

/// The first `size` bytes of the named block, valid as long as a copy of the pointer exists. Null if the current user
/// has no such block, if the block is smaller, or if access is denied. Any thread.
LB_API std::shared_ptr<void> MapSharedMemory(const std::wstring& name, std::size_t size, EMemoryAccess access);

/// A view of a whole named block, for reading. Keeps the block alive without heap memory; forks of the process inherit
/// the view. Any thread.
class LB_API CSharedView
{
public:
    /// No view.
    CSharedView() = default;

    /// No view if the current user has no such block, or access is denied.
    explicit CSharedView(const std::wstring& name);

    ~CSharedView();

    CSharedView(CSharedView&& other) noexcept;
    CSharedView& operator=(CSharedView&& other) noexcept;

    /// The block, possibly with zeros after it; empty without a view.
    std::span<const std::byte> GetBytes() const noexcept { return m_bytes; }

private:
    std::span<const std::byte> m_bytes;
};

} // namespace LbOs
