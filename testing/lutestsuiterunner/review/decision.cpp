#include "testing/lutestsuiterunner/review/decision.h"

#include <memory>
#include <set>

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

/// Changes files one by one, and can put them back.
class CSteps : public INonCopyable
{
public:
    CSteps(EDecision decision, std::size_t count) : m_decision(decision) { m_steps.reserve(count); }

    void Do(const SReceivedFile& file)
    {
        const std::wstring received = file.reference + LbReceivedFile::c_Suffix;
        if (LbOs::IsMissing(received))
        {
            return;
        }
        std::string bytes = LbFileSystem::ReadFile8Bit(received);
        if (LbReceivedFile::GetChecksum(bytes) != file.checksum)
        {
            return;
        }
        SStep step = {file.reference, std::move(bytes), !LbOs::IsMissing(file.reference), {}};
        if (m_decision == EDecision::Accept)
        {
            step.expected = ReadIfPresent(file.reference);
        }
        const bool isDone =
            m_decision == EDecision::Accept ? LbOs::RenameFile(received, file.reference) : LbOs::RemoveFile(received);
        if (!isDone)
        {
            throw m_decision == EDecision::Accept ? LbFormat(L"Datei %s konnte nicht ersetzt werden", file.reference)
                                                  : LbFormat(L"Datei %s konnte nicht gelöscht werden", received);
        }
        m_steps.push_back(std::move(step));
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
    struct SStep
    {
        std::wstring reference;
        std::string received;
        bool wasReference;
        std::string expected;
    };

    void undo(const SStep& step) const
    {
        write(step.reference + LbReceivedFile::c_Suffix, step.received);
        if (m_decision == EDecision::Accept && step.wasReference)
        {
            write(step.reference, step.expected);
        }
        else if (m_decision == EDecision::Accept)
        {
            LbOs::RemoveFile(step.reference);
        }
    }

    EDecision m_decision;
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

/// Removes the plan at the end. Undoes the changes on a failure, and then removes the plan only if the decision has
/// `justBegun`.
void carryOut(EDecision decision, const Files& files, const std::wstring& plan, bool justBegun)
{
    CSteps steps(decision, files.size());
    try
    {
        for (const SReceivedFile& file : files)
        {
            steps.Do(file);
        }
    }
    catch (...)
    {
        if (steps.Undo() && justBegun)
        {
            LbOs::RemoveFile(plan);
        }
        throw;
    }
    removeRuns(files);
    LbOs::RemoveFile(plan);
}

std::string makePlan(const std::wstring& directory, EDecision decision, const Files& files)
{
    nlohmann::json plan = {{"accept", decision == EDecision::Accept}, {"files", nlohmann::json::array()}};
    for (const SReceivedFile& file : files)
    {
        plan["files"].push_back({{"reference", ToEscapedUtf8(file.reference.substr(directory.size()))},
                                 {"checksum", ToEscapedUtf8(file.checksum)}});
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

std::pair<EDecision, Files> readPlan(const std::wstring& directory)
try
{
    const nlohmann::json plan = nlohmann::json::parse(LbFileSystem::ReadFile8Bit(directory + c_DecisionFile));
    Files files;
    for (const nlohmann::json& file : plan.at("files"))
    {
        files.push_back({directory + FromEscapedUtf8(file.at("reference").get<std::string>()),
                         FromEscapedUtf8(file.at("checksum").get<std::string>()), true});
    }
    return {plan.at("accept").get<bool>() ? EDecision::Accept : EDecision::Reject, std::move(files)};
}
catch (const nlohmann::json::exception&)
{
    throw LbFormat(L"Datei %s ist beschädigt", directory + c_DecisionFile);
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

} // namespace

void Decide(const std::wstring& directory, EDecision decision, const std::vector<SReceivedFile>& files)
{
    const std::wstring folder = LbPath::WithSeparator(directory);
    const std::unique_ptr<LbOs::CFolderLock> folderLock = lock(folder);
    writePlan(folder, makePlan(folder, decision, files));
    carryOut(decision, files, folder + c_DecisionFile, true);
}

std::size_t FinishDecision(const std::wstring& directory)
{
    const std::wstring folder = LbPath::WithSeparator(directory);
    if (LbOs::IsMissing(folder + c_DecisionFile))
    {
        return 0;
    }
    const std::unique_ptr<LbOs::CFolderLock> folderLock = lock(folder);
    const auto [decision, files] = readPlan(folder);
    carryOut(decision, files, folder + c_DecisionFile, false);
    return files.size();
}

} // namespace Runner
