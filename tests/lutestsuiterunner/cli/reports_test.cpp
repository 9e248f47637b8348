// The reports of whole runs, compared as files.

#include <array>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "tests/lutestsuiterunner/cli/runnertest.h"

namespace
{

class RunnerReportFiles : public RunnerTest
{
protected:
    static constexpr std::array sc_Names = {L"report.xml", L"report.html", L"junit.xml", L"summary.json"};

    using Contents = std::array<std::string, sc_Names.size()>;

    /// Passed and failed cases, some of them with files.
    RunnerReportFiles()
    {
        m_folder.MakeFolder(L"data/CResultModel");
        m_folder.MakeFolder(L"data/weiter/CPassedModel");
        m_folder.WriteFile(L"data/CDataSetModel/gut.txt", "gut");
        m_folder.WriteFile(L"data/CDataSetModel/schlecht.txt", "schlecht");
    }

    Contents ReadReports() const
    {
        Contents contents;
        for (std::size_t index = 0; index < contents.size(); ++index)
        {
            contents[index] = LbFileSystem::ReadFile8Bit(GetOut() + sc_Names[index]);
        }
        return contents;
    }

    static void ExpectEqual(const Contents& contents, const Contents& others)
    {
        for (std::size_t index = 0; index < contents.size(); ++index)
        {
            EXPECT_GT(contents[index].size(), 500U);
            EXPECT_TRUE(contents[index] == others[index]) << LbEncoding::ToUtf8(sc_Names[index]);
        }
    }

    /// Removes dates, times, and the list of the slowest cases, whose order depends on times.
    static Contents RemoveTimes(Contents contents)
    {
        nlohmann::ordered_json summary = nlohmann::ordered_json::parse(contents.back());
        summary["slowest"] = summary["slowest"].size();
        contents.back() = summary.dump(1);
        const std::regex times(R"(\d{4}-\d\d-\d\d[ T]\d\d:\d\d:\d\d|\d+\.\d{6}|time="[0-9.]+"|"seconds": [-+.0-9e]+)");
        for (std::string& content : contents)
        {
            content = std::regex_replace(content, times, "#");
        }
        return contents;
    }
};

TEST_F(RunnerReportFiles, HaveTheSameBytesAfterRunAndReport)
{
    EXPECT_EQ(Run({L"run", L"--retries", L"1"}, {L"-w", L"2", L"-x"}).exitStatus, 1);
    const Contents ofRun = ReadReports();
    for (const wchar_t* const name : sc_Names)
    {
        LbFileSystem::RemoveTree(GetOut() + name);
    }

    EXPECT_EQ(RunRunner({L"report", GetOut()}).exitStatus, 1);
    ExpectEqual(ReadReports(), ofRun);
}

TEST_F(RunnerReportFiles, DifferOnlyInTimesIfTheRunWasResumed)
{
    for (const std::vector<std::wstring>& mode : std::vector<std::vector<std::wstring>>{{}, {L"-x"}})
    {
        Run({L"run", L"--force"}, mode);
        const Contents ofWhole = ReadReports();
        Run({L"run", L"--force", L"--fail-fast=2"}, mode);
        ASSERT_NE(LbFileSystem::ReadFile8Bit(GetOut() + L"summary.json").find("canceled"), std::string::npos);

        EXPECT_EQ(Resume().exitStatus, 1);
        EXPECT_GT(CountRecords("start", 2), 0U);
        ExpectEqual(RemoveTimes(ReadReports()), RemoveTimes(ofWhole));
    }
}

} // namespace
