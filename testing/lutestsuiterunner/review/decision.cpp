#include "testing/lutestsuiterunner/review/decision.h"

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lbreceivedfile.h"
#include "base/lbtemporaryname.h"
#include "base/os/durablefiles.h"
#include "base/os/filereplacement.h"
#include "base/os/files.h"
#include "base/os/folderlock.h"
#include "testing/lutestsuiterunner/journal/appendfile.h"
#include "testing/lutestsuiterunner/reports/wholefile.h"
#include "testing/lutestsuiterunner/review/claims.h"
#include "testing/lutestsuiterunner/review/decisionplan.h"
#include "testing/lutestsuiterunner/review/referencefile.h"

namespace Runner
{

namespace
{

using Files = std::vector<SReceivedFile>;

void write(const std::wstring& path, const std::string& bytes)
{
    WriteWholeFile(path, [&bytes](LuStreamWriteBinaryFile& file) { file.Write(bytes.data(), bytes.size()); });
}

std::optional<std::string> readReference(const std::wstring& path)
{
    return LbOs::IsMissing(path) ? std::nullopt : std::optional(LbFileSystem::ReadFile8Bit(path));
}

std::wstring getChecksum(const std::optional<std::string>& bytes)
{
    return bytes ? LbReceivedFile::GetChecksum(*bytes) : std::wstring();
}

/// Removes output that a run has made again while the decision was interrupted.
void removeRepetition(const SReceivedFile& file)
{
    const std::wstring path = file.reference + LbReceivedFile::c_Suffix;
    if (!LbOs::IsMissing(path) && getChecksum(LbFileSystem::ReadFile8Bit(path)) == file.checksum)
    {
        LbOs::RemoveFile(path);
    }
}

std::wstring describeChanged(const std::wstring& path)
{
    return LbFormat(L"Entscheidung abgelehnt: Datei %s hat sich seit dem Lesen geändert", path);
}

/// Changes files one by one, and can restore them.
class CSteps : public INonCopyable
{
public:
    /// `isContinued`: the decision was interrupted, and an earlier process may have done some of the steps.
    CSteps(const SPlanned& planned, const CClaims& claims, bool isContinued)
        : m_planned(planned), m_claims(claims), m_isContinued(isContinued)
    {
        m_steps.reserve(planned.files.size());
    }

    /// Carries out the decision for one file. If somebody has changed the reference since the decision began, a new
    /// decision throws; one that is continued keeps this reference, and returns empty if the reference lacks the
    /// accepted parts.
    std::optional<SDecidedFile> Do(std::size_t index)
    {
        const SReceivedFile& file = m_planned.files[index];
        std::optional<std::string> expected = readReference(file.reference);
        const std::wstring checksum = getChecksum(expected);
        if (LbOs::IsMissing(m_claims.GetPath(index)))
        {
            return SDecidedFile{file.reference, checksum, false};
        }
        SStep step = {index, std::move(expected), LbFileSystem::ReadFile8Bit(m_claims.GetPath(index))};
        if (m_planned.decision == EDecision::Accept && checksum != file.expected)
        {
            return skip(step, checksum);
        }
        SDecidedFile decided = m_planned.decision == EDecision::Accept ? accept(step) : reject(step);
        // Undo must know the step if the rest fails.
        m_steps.push_back(std::move(step));
        if (!decided.isOpen)
        {
            removeRepetition(file);
        }
        return decided;
    }

    /// False if a file cannot be restored.
    bool Undo() noexcept
    try
    {
        for (; !m_steps.empty(); m_steps.pop_back())
        {
            undo(m_steps.back());
        }
        m_claims.ReleaseAll();
        return true;
    }
    catch (...)
    {
        return false;
    }

private:
    /// The bytes of the files before the step.
    struct SStep
    {
        std::size_t index;
        std::optional<std::string> expected;
        std::string received;
    };

    /// The parts of a file that this decision and earlier ones accept.
    SAccepted getAccepted(const SStep& step, const std::string& expected) const
    {
        const SReceivedFile& file = m_planned.files[step.index];
        SAccepted accepted = file.earlier ? *file.earlier : SAccepted{expected, {}};
        accepted.parts.insert(m_planned.parts.begin(), m_planned.parts.end());
        if (m_planned.parts.empty())
        {
            for (const SPart& part : FindParts(accepted.reference, step.received))
            {
                accepted.parts.insert(part.checksum);
            }
        }
        return accepted;
    }

    bool isTakenOver(const SStep& step, const std::string& expected) const
    {
        if (m_planned.files[step.index].earlier)
        {
            const SAccepted accepted = getAccepted(step, expected);
            return ApplyParts(accepted.reference, step.received, accepted.parts) == expected;
        }
        if (m_planned.parts.empty())
        {
            return SplitLines(expected, true) == SplitLines(step.received, true);
        }
        return std::ranges::none_of(FindParts(expected, step.received),
                                    [this](const SPart& part) { return IsNamed(part, m_planned.parts); });
    }

