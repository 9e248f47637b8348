/// What a case's messages say about the end of the child process that ran it.
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
    /// For a new child. Without a file, what it writes is lost.
    void Renew();

    /// The file for the child that is started next; null if there is none.
    const LbOs::CChildOutput* GetFile() const { return m_file.get(); }

    /// A case begins: what is there is not its own. Costs one system call.
    void BeginCase();

    /// To be called every second or so: bounds the file.
    void Bound();

    /// The last lines that the case has written.
    std::vector<std::wstring> ReadLastLines() const;

    /// Gives the file away.
    std::unique_ptr<LbOs::CChildOutput> Release() { return std::move(m_file); }

private:
    std::unique_ptr<LbOs::CChildOutput> m_file;
    std::uint64_t m_begin = 0;
};

/// The last 64 lines behind the position `begin` as text, without control characters, at most 1,000 characters each.
/// None without a file.
std::vector<std::wstring> ReadLastLines(const LbOs::CChildOutput* file, std::uint64_t begin);

/// Completes the record of a case whose child has ended, from its exit status and last lines.
void FindReason(SCaseEnd& end);

/// The record of a case whose child could not be started.
SCaseEnd MakeMissingChild();

/// An error line with the reason and, as information lines, the last lines of a child that has ended; each if there is
/// one. Then the stacks as information lines.
std::wstring DescribeCaseEnd(const SCaseEnd& end);

/// Learns how often the system has ended processes for lack of memory so far, so that FindReason notices more.
/// Any thread; the first call counts.
void PrepareChildEnds();

} // namespace LuTestSuiteRun
