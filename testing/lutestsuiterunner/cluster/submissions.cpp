#include "testing/lutestsuiterunner/cluster/submissions.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>

#include <nlohmann/json.hpp>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/os/durablefiles.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/journal/appendfile.h"
#include "testing/lutestsuiterunner/journal/filenames.h"

namespace Runner
{

namespace
{

std::wstring getPath(const std::wstring& folder, std::uint32_t number)
{
    return LbPath::WithSeparator(folder + c_TasksFolderName) + LbFormat(L"submission-%u.json", number);
}

std::wstring getMarkPath(const std::wstring& folder)
{
    return LbPath::WithSeparator(folder + c_TasksFolderName) + L"canceled";
}

bool isFile(const std::wstring& path)
{
    return LbOs::QueryEntry(path) == LbOs::EEntry::File;
}

/// Returns a submission without shards if the file is incomplete.
SSubmission readSubmission(const std::wstring& path, std::uint32_t number)
{
    SSubmission submission = {number, {}, {}};
    const auto json = nlohmann::json::parse(LbFileSystem::ReadFile8Bit(path), nullptr, /*exceptions*/ false);
    if (!json.is_object() || !json.contains("shards") || !json.contains("verdicts") ||
        json["shards"].size() != json["verdicts"].size())
    {
        return submission;
    }
    submission.shards = json["shards"].get<std::vector<std::uint32_t>>();
    submission.verdicts = json["verdicts"].get<std::vector<std::uint64_t>>();
    for (const nlohmann::json& reason : json.value("reasons", nlohmann::json::array()))
    {
        submission.reasons.push_back(LbEncoding::FromUtf8(reason.get<std::string>()));
    }
    return submission;
}

/// Returns null if the file exists already.
std::unique_ptr<CAppendFile> create(const std::wstring& path)
{
    try
    {
        return std::make_unique<CAppendFile>(path);
    }
    catch (const LbException&)
    {
        if (isFile(path))
        {
            return nullptr;
        }
        throw;
    }
}

} // namespace

std::vector<SSubmission> ReadSubmissions(const std::wstring& folder)
{
    std::vector<SSubmission> submissions;
    for (std::uint32_t number = 1; isFile(getPath(folder, number)); ++number)
    {
        submissions.push_back(readSubmission(getPath(folder, number), number));
    }
    return submissions;
}

bool ClaimSubmission(const std::wstring& folder, const SSubmission& submission)
{
    const std::unique_ptr<CAppendFile> file = create(getPath(folder, submission.number));
    if (!file)
    {
        return false;
    }
    std::vector<std::string> reasons;
    std::ranges::transform(submission.reasons, std::back_inserter(reasons), LbEncoding::ToUtf8);
    const nlohmann::json json = {
        {"shards", submission.shards}, {"verdicts", submission.verdicts}, {"reasons", reasons}};
    file->Append(json.dump() + "\n");
    file->Close();
    return true;
}

std::vector<std::wstring> DescribeLosses(const SSubmission& submission)
{
    std::map<std::wstring, std::vector<std::uint32_t>> shards; // by reason
    for (std::size_t index = 0; index < std::min(submission.shards.size(), submission.reasons.size()); ++index)
    {
        if (!submission.reasons[index].empty())
        {
            shards[submission.reasons[index]].push_back(submission.shards[index]);
        }
    }
    std::vector<std::wstring> lines;
    for (const auto& [reason, numbers] : shards)
    {
        lines.push_back(LbFormat(L"Teil %s verloren (%s), neu vergeben", FormatNumbers(numbers), reason));
    }
    return lines;
}

std::wstring FormatNumbers(const std::vector<std::uint32_t>& shards)
{
    std::wstring text;
    for (std::size_t first = 0; first < shards.size();)
    {
        std::size_t last = first;
        while (last + 1 < shards.size() && shards[last + 1] == shards[last] + 1)
        {
            ++last;
        }
        text += (text.empty() ? L"" : L",") + std::to_wstring(shards[first]);
        text += last > first ? L"-" + std::to_wstring(shards[last]) : L"";
        first = last + 1;
    }
    return text;
}

void MarkCanceled(const std::wstring& folder)
{
    const LbOs::FileHandle file = LbOs::CreateForAppending(getMarkPath(folder));
    if (file != LbOs::c_InvalidFile)
    {
        LbOs::CloseFile(file);
    }
    else if (!IsMarkedCanceled(folder))
    {
        throw LbException(LbFormat(L"Datei %s konnte nicht angelegt werden", getMarkPath(folder)));
    }
}

bool IsMarkedCanceled(const std::wstring& folder)
{
    return isFile(getMarkPath(folder));
}

} // namespace Runner