    /// Keeps a reference that has changed since the decision began. Throws unless an interrupted decision is being
    /// continued.
    std::optional<SDecidedFile> skip(const SStep& step, const std::wstring& checksum) const
    {
        const SReceivedFile& file = m_planned.files[step.index];
        if (!m_isContinued)
        {
            throw describeChanged(file.reference);
        }
        if (step.expected == step.received)
        {
            LbOs::RemoveFile(m_claims.GetPath(step.index));
            return SDecidedFile{file.reference, checksum, false};
        }
        m_claims.Release(step.index);
        const bool isDone = step.expected && isTakenOver(step, *step.expected);
        return isDone ? std::optional(SDecidedFile{file.reference, checksum, true}) : std::nullopt;
    }

    SDecidedFile accept(const SStep& step) const
    {
        const SReceivedFile& file = m_planned.files[step.index];
        const bool isWhole = m_planned.parts.empty() && step.expected && !HasIgnoredEnds(*step.expected, step.received);
        if (isWhole || !step.expected)
        {
            return replace(step);
        }
        SAccepted accepted = getAccepted(step, *step.expected);
        const std::string result = ApplyParts(accepted.reference, step.received, accepted.parts);
        if (result == step.received)
        {
            return replace(step);
        }
        if (result == *step.expected)
        {
            throw LbFormat(L"Entscheidung abgelehnt: Datei %s hat keinen Teil der Änderung", file.reference);
        }
        WriteReference(file.reference, result, m_planned.temporary);
        m_claims.Release(step.index);
        return {file.reference, LbReceivedFile::GetChecksum(result), true,
                std::make_shared<const SAccepted>(std::move(accepted))};
    }

    /// Replaces the reference by the received file.
    SDecidedFile replace(const SStep& step) const
    {
        const SReceivedFile& file = m_planned.files[step.index];
        if (LbOs::IsLink(file.reference))
        {
            WriteReference(file.reference, step.received, m_planned.temporary);
            LbOs::RemoveFile(m_claims.GetPath(step.index));
        }
        else if (!LbOs::RenameFile(m_claims.GetPath(step.index), file.reference))
        {
            throw DescribeIrreplaceable(file.reference);
        }
        return {file.reference, file.checksum, false};
    }

    SDecidedFile reject(const SStep& step) const
    {
        const SReceivedFile& file = m_planned.files[step.index];
        if (!LbOs::RemoveFile(m_claims.GetPath(step.index)))
        {
            throw LbFormat(L"Datei %s konnte nicht gelöscht werden", m_claims.GetPath(step.index));
        }
        return {file.reference, file.expected, false};
    }

    void undo(const SStep& step) const
    {
        const std::wstring& reference = m_planned.files[step.index].reference;
        write(m_claims.GetPath(step.index), step.received);
        if (m_planned.decision == EDecision::Accept && step.expected)
        {
            WriteReference(reference, *step.expected, m_planned.temporary);
        }
        else if (m_planned.decision == EDecision::Accept)
        {
            LbOs::RemoveFile(reference);
        }
    }

