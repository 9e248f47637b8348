#include "testing/lutestsuiterunner/review/decision.h"

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

#include <nlohmann/json.hpp>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lbreceivedfile.h"
#include "base/os/durablefiles.h"
#include "base/os/filereplacement.h"
#include "base/os/folderlock.h"
#include "testing/lutestsuiterunner/journal/appendfile.h"
#include "testing/lutestsuiterunner/model/textescape.h"
#include "testing/lutestsuiterunner/reports/wholefile.h"

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

/// A decision as in its file.
struct SPlanned
{
    EDecision decision;
    PartNames parts; ///< empty: the files as a whole
    Files files;
};

/// Changes files one by one, and can put them back.
class CSteps : public INonCopyable
{
public:
    /// An earlier process may have done some of the steps.
    CSteps(const SPlanned& planned, bool isContinued) : m_planned(planned), m_isContinued(isContinued)
    {
        m_steps.reserve(planned.files.size());
    }

    /// Nothing if the file is left alone.
    std::optional<SDecidedFile> Do(const SReceivedFile& file)
    {
        const std::wstring path = file.reference + LbReceivedFile::c_Suffix;
        std::optional<std::string> expected = readReference(file.reference);
        if (LbOs::IsMissing(path))
        {
            const bool isDone =
                m_isContinued && (m_planned.decision == EDecision::Reject || getChecksum(expected) == file.checksum);
            return isDone ? std::optional(SDecidedFile{file.reference, getChecksum(expected), false}) : std::nullopt;
        }
        std::string received = LbFileSystem::ReadFile8Bit(path);
        if (LbReceivedFile::GetChecksum(received) != file.checksum)
        {
            return std::nullopt;
        }
        if (getChecksum(expected) != file.expected)
        {
            const bool isDone = m_isContinued && expected && isTakenOver(*expected, received);
            return isDone ? std::optional(SDecidedFile{file.reference, getChecksum(expected), true}) : std::nullopt;
        }
        SStep step = {file.reference, std::move(expected), std::move(received)};
        SDecidedFile decided = m_planned.decision == EDecision::Accept ? accept(file, step) : reject(file);
        m_steps.push_back(std::move(step));
        return decided;
    }

    /// False if a file cannot be put back.
    bool Undo() noexcept
    try
    {
        for (; !m_steps.empty(); m_steps.pop_back())
        {
            undo(m_steps.back());
        }
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
        std::wstring reference;
        std::optional<std::string> expected;
        std::string received;
    };

    bool isTakenOver(const std::string& expected, const std::string& received) const
    {
        return std::ranges::none_of(FindParts(expected, received), [this](const SPart& part) {
            return m_planned.parts.empty() || m_planned.parts.contains(part.checksum);
        });
    }

    SDecidedFile accept(const SReceivedFile& file, const SStep& step) const
    {
        const std::string result = m_planned.parts.empty() || !step.expected
                                       ? step.received
                                       : ApplyParts(*step.expected, step.received, m_planned.parts);
        if (result != step.received)
        {
            write(file.reference, result);
            return {file.reference, LbReceivedFile::GetChecksum(result), true};
        }
        if (!LbOs::RenameFile(file.reference + LbReceivedFile::c_Suffix, file.reference))
        {
            throw LbFormat(L"Datei %s konnte nicht ersetzt werden", file.reference);
        }
        return {file.reference, file.checksum, false};
    }

    static SDecidedFile reject(const SReceivedFile& file)
    {
        const std::wstring received = file.reference + LbReceivedFile::c_Suffix;
        if (!LbOs::RemoveFile(received))
        {
            throw LbFormat(L"Datei %s konnte nicht gelöscht werden", received);
        }
        return {file.reference, file.expected, false};
    }

    void undo(const SStep& step) const
    {
        write(step.reference + LbReceivedFile::c_Suffix, step.received);
        if (m_planned.decision == EDecision::Accept && step.expected)
        {
            write(step.reference, *step.expected);
        }
        else if (m_planned.decision == EDecision::Accept)
        {
            LbOs::RemoveFile(step.reference);
        }
    }

    const SPlanned& m_planned;
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

/// Removes the plan at the end, and also if a failure of a decision that has just begun is undone.
SOutcome carryOut(const SPlanned& planned, const std::wstring& plan, bool isContinued)
{
    CSteps steps(planned, isContinued);
    SOutcome outcome;
    try
    {
        for (const SReceivedFile& file : planned.files)
        {
            if (std::optional<SDecidedFile> decided = steps.Do(file))
            {
                outcome.done.push_back(std::move(*decided));
            }
        }
    }
    catch (...)
    {
        if (steps.Undo() && !isContinued)
        {
            LbOs::RemoveFile(plan);
        }
        throw;
    }
    removeRuns(planned.files);
    LbOs::RemoveFile(plan);
    outcome.left = planned.files.size() - outcome.done.size();
    return outcome;
}

std::string makePlan(const std::wstring& directory, const SPlanned& planned)
{
    nlohmann::json plan = {{"accept", planned.decision == EDecision::Accept},
                           {"parts", nlohmann::json::array()},
                           {"files", nlohmann::json::array()}};
    for (const std::wstring& part : planned.parts)
    {
        plan["parts"].push_back(ToEscapedUtf8(part));
    }
    for (const SReceivedFile& file : planned.files)
    {
        plan["files"].push_back({{"reference", ToEscapedUtf8(file.reference.substr(directory.size()))},
                                 {"checksum", ToEscapedUtf8(file.checksum)},
                                 {"expected", ToEscapedUtf8(file.expected)}});
    }
    return plan.dump();
}

/// The disk then contains the whole plan or nothing of it.
void writePlan(const std::wstring& directory, const std::string& plan)
{
    const std::wstring path = directory + c_DecisionFile;
    const std::wstring draft = path + L".tmp";
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

SPlanned readPlan(const std::wstring& directory)
try
{
    const auto getText = [](const nlohmann::json& value) { return FromEscapedUtf8(value.get<std::string>()); };
    const nlohmann::json plan = nlohmann::json::parse(LbFileSystem::ReadFile8Bit(directory + c_DecisionFile));
    SPlanned planned = {plan.at("accept").get<bool>() ? EDecision::Accept : EDecision::Reject, {}, {}};
    for (const nlohmann::json& part : plan.at("parts"))
    {
        planned.parts.insert(getText(part));
    }
    for (const nlohmann::json& file : plan.at("files"))
    {
        planned.files.push_back({directory + getText(file.at("reference")), getText(file.at("checksum")),
                                 getText(file.at("expected")), true});
    }
    return planned;
}
catch (const nlohmann::json::exception&)
{
    throw std::wstring(L"Die unvollendete Entscheidung ist beschädigt");
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

/// An error with the way out.
std::wstring explain(const std::wstring& reason, const std::wstring& plan)
{
    return LbFormat(L"%s; wird die Datei %s gelöscht, bleibt der Rest der Entscheidung offen", reason, plan);
}

} // namespace

SOutcome Decide(const std::wstring& directory, EDecision decision, const SChange& change)
{
    const std::wstring folder = LbPath::WithSeparator(directory);
    const std::unique_ptr<LbOs::CFolderLock> folderLock = lock(folder);
    const SPlanned planned = {decision, change.parts, change.files};
    writePlan(folder, makePlan(folder, planned));
    return carryOut(planned, folder + c_DecisionFile, false);
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
        return carryOut(readPlan(folder), plan, true);
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
