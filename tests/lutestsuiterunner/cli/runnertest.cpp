#include "tests/lutestsuiterunner/cli/runnertest.h"

#include <algorithm>
#include <sstream>

#include "base/lbfilesystem.h"
#include "testing/lutestsuiterunner/journal/filenames.h"

SHostRun RunnerTest::Run(const std::vector<std::wstring>& own, const std::vector<std::wstring>& library,
                         const SHostOptions& options) const
{
    std::vector<std::wstring> arguments = own;
    if (own.front() == L"run" && std::ranges::find(own, L"--out") == own.end())
    {
        arguments.insert(arguments.end(), {L"--out", m_folder.GetPathOf(L"out")});
    }
    arguments.insert(arguments.end(), {L"--", L"-d", m_folder.GetPathOf(L"data")});
    for (const wchar_t* module :
         {L"resultmodels", L"datasetmodels", L"messagemodels", L"crashmodels", L"rerunmodels", L"durationmodels"})
    {
        arguments.insert(arguments.end(), {L"--dll", module});
    }
    arguments.insert(arguments.end(), library.begin(), library.end());
    return RunRunner(arguments, options);
}

SHostRun RunnerTest::Resume(const std::vector<std::wstring>& options) const
{
    std::vector<std::wstring> arguments = {L"resume", m_folder.GetPathOf(L"out")};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunRunner(arguments);
}

std::vector<nlohmann::json> RunnerTest::ReadRecords(std::uint32_t journal) const
{
    std::vector<nlohmann::json> records;
    std::istringstream lines(LbFileSystem::ReadFile8Bit(GetOut() + Runner::GetJournalName(journal)));
    for (std::string line; std::getline(lines, line);)
    {
        records.push_back(nlohmann::json::parse(line).at("r"));
    }
    return records;
}

nlohmann::json RunnerTest::FindRecord(const std::string& type) const
{
    const std::vector<nlohmann::json> records = ReadRecords(1);
    const auto found = std::ranges::find_if(records, [&](const nlohmann::json& one) { return one.at("t") == type; });
    return found == records.end() ? nlohmann::json() : *found;
}

std::size_t RunnerTest::CountRecords(const std::string& type, std::uint32_t journal) const
{
    const std::vector<nlohmann::json> records = ReadRecords(journal);
    return static_cast<std::size_t>(
        std::ranges::count_if(records, [&](const nlohmann::json& one) { return one.at("t") == type; }));
}

void RunnerTest::ExpectLine(const std::string& bytes, const std::string& text)
{
    EXPECT_NE(FromPlatformLines(bytes).find(text), std::string::npos) << bytes;
}
