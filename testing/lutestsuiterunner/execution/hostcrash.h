/// A host that a case of its own process brings down: what it leaves behind, and what a resumed run makes of it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/inoncopyable.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// While it lives, what this process says when it crashes goes to a file in the run's folder, too. One at a time.
class CCrashNote : public INonCopyable
{
public:
    /// `journal` is the number of the journal that the process writes. Throws LbException with a German message.
    CCrashNote(const std::wstring& folder, std::uint32_t journal);
    ~CCrashNote();

private:
    std::wstring m_path;
    LbOs::FileHandle m_file;
};

/// The cases that were under way in hosts that are dead.
struct SUnderWay
{
    std::vector<SCaseEnded> crashed;     ///< their host has left a note: the end of the attempt, to be recorded
    std::vector<std::uint32_t> suspects; ///< their host ended without a word, so they run in processes of their own
    std::vector<std::uint32_t> others;   ///< they had child processes
};

/// A case that ran in the host's own process counts as crashed if the note says so: it names the case, or no case and
/// this one was the only one.
SUnderWay FindUnderWay(const CRunState& state, const std::wstring& folder);

} // namespace Runner
