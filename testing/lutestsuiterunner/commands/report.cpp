/// The command "report": the reports of a run, also of one that is in progress or died.

#include "testing/lutestsuiterunner/commands/commands.h"
#include "testing/lutestsuiterunner/commands/outcome.h"
#include "testing/lutestsuiterunner/console/messages.h"
#include "testing/lutestsuiterunner/journal/folder.h"

int Runner::Execute(const SReportOptions& options)
{
    if (options.directory.empty())
    {
        throw std::wstring(L"Der Ordner des Laufs fehlt");
    }
    MoveLibraryLinesToErrors();
    const std::wstring folder = GetRunFolder(options.directory);
    // The process of a run holds this lock to its end. If the file system has no locks, the run may be in progress.
    bool isInProgress = false;
    const bool isFree = LbOs::CFolderLock::TryAcquire(folder, isInProgress) != nullptr;
    if (isInProgress)
    {
        return GetStatus(*ReportRunInProgress(folder));
    }
    return GetStatus(*ReportRun(folder, isFree ? LoadRunWithoutHost : LoadRun));
}
