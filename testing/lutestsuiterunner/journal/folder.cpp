#include "testing/lutestsuiterunner/journal/folder.h"

#include "base/lbdatetime.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/os/durablefiles.h"
#include "base/os/files.h"
#include "base/os/machine.h"
#include "base/os/process.h"
#include "testing/lutestsuiterunner/journal/appendfile.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/planfile.h"
#include "testing/lutestsuiterunner/journal/reader.h"
#include "testing/lutestsuiterunner/journal/runfiles.h"

namespace Runner
{

namespace
{

void synchronise(const std::wstring& folder)
{
    if (!LbOs::SynchroniseDirectory(folder))
    {
        throw LbException(LbFormat(L"Der Ordner %s konnte nicht auf den Datenträger geschrieben werden", folder));
    }
}

SJournalBegun describeHost(const SPlan& plan, const std::string& digest, std::uint32_t number)
{
    return {digest,
            plan.cases.size(),
            number,
            LUTESTSUITE_VERSION,
            LbOs::GetProcessId(),
            LbOs::GetMachineName(),
            LbDateTime::FormatNow(L"Y-m-d H:i:s")};
}

std::wstring makeFolder(const std::wstring& directory)
{
    const std::wstring folder = GetRunFolder(directory);
    if (!LbFileSystem::AssertDirectory(folder))
    {
        throw LbException(LbFormat(L"Der Ordner %s konnte nicht angelegt werden", folder));
    }
    return folder;
}

} // namespace

std::wstring GetRunFolder(const std::wstring& directory)
{
    return LbPath::WithSeparator(LbOs::GetFullPath(directory));
}

std::unique_ptr<LbOs::CFolderLock> LockRunFolder(const std::wstring& directory)
{
    const std::wstring folder = makeFolder(directory);
    bool isHeld = false;
    std::unique_ptr<LbOs::CFolderLock> lock = LbOs::CFolderLock::TryAcquire(folder, isHeld);
    if (isHeld)
    {
        throw LbException(LbFormat(L"In den Ordner %s schreibt schon ein anderer Lauf", folder));
    }
    return lock;
}

CRunFolder::CRunFolder(const std::wstring& directory)
    : m_path(GetRunFolder(directory)), m_lock(LockRunFolder(directory))
{
}

std::unique_ptr<CJournalWriter> JoinRun(const std::wstring& folder, const SPlan& plan)
{
    const std::vector<std::uint32_t> numbers = FindJournals(folder);
    std::uint32_t number = numbers.empty() ? 1 : numbers.back() + 1;
    while (true)
    {
        try
        {
            auto writer = std::make_unique<CJournalWriter>(folder, describeHost(plan, plan.digest, number));
            synchronise(folder);
            return writer;
        }
        catch (const CNameTakenException&)
        {
            // Another host has taken the number. After other failures the next number would fail, too.
            ++number;
        }
    }
}

std::string BeginPlan(const std::wstring& directory, const SPlan& plan)
{
    const std::wstring folder = makeFolder(directory);
    if (const std::wstring text = FindForeignText(folder); !text.empty())
    {
        throw LbException(LbFormat(L"Der Ordner %s enthält keinen Lauf, aber die Datei %s", folder, text));
    }
    RemoveRun(folder);
    synchronise(folder);
    std::string digest = WritePlan(folder + c_PlanName, plan);
    synchronise(folder);
    return digest;
}

std::string CRunFolder::ReplacePlan(const SPlan& plan)
{
    return BeginPlan(m_path, plan);
}

std::unique_ptr<CJournalWriter> CRunFolder::AddJournal(const SJournalBegun& begun)
{
    auto writer = std::make_unique<CJournalWriter>(m_path, begun);
    synchronise(m_path);
    return writer;
}

std::unique_ptr<CJournalWriter> CRunFolder::BeginRun(const SPlan& plan)
{
    const std::string digest = ReplacePlan(plan);
    return AddJournal(describeHost(plan, digest, 1));
}

std::unique_ptr<CJournalWriter> CRunFolder::ContinueRun(const SPlan& plan)
{
    const std::vector<std::uint32_t> numbers = FindJournals(m_path);
    return AddJournal(describeHost(plan, plan.digest, numbers.empty() ? 1 : numbers.back() + 1));
}

} // namespace Runner
