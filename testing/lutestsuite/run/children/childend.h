/// Describes the end of a child process in the messages of the case that it ran.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/inoncopyable.h"
#include "base/os/childoutput.h"
#include "testing/lutestsuite/lutestsuiterunevents.h"

namespace LuTestSuiteRun
{

/// The file that receives the standard error of one child. Used by one thread.
class CChildErrors : public INonCopyable
{
public:
    /// Creates a new file for a new child. If that fails, the child's standard error is lost.
    void Renew();

    /// The file for the next child to start; null if there is none.
    const LbOs::CChildOutput* GetFile() const { return m_file.get(); }

    /// Marks the beginning of a case: earlier output does not belong to it. Needs one system call.
    void BeginCase();

    /// Clears the file if it has become too large. Call it about once a second.
    void Bound();

    /// The last lines that the case has written.
    std::vector<std::wstring> ReadLastLines() const;

    /// Passes the ownership of the file to the caller.
    std::unique_ptr<LbOs::CChildOutput> Release() { return std::move(m_file); }

private:
    std::unique_ptr<LbOs::CChildOutput> m_file;
    std::uint64_t m_begin = 0;
};

/// Returns the last 64 lines after the position `begin`, cut to 1,000 characters each, with spaces in place of control
/// characters except tabs. Empty if `file` is null.
std::vector<std::wstring> ReadLastLines(const LbOs::CChildOutput* file, std::uint64_t begin);

/// Completes the record of a case whose child has ended, from the child's exit status and last lines.
void FindReason(SCaseEnd& end);

/// The record of a case whose child could not be started, for the given reason.
SCaseEnd MakeMissingChild(const std::wstring& failure);

/// Returns the message lines for the end of a case: an error line with the reason, if there is one; then information
/// lines with the child's last lines, the path of its dump and the stacks. If the dump could not be written, a warning
/// line says why.
std::wstring DescribeCaseEnd(const SCaseEnd& end);

/// Stores how many processes the system has killed for lack of memory so far, so that FindReason notices later kills.
/// Any thread; only the first call has an effect.
void PrepareChildEnds();

} // namespace LuTestSuiteRun
