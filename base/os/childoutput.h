/// Files that receive the output of child processes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/lbexport.h"

namespace LbOs
{

/// A file in the temporary folder to which a child process writes; see SChildOptions::errors. Used by one thread at a
/// time.
class LB_API CChildOutput
{
public:
    /// Creates an empty file that only the current user can read. The file is removed by the destructor, or when the
    /// current process ends in any way. `name` is the file's name without a folder. Null on failure. Any thread.
    static std::unique_ptr<CChildOutput> Create(const std::wstring& name);

    ~CChildOutput();

    CChildOutput(const CChildOutput&) = delete;
    CChildOutput& operator=(const CChildOutput&) = delete;

    const std::wstring& GetPath() const noexcept;

    /// Bytes in the file; 0 if it cannot be read. Costs one system call.
    std::uint64_t GetSize() const;

    /// Up to `most` of the file's last bytes, but none before `begin`. Empty on failure.
    std::string ReadEnd(std::uint64_t begin, std::size_t most) const;

    /// Empties the file. The child's next output goes to the beginning of the file.
    void Clear();

private:
    struct SState;
    explicit CChildOutput(std::unique_ptr<SState> state);

    std::unique_ptr<SState> m_state;
};

} // namespace LbOs
