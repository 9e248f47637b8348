/// Cases that end the host's own process: the note that the host leaves, and how a resumed run uses it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/inoncopyable.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/model/runstate.h"

namespace Runner
{

/// While it lives, the lines that this process prints when it crashes also go to a file in the run's folder. One object
/// at a time.
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

/// The cases that were running in hosts that have died.
struct SUnderWay
{
    std::vector<SCaseEnded> crashed;     ///< their host has left a note: the end of the attempt, to be recorded
    std::vector<std::uint32_t> suspects; ///< their host left no note, so they run in processes of their own
    std::vector<std::uint32_t> others;   ///< they ran in child processes
    std::vector<std::uint32_t> repeated; ///< two hosts of a shard were lost while they ran them; each runs alone first
};

/// Classifies the cases that were under way when hosts ended. A case in the host's own process crashed if the note
/// names it and no other case of that name ran there, or if the note names no case and no other case ran there. A
/// shard's host may be lost without a note; in a shard, a case also crashed if three hosts were lost during it and the
/// last of them ran only this case. A host that recorded its cancellation is not lost: its case was only too long.
SUnderWay FindUnderWay(const CRunState& state, const std::wstring& folder);

/// The cases of a shard that were running when their host was canceled, the earliest started first. They may be longer
/// than the scheduler lets a host run. Empty for other runs.
std::vector<std::uint32_t> FindCanceled(const CRunState& state);

} // namespace Runner
