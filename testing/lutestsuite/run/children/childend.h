/// What a case's messages report about the end of the child process that ran it.
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

/// The standard error of one child. Used by one thread.
class CChildErrors : public INonCopyable
{
public:
    /// For a new child. Without a file, the child's standard error is lost.
    void Renew();

    /// The file for the next child to start; null if there is none.
    const LbOs::CChildOutput* GetFile() const { return m_file.get(); }

    /// Marks the beginning of a case: earlier output does not belong to it. Needs one system call.
    void BeginCase();

    /// Limits the file's size. Call it about once a second.
    void Bound();

    /// The last lines that the case has written.
    std::vector<std::wstring> ReadLastLines() const;

    /// Passes the file on.
    std::unique_ptr<LbOs::CChildOutput> Release() { return std::move(m_file); }

private:
    std::unique_ptr<LbOs::CChildOutput> m_file;
    std::uint64_t m_begin = 0;
};

/// The last 64 lines after the position `begin` as text, without control characters, at most 1,000 characters each.
/// Empty without a file.
std::vector<std::wstring> ReadLastLines(const LbOs::CChildOutput* file, std::uint64_t begin);

/// Completes the record of a case whose child has ended, from the child's exit status and last lines.
void FindReason(SCaseEnd& end);

/// The record of a case whose child could not be started, for the given reason.
SCaseEnd MakeMissingChild(const std::wstring& failure);

/// Writes an error line with the reason, if there is one; the last lines of the child, the place of its dump and then
/// the stacks follow as information lines. A missing dump is a warning.
std::wstring DescribeCaseEnd(const SCaseEnd& end);

/// Reads how many processes were killed for lack of memory, so that FindReason notices later ones. Any thread; only the
/// first call has an effect.
void PrepareChildEnds();

} // namespace LuTestSuiteRun
