#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "tests/support/golden.h"
#include "tests/support/hostprocess.h"
#include "tests/support/places.h"
#include "tests/support/scopedfolder.h"

namespace
{

using testing::HasSubstr;

constexpr const wchar_t* c_DataSet = L"Checksums/CRecordedChecksums/numbers 1 to 400.txt";
constexpr const wchar_t* c_Record = L"Checksums/CRecordedChecksums/Reference/numbers 1 to 400.txt";

/// Works on copies of the example data.
class ExampleHost : public testing::Test
{
protected:
    ExampleHost()
    {
        copy(c_DataSet);
        copy(c_Record);
        m_data.WriteFile(L"Checksums/CChecksumProperties/#ExtraInfo.xml", "<ExtraInfo/>");
    }

    static std::string readOriginal(const std::wstring& name)
    {
        return LbFileSystem::ReadFile8Bit(LbPath::ToNative(L"" LUTESTSUITE_SOURCE_DIR L"/examples/data/" + name));
    }

    void copy(const std::wstring& name) const { m_data.WriteFile(name, readOriginal(name)); }

    SHostRun Run(const std::wstring& action, const std::vector<std::wstring>& patterns) const
    {
        SHostOptions options;
        options.program = L"" LUTESTSUITE_BIN_DIR L"/" LUTESTSUITE_EXAMPLE_HOST;
        std::vector<std::wstring> arguments = {action, m_data.GetPath(), m_page.GetPathOf(L"page.html")};
        arguments.insert(arguments.end(), patterns.begin(), patterns.end());
        SHostRun run = RunHost(arguments, options);
        run.output = FromPlatformLines(run.output);
        return run;
    }

    std::string ReadPage() const { return LbFileSystem::ReadFile8Bit(m_page.GetPathOf(L"page.html")); }

    ScopedFolder m_data;
    ScopedFolder m_page;
};

TEST_F(ExampleHost, ShowsTheTreeWithTheSelectedCasesChecked)
{
    const SHostRun run = Run(L"show", {L":.*400", L"adler-32"});

    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    ExpectGolden("examples/host_show.txt", run.output);
    EXPECT_THAT(ReadPage(), HasSubstr("\nAusgewählte/Gefundene Fälle: 3/6\n"));
}

TEST_F(ExampleHost, RunsTheSelectedCasesWithItsOwnProgress)
{
    const SHostRun run = Run(L"run", {L"CRecordedChecksums:"});

    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    EXPECT_EQ(run.output, "1/2\n2/2\n2 von 2 erfolgreich\n");
    ExpectGolden("examples/host_run.html", ReadPage());
}

TEST_F(ExampleHost, StopsAtTheFirstFailure)
{
    m_data.WriteFile(c_Record, "0 00000000 00000000\n");

    const SHostRun run = Run(L"run", {L"CRecordedChecksums:"});

    EXPECT_EQ(run.exitStatus, 1) << run.errors;
    EXPECT_EQ(run.output, "1/2\n0 von 1 erfolgreich\n");
    EXPECT_THAT(ReadPage(), HasSubstr("Output unterscheidet sich von der Referenz-Ausführung"));
    EXPECT_THAT(ReadPage(), HasSubstr("Ausführung abgebrochen."));
}

TEST_F(ExampleHost, RecreatesAWrongRecord)
{
    m_data.WriteFile(c_Record, "0 00000000 00000000\n");

    const SHostRun run = Run(L"recreate", {L"CRecordedChecksums:"});

    EXPECT_EQ(run.exitStatus, 0) << run.errors;
    EXPECT_EQ(run.output, "1/2\n2/2\n");
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(m_data.GetPathOf(c_Record)), readOriginal(c_Record));
    ExpectGolden("examples/host_recreate.html", ReadPage());
    EXPECT_EQ(Run(L"run", {L"CRecordedChecksums:"}).exitStatus, 0);
}

TEST_F(ExampleHost, CreatesAMissingRecordAndItsFolder)
{
    LbFileSystem::RemoveTree(LbPath::GetParent(m_data.GetPathOf(c_Record)));
    EXPECT_EQ(Run(L"run", {L"CRecordedChecksums:numbers"}).exitStatus, 1);

    Run(L"recreate", {L"CRecordedChecksums:numbers"});

    EXPECT_EQ(LbFileSystem::ReadFile8Bit(m_data.GetPathOf(c_Record)), readOriginal(c_Record));
}

TEST_F(ExampleHost, ReportsAnEmptySelection)
{
    const SHostRun run = Run(L"run", {L"CNoSuchTest:"});

    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_EQ(run.output, "Keine Testfälle ausgewählt.\n");
}

TEST_F(ExampleHost, PrintsItsUsage)
{
    const SHostRun run = Run(L"delete", {});

    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_THAT(run.output, HasSubstr("Aufruf: "));
}

TEST_F(ExampleHost, ReportsAnInvalidPattern)
{
    const SHostRun run = Run(L"run", {L"("});

    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_EQ(run.output, "Fehler: Ungültiger regulärer Ausdruck '('\n");
}

} // namespace
