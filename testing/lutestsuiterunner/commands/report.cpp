/// The command "report": writes the reports of a run, even if the run is in progress or its process died.

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
    // The process of a run holds this lock until it ends. On a file system without locks, both flags are false,
    // although the run may be in progress.
    bool isInProgress = false;
    const bool isFree = LbOs::CFolderLock::TryAcquire(folder, isInProgress) != nullptr;
    if (isInProgress)
    {
        return GetStatus(*ReportRunInProgress(folder));
    }
    return GetStatus(*ReportRun(folder, isFree ? LoadRunWithoutHost : LoadRun));
}
