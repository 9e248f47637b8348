#include "tests/lutestsuiterunner/cli/distributedtest.h"

#include <regex>

#include "base/lbfilesystem.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "tests/support/places.h"

namespace
{

/// The text of a report with "#" in place of each time.
std::string readReport(const std::wstring& path)
{
    static const std::regex s_times("[0-9]{4}-[0-9]{2}-[0-9]{2}[ T][0-9]{2}:[0-9]{2}:[0-9]{2}|[0-9]+\\.[0-9]{6}|"
                                    "time=\"[0-9.]+\"|\"seconds\": [-+.0-9e]+");
    std::string text = LbFileSystem::ReadFile8Bit(path);
    if (path.ends_with(Runner::c_SummaryName))
    {
        auto summary = nlohmann::ordered_json::parse(text);
        // Which cases are the slowest differs between runs.
        summary["slowest"] = summary["slowest"].size();
        text = summary.dump(1);
    }
    return std::regex_replace(text, s_times, "#");
}

} // namespace

SHostRun DistributedTest::Submit(const std::vector<std::wstring>& own, const std::vector<std::wstring>& library,
                                 const SHostOptions& options) const
{
    std::vector<std::wstring> arguments = {L"submit", L"--out", LbPath::WithoutSeparator(GetOut())};
    arguments.insert(arguments.end(), own.begin(), own.end());
    return Run(arguments, library, options);
}

void DistributedTest::MakeDurations(const std::vector<int>& milliseconds) const
{
    for (std::size_t index = 0; index < milliseconds.size(); ++index)
    {
        m_folder.WriteFile(L"data/CDurationModel/" + std::to_wstring(index) + L".ms",
                           std::to_string(milliseconds[index]));
    }
}

void DistributedTest::MakeMixedData() const
{
    for (const wchar_t* const name : {L"a/CResultModel", L"a/CPassedModel", L"b/CMessageModel"})
    {
        m_folder.MakeFolder(L"data/" + std::wstring(name));
    }
    MakeDurations({3, 1, 2, 1, 0});
}

SHostRun DistributedTest::RunExamples(std::vector<std::wstring> arguments, const SHostOptions& options)
{
    arguments.insert(arguments.end(), {L"--", L"-d", L"" LUTESTSUITE_SOURCE_DIR "/examples/data"});
    return RunRunner(arguments, options);
}

void DistributedTest::ExpectSameReports(const std::wstring& folder, const std::wstring& other)
{
    for (const wchar_t* const name : {L"junit.xml", L"report.xml", L"report.html", L"summary.json"})
    {
        EXPECT_EQ(readReport(folder + name), readReport(other + name)) << LbEncoding::ToUtf8(name);
    }
}

void DistributedTest::ExpectProof(const std::wstring& folder)
{
    if constexpr (LbPath::c_Separator == L'/')
    {
        SHostOptions options;
        options.program = L"/usr/bin/python3";
        const SHostRun run = RunHost({L"" LUTESTSUITE_SOURCE_DIR "/scripts/check-proof", folder}, options);
        EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
        ExpectLine(run.output, ": proven\n");
    }
}
