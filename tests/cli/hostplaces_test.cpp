// Where the host looks for its data, and which environments it tolerates.

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "tests/support/hostprocess.h"
#include "tests/support/scopedfolder.h"

namespace
{

class HostPlaces : public testing::Test
{
protected:
    HostPlaces() { m_folder.WriteFile(L"Daten/CDataSetModel/gut.txt", "gut"); }

    static SHostRun Run(const std::wstring& dataDir, const std::wstring& workingDirectory,
                        const std::vector<std::wstring>& options = {})
    {
        std::vector<std::wstring> arguments = {L"-d", dataDir, L"--dll", L"datasetmodels"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        SHostOptions hostOptions;
        hostOptions.workingDirectory = workingDirectory;
        return RunHost(arguments, hostOptions);
    }

    static void ExpectTheCase(const SHostRun& run)
    {
        EXPECT_EQ(run.output, ToPlatformLines("CDataSetModel\n"
                                              "\tgut.txt... OK\n"
                                              "\n"
                                              "Zusammenfassung\n"
                                              "\tAusgeführt:\t1 Klasse, 1 Test\n"
                                              "\tErfolgreich:\t1 Klasse, 1 Test\n"));
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.exitStatus, 0);
    }

    /// The full name of the case, against which patterns are matched.
    std::wstring GetCasePath() const
    {
        std::wstring path = m_folder.GetPathOf(L"Daten/CDataSetModel/CDataSetModel") + L":gut.txt";
        std::ranges::replace(path, L'\\', L'/');
        return path;
    }

    ScopedFolder m_folder;
};

TEST_F(HostPlaces, ResolveADataDirectoryAgainstTheCallersWorkingDirectory)
{
    ExpectTheCase(Run(L"Daten", m_folder.GetPath()));
}

TEST_F(HostPlaces, ResolveADataDirectoryBeforeAModuleChangesTheWorkingDirectory)
{
    SHostOptions options;
    options.workingDirectory = m_folder.GetPath();
    options.variables = {{L"LUTESTSUITE_TEST_MOVES", L"1"}};

    const SHostRun run =
        RunHost({L"-q", L"-d", L"Daten", L"--dll", L"datasetmodels", L"--dll", L"placemodels"}, options);

    EXPECT_NE(run.output.find("    gut.txt"), std::string::npos) << run.output;
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(HostPlaces, AcceptADataDirectoryAboveTheWorkingDirectory)
{
    ExpectTheCase(Run(L"../Daten", m_folder.MakeFolder(L"anderswo")));
}

TEST_F(HostPlaces, AcceptALinkNamedAfterAClassAboveTheWorkingDirectory)
{
    m_folder.WriteFile(L"Menge/gut.txt", "gut");
    std::error_code error;
    std::filesystem::create_directory_symlink(LbEncoding::ToNative(m_folder.GetPathOf(L"Menge")),
                                              LbEncoding::ToNative(m_folder.GetPathOf(L"CDataSetModel")), error);
    if (error)
    {
        GTEST_SKIP() << "links cannot be made here: " << error.message();
    }
    ExpectTheCase(Run(L"../CDataSetModel", m_folder.MakeFolder(L"anderswo")));
}

TEST_F(HostPlaces, AcceptAnAbsoluteDataDirectoryFromAnywhere)
{
    ExpectTheCase(Run(m_folder.GetPathOf(L"Daten"), m_folder.MakeFolder(L"anderswo")));
}

TEST_F(HostPlaces, AcceptTheFolderOfAClassAsWorkingDirectory)
{
    ExpectTheCase(Run(L".", m_folder.GetPathOf(L"Daten/CDataSetModel")));
}

TEST_F(HostPlaces, MatchPatternsAgainstAbsolutePaths)
{
    ExpectTheCase(Run(L"Daten", m_folder.GetPath(), {L"--no-regex", L"-i", GetCasePath()}));
}

TEST_F(HostPlaces, NeedNoTemporaryFolderForHelp)
{
    const std::wstring missing = m_folder.GetPathOf(L"gibt es nicht");
    SHostOptions options;
    options.variables = {{L"TMPDIR", missing}, {L"TMP", missing}, {L"TEMP", missing}};

    const SHostRun run = RunHost({L"-h"}, options);

    EXPECT_EQ(run.output, RunHost({L"-h"}).output);
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, 0);
}

} // namespace
