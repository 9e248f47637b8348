/// Memory between processes, known by name.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "base/lbexport.h"

namespace LbOs
{

/// Keeps a named block of zeroed memory in existence. Only processes of the same user can map it. Names are letters,
/// digits and "-". Any thread.
class LB_API CSharedMemory
{
public:
    /// A new block. Null when there is one of that name, or on any other failure; `failure` then says what the system
    /// has refused. The name goes with the object, or with the present process, however that ends; views that others
    /// have of the block stay valid.
    static std::unique_ptr<CSharedMemory> Create(const std::wstring& name, std::size_t size,
                                                 std::wstring* failure = nullptr);

    ~CSharedMemory();

    CSharedMemory(const CSharedMemory&) = delete;
    CSharedMemory& operator=(const CSharedMemory&) = delete;

private:
    struct SState;
    explicit CSharedMemory(std::unique_ptr<SState> state);

    std::unique_ptr<SState> m_state;
};

enum class EMemoryAccess
{
    Read,
    Write ///< and read
};

/// The first `size` bytes of the block of that name, for as long as a copy of the pointer lives. Null when there is no
/// such block, a smaller one, or one that may not be opened. Any thread.
LB_API std::shared_ptr<void> MapSharedMemory(const std::wstring& name, std::size_t size, EMemoryAccess access);

} // namespace LbOs
