/// Files that take what child processes print.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/lbexport.h"

namespace LbOs
{

/// A file in the folder for temporary files that a child process writes to; see SChildOptions::errors. Used by one
/// thread at a time.
class LB_API CChildOutput
{
public:
    /// Creates an empty file, which only the present user can read. It is removed with the object or with the present
    /// process, however that ends. `name` is the file's name without a folder. Null on failure. Any thread.
    static std::unique_ptr<CChildOutput> Create(const std::wstring& name);

    ~CChildOutput();

    CChildOutput(const CChildOutput&) = delete;
    CChildOutput& operator=(const CChildOutput&) = delete;

    const std::wstring& GetPath() const noexcept;

    /// Bytes in the file; 0 if it cannot be read. Costs one system call.
    std::uint64_t GetSize() const;

    /// Up to `most` of the last bytes of the file, but none before `begin`. Empty on failure.
    std::string ReadEnd(std::uint64_t begin, std::size_t most) const;

    /// Removes what is in the file. The child goes on at its beginning.
    void Clear();

private:
    struct SState;
    explicit CChildOutput(std::unique_ptr<SState> state);

    std::unique_ptr<SState> m_state;
};

} // namespace LbOs
