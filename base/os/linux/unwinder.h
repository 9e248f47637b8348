/// Stack frames of another process. Internal to the Linux side.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "base/os/linux/tracedthreads.h"
#include "base/os/stackframe.h"

namespace LbOs::Linux
{

/// Finds callers and names by the modules' own tables and debug information. Used by one thread.
class CUnwinder
{
public:
    /// Reads the process's list of modules. Null without libdw.
    static std::unique_ptr<CUnwinder> Create(pid_t process);

    ~CUnwinder();
    CUnwinder(const CUnwinder&) = delete;
    CUnwinder& operator=(const CUnwinder&) = delete;

    /// The addresses of the frames of a stopped thread with these registers, the innermost first.
    std::vector<std::uint64_t> Unwind(pid_t thread, const Registers& registers, Deadline deadline);

    /// Fills in function, file and line as far as they are known. The process may have ended. `isCall`: the address is
    /// the one after a call.
    void Name(SStackFrame& frame, bool isCall) const;

private:
    struct SState;
    explicit CUnwinder(std::unique_ptr<SState> state);

    std::unique_ptr<SState> m_state;
};

} // namespace LbOs::Linux