    const SPlanned& m_planned;
    const CClaims& m_claims;
    bool m_isContinued;
    std::vector<SStep> m_steps;
};

void removeRuns(const Files& files)
{
    std::set<std::wstring> folders;
    for (const SReceivedFile& file : files)
    {
        if (LbOs::IsMissing(file.reference + LbReceivedFile::c_Suffix))
        {
            LbOs::RemoveFile(file.reference + LbReceivedFile::c_RunsSuffix);
        }
        folders.insert(LbPath::GetParent(file.reference));
    }
    for (const std::wstring& folder : folders)
    {
        LbOs::SynchroniseDirectory(folder);
    }
}

/// Ends a decision that was carried out or undone.
void removePlan(const CClaims& claims, const std::wstring& plan)
{
    LbOs::RemoveFile(plan);
    claims.Remove();
}

SOutcome carryOut(const SPlanned& planned, CSteps& steps)
{
    SOutcome outcome;
    for (std::size_t index = 0; index < planned.files.size(); ++index)
    {
        if (std::optional<SDecidedFile> decided = steps.Do(index))
        {
            outcome.done.push_back(std::move(*decided));
        }
    }
    removeRuns(planned.files);
    outcome.left = planned.files.size() - outcome.done.size();
    return outcome;
}

/// Writes a draft and renames it: if the process is killed meanwhile, there is no incomplete plan.
void writePlan(const std::wstring& directory, const std::string& plan)
{
    const std::wstring path = directory + c_DecisionFile;
    const std::wstring draft = directory + c_DecisionDraft;
    LbOs::RemoveFile(draft);
    CAppendFile file(draft);
    file.Append(plan);
    file.Close();
    if (!LbOs::RenameFile(draft, path) || !LbOs::SynchroniseDirectory(directory))
    {
        LbOs::RemoveFile(draft);
        LbOs::RemoveFile(path);
        throw LbFormat(L"Datei %s konnte nicht geschrieben werden", path);
    }
}

std::unique_ptr<LbOs::CFolderLock> lock(const std::wstring& directory)
{
    std::unique_ptr<LbOs::CFolderLock> folderLock = LbOs::CFolderLock::TryAcquire(directory);
    if (!folderLock)
    {
        throw LbFormat(L"Verzeichnis %s wird gerade von einem anderen Aufruf geprüft", directory);
    }
    return folderLock;
}

/// Throws if an earlier decision is unfinished, or a file has changed since it was read.
void requireReady(const std::wstring& plan, const Files& files)
{
    if (!LbOs::IsMissing(plan))
    {
        throw LbFormat(L"In %s ist eine Entscheidung unvollendet: ein neuer Aufruf von 'review' vollendet sie",
                       LbPath::GetParent(plan));
    }
    for (const SReceivedFile& file : files)
    {
        if (const std::wstring changed = FindChanged(file, file.reference + LbReceivedFile::c_Suffix); !changed.empty())
        {
            throw describeChanged(changed);
        }
    }
}

/// Finishes an interrupted decision. If the decision had not yet claimed all files, it has changed no reference; in
/// that case it is undone if somebody has changed a file since.
SOutcome finish(const std::wstring& folder, const std::wstring& plan)
{
    const SPlanned planned = ReadDecisionPlan(folder);
    const CClaims claims(folder, planned.files);
    SOutcome outcome;
    if (!claims.AreComplete())
    {
        outcome.changed = claims.Claim();
    }
    if (outcome.changed.empty())
    {
        CSteps steps(planned, claims, true);
        outcome = carryOut(planned, steps);
    }
    else
    {
        claims.ReleaseAll();
    }
    RemoveTemporaries(planned.files, planned.temporary);
    removePlan(claims, plan);
    return outcome;
}

/// An error that says what the user can do.
std::wstring explain(const std::wstring& reason, const std::wstring& plan)
{
    return LbFormat(L"%s; wird die Datei %s gelöscht, bleibt der Rest der Entscheidung offen", reason, plan);
}

} // namespace

SOutcome Decide(const std::wstring& directory, EDecision decision, const SChange& change)
{
    const std::wstring folder = LbPath::WithSeparator(directory);
    const std::unique_ptr<LbOs::CFolderLock> folderLock = lock(folder);
    const std::wstring plan = folder + c_DecisionFile;
    const SPlanned planned = {decision, change.parts, change.files, LbTemporaryName::Make()};
    requireReady(plan, planned.files);
    if (decision == EDecision::Accept)
    {
        RequireOwnFiles(planned.files);
    }
    const CClaims claims(folder, planned.files);
    claims.Remove();
    writePlan(folder, MakeDecisionPlan(folder, planned));
    CSteps steps(planned, claims, false);
    try
    {
        if (const std::wstring changed = claims.Claim(); !changed.empty())
        {
            throw describeChanged(changed);
        }
        SOutcome outcome = carryOut(planned, steps);
        removePlan(claims, plan);
        return outcome;
    }
    catch (...)
    {
        if (steps.Undo())
        {
            removePlan(claims, plan);
        }
        throw;
    }
}

void RemoveRemains(const std::wstring& directory)
{
    const std::wstring folder = LbPath::WithSeparator(directory);
    const std::unique_ptr<LbOs::CFolderLock> folderLock = LbOs::CFolderLock::TryAcquire(folder);
    if (folderLock && LbOs::IsMissing(folder + c_DecisionFile))
    {
        LbOs::RemoveFile(folder + c_DecisionDraft);
        RemoveUsedClaims(folder);
    }
}

std::optional<SOutcome> FinishDecision(const std::wstring& directory)
{
    const std::wstring folder = LbPath::WithSeparator(directory);
    const std::wstring plan = folder + c_DecisionFile;
    if (LbOs::IsMissing(plan))
    {
        return std::nullopt;
    }
    const std::unique_ptr<LbOs::CFolderLock> folderLock = lock(folder);
    try
    {
        return finish(folder, plan);
    }
    catch (const std::wstring& reason)
    {
        throw explain(reason, plan);
    }
    catch (const LbException& exception)
    {
        throw explain(exception.GetMessageText(), plan);
    }
}

} // namespace Runner
