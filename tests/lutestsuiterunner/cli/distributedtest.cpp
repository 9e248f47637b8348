#include "tests/lutestsuiterunner/cli/distributedtest.h"

#include <algorithm>
#include <regex>

#include "base/lbfilesystem.h"
#include "tests/support/places.h"

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

std::string DistributedTest::ReadReport(const std::wstring& path)
{
    static const std::regex s_numbers("[0-9]+([.,:-][0-9]+)*");
    std::string text = LbFileSystem::ReadFile8Bit(path);
    // This text depends on times.
    text.resize(std::min(text.size(), text.find("\"slowest\"")));
    return std::regex_replace(text, s_numbers, "#");
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
