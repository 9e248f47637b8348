// What a case costs the host apart from time.

#include <cstddef>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "base/lbcommandline.h"
#include "base/lbpath.h"
#include "base/os/childprocess.h"
#include "tests/support/os/systemcounts.h"
#include "tests/support/places.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// The number of times that a run of `cases` passing cases writes to standard output.
std::optional<std::size_t> countWrites(std::size_t cases, const std::wstring& options)
{
    const ScopedFolder folder;
    for (std::size_t index = 0; index < cases; ++index)
    {
        folder.WriteFile(L"CDataSetModel/" + std::to_wstring(index) + L".txt", "gut");
    }
    LbOs::SChildOptions host;
    host.program = LbPath::ToNative(L"" LUTESTSUITE_HOST);
    host.commandLine = LbCommandLine::Quote(host.program) + L" -d " + LbCommandLine::Quote(folder.GetPath()) +
                       L". --dll datasetmodels" + options;
    return LbOs::CountWrites([&host] {
        const auto child = LbOs::CChildProcess::Start(host);
        EXPECT_TRUE(child && child->Wait());
        EXPECT_EQ(child->GetExitStatus(), 0);
    });
}

class HostCosts : public testing::TestWithParam<const wchar_t*>
{
};

TEST_P(HostCosts, IncludeAtMostOneWriteOfOutputPerCase)
{
    constexpr std::size_t c_Few = 10;
    constexpr std::size_t c_Many = 60;
    const auto few = countWrites(c_Few, GetParam());
    const auto many = countWrites(c_Many, GetParam());
    if (!few || !many)
    {
        GTEST_SKIP() << "writes cannot be counted";
    }

    EXPECT_GT(*few, 0U);
    EXPECT_LE(*many, *few + c_Many - c_Few);
}

INSTANTIATE_TEST_SUITE_P(Modes, HostCosts, testing::Values(L"", L" -p -w 2", L" -x"));

} // namespace
