/// The folder of a run: its plan, its journals and its reports.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/os/folderlock.h"
#include "testing/lutestsuiterunner/journal/writer.h"
#include "testing/lutestsuiterunner/model/plan.h"

namespace Runner
{

/// The directory as an absolute path with a separator at its end. It need not exist. Call it before the working
/// directory changes.
std::wstring GetRunFolder(const std::wstring& directory);

/// Begins the next journal of a shard's run, with this host and the present time. Other hosts on any machine may do so
/// at the same time. Each host creates its journal exclusively, because a network file system may have no locks.
/// `folder` ends in a separator. Throws LbException with a German message.
std::unique_ptr<CJournalWriter> JoinRun(const std::wstring& folder, const SPlan& plan);

/// Removes the files of a run that the folder contains, as RemoveRun does, and writes the plan. Returns the plan's
/// digest. Creates the folder if needed. Throws LbException with a German message.
std::string BeginPlan(const std::wstring& directory, const SPlan& plan);

/// Keeps runs that are not distributed out of the folder while a distributed run replaces the folder's content. Creates
/// the folder if needed. Null if the folder's file system has no locks. Throws LbException with a German message if a
/// run writes into the folder, or the folder cannot be created.
std::unique_ptr<LbOs::CFolderLock> LockRunFolder(const std::wstring& directory);

/// The right to write into a run's folder, held by one process if the folder's file system has locks. On Windows the
/// thread that creates the object must also destroy it.
class CRunFolder
{
public:
    /// Creates the folder if needed and takes the right. Throws LbException with a German message if another process
    /// has it, or the folder cannot be created.
    explicit CRunFolder(const std::wstring& directory);

    /// False if the folder's file system has no locks. Then other processes may write into the folder, too.
    bool IsLocked() const { return m_lock != nullptr; }

    /// The folder's path, with separator at its end.
    const std::wstring& GetPath() const { return m_path; }

    /// Calls BeginPlan for the folder. Like the operations below, throws LbException with a German message.
    std::string ReplacePlan(const SPlan& plan);

    /// Begins a journal of the folder's plan.
    std::unique_ptr<CJournalWriter> AddJournal(const SJournalBegun& begun);

    /// Begins a new run: calls ReplacePlan and begins the first journal, with this host and the present time.
    std::unique_ptr<CJournalWriter> BeginRun(const SPlan& plan);

    /// Begins the next journal of the folder's run, with this host and the present time.
    std::unique_ptr<CJournalWriter> ContinueRun(const SPlan& plan);

private:
    std::wstring m_path;
    std::unique_ptr<LbOs::CFolderLock> m_lock;
};

} // namespace Runner
