// Coverage of a test module, counted by the compiler and written at the end of a process.

#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "tests/support/hostprocess.h"
#include "tests/support/scopedfolder.h"

#ifdef LUTESTSUITE_GCOV

namespace
{

class HostCoverage : public testing::TestWithParam<const wchar_t*>
{
protected:
    /// The percentage of the module's lines that a run executes, as reported by the compiler's tool.
    static double Measure(const std::vector<std::wstring>& options)
    {
        const ScopedFolder data;
        data.MakeFolder(L"CCoverageModel");
        const ScopedFolder counts;
        SHostOptions hostOptions;
        // All counters are written to that folder.
        hostOptions.variables = {{L"GCOV_PREFIX", counts.GetPath()}, {L"GCOV_PREFIX_STRIP", L"99"}};
        std::vector<std::wstring> arguments = {L"-d", data.GetPath(), L"--dll", L"coveragemodels"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        EXPECT_EQ(RunHost(arguments, hostOptions).exitStatus, 0);
        return readLines(counts);
    }

private:
    static double readLines(const ScopedFolder& counts)
    {
        const std::filesystem::path object(LUTESTSUITE_COVERAGE_OBJECT);
        std::filesystem::path notes = object;
        notes.replace_extension(".gcno");
        std::filesystem::copy_file(notes, counts.GetPathOf(notes.filename().wstring()));
        const std::wstring output = counts.GetPathOf(L"output");
        const std::wstring command =
            LbFormat(L"cd '%s' && '%s' -n -o . '%s' >'%s' 2>&1", counts.GetPath(),
                     LbEncoding::FromUtf8(LUTESTSUITE_GCOV), object.stem().wstring() + L".gcda", output);
        EXPECT_EQ(std::system(LbEncoding::ToNative(command).c_str()), 0);
        const std::string text = LbFileSystem::ReadFile8Bit(output);
        const std::size_t source = text.find("coveragemodels.cpp'");
        const std::string mark = "Lines executed:";
        const std::size_t lines = text.find(mark, source);
        EXPECT_NE(lines, std::string::npos) << text;
        return lines == std::string::npos ? 0.0 : std::strtod(text.c_str() + lines + mark.size(), nullptr);
    }
};

TEST_P(HostCoverage, IsTheSameWithAndWithoutChildProcesses)
{
    const double inProcess = Measure({});

    EXPECT_GT(inProcess, 80.0);
    EXPECT_NEAR(Measure({GetParam()}), inProcess, 1.0);
}

INSTANTIATE_TEST_SUITE_P(Options, HostCoverage, testing::Values(L"-x", L"-s"));

} // namespace

#else

TEST(HostCoverage, IsTheSameWithAndWithoutChildProcesses)
{
    GTEST_SKIP() << "this build does not count lines, or gcov is missing";
}

#endif
