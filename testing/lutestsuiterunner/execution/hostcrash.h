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

/// While the object lives, the lines that this process prints when it crashes also go to a file in the run's folder.
/// One object at a time.
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
    std::vector<SCaseEnded> crashed;     ///< crashed their host: the ends of their attempts, to be recorded
    std::vector<std::uint32_t> suspects; ///< may have ended their host, so each runs in its own process
    std::vector<std::uint32_t> others;   ///< ran in child processes
    std::vector<std::uint32_t> repeated; ///< at least two hosts of a shard were lost during each; it runs alone first
};

/// Classifies the cases that were under way when hosts ended. A case in the host's own process counts as crashed if the
/// host's note names it and no other case of that name ran there, or if the note names no case and no other case ran
/// there. A shard's host may be lost without a note. Therefore, in a shard, a case also counts as crashed if three
/// hosts were lost during it and the last of them ran only this case. A host that recorded its cancellation is not
/// lost: its case was only too long.
SUnderWay FindUnderWay(const CRunState& state, const std::wstring& folder);

/// The cases of a shard that were running when their host was canceled, in the order of their starts. They may take
/// longer than the scheduler lets a host run. Empty if the run is not a shard of a distributed run.
std::vector<std::uint32_t> FindCanceled(const CRunState& state);

} // namespace Runner
