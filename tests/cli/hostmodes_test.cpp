// The host's output in the modes that run no case.

#include <algorithm>
#include <array>
#include <regex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/os/filereplacement.h"
#include "tests/support/golden.h"
#include "tests/support/hostprocess.h"
#include "tests/support/places.h"
#include "tests/support/scopedfolder.h"
#include "tests/support/timestamps.h"

namespace
{

void replaceAll(std::string& text, const std::string& part, const std::string& other)
{
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + other.size()))
    {
        text.replace(at, part.size(), other);
    }
}

class HostModes : public testing::Test
{
protected:
    /// Runs the host over the test's data directory.
    SHostRun Run(std::vector<std::wstring> options) const
    {
        options.insert(options.end(),
                       {L"-d", m_folder.GetPathOf(L"Daten"), L"--dll", L"datasetmodels", L"--dll", L"resultmodels"});
        return RunPlain(options);
    }

    SHostRun RunPlain(const std::vector<std::wstring>& options) const
    {
        SHostOptions hostOptions;
        hostOptions.variables = {{L"XDG_DATA_HOME", m_user.GetPath()}, {L"APPDATA", m_user.GetPath()}};
        return RunHost(options, hostOptions);
    }

    /// Replaces what depends on platform and location.
    std::string Normalize(const SHostRun& run) const { return Normalize(run.output); }

    std::string Normalize(const std::string& output) const
    {
        std::string text = FromPlatformLines(output);
        replaceAll(text, LbEncoding::ToUtf8(m_folder.GetPath()), "ORDNER/");
        replaceAll(text, LbEncoding::ToUtf8(m_user.GetPath()), "BENUTZER/");
        const std::wstring host = LbPath::ToNative(L"" LUTESTSUITE_HOST);
        replaceAll(text, LbEncoding::ToUtf8(host), "HOST");
        replaceAll(text, LbEncoding::ToUtf8(LbOs::c_ModuleSuffix), ".modul");
        replaceAll(text, LbEncoding::ToUtf8(std::wstring(1, LbPath::c_Separator)), "/");
        return std::regex_replace(text, std::regex("Temp-[-0-9a-f]{36}"), "Temp-ID");
    }

    /// Writes one unit test per level of folders, because the order inside a directory depends on the file system.
    void WriteData() const
    {
        m_folder.WriteFile(L"Daten/CPassedModel/#ExtraInfo.xml",
                           "<ExtraInfo><TestCase name=\"eins\"><Enable>false</Enable></TestCase></ExtraInfo>");
        const std::wstring dataSets = L"Daten/weiter/CDataSetModel/";
        for (const wchar_t* const name : {L"a.txt", L"b mit Lücke.txt", L"c.txt", L"d.txt", L"e.txt"})
        {
            m_folder.WriteFile(dataSets + name, name[0] == L'd' ? "gut" : name[0] == L'e' ? "" : "anders");
        }
        m_folder.WriteFile(dataSets + L"f.txt", "");
        m_folder.WriteFile(dataSets + L"#ExtraInfo.xml",
                           "<ExtraInfo><TestCase name=\"[cd]*\"><Enable>true</Enable></TestCase>"
                           "<TestCase name=\"a*\"><Enable>true</Enable></TestCase></ExtraInfo>");
    }

    void ExpectOutput(const std::string& golden, const SHostRun& run) const
    {
        ExpectGolden("cli/" + golden, Normalize(run));
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.exitStatus, 0);
    }

    ScopedFolder m_user;
    ScopedFolder m_folder;
};

TEST_F(HostModes, ListTheSelection)
{
    WriteData();

    ExpectOutput("query.txt", Run({L"-q", L"-e", L"b mit"}));
}

TEST_F(HostModes, ListRememberedDataDirectories)
{
    m_user.WriteFile(L"LuTestSuite/Orvell/LastConfig.xml",
                     "<Config><DataDirHistory><Dir path=\"eins\"/><Dir path=\"zwei\"/></DataDirHistory></Config>");

    ExpectOutput("query_history.txt", RunPlain({L"-q"}));
}

TEST_F(HostModes, ListNothingWithoutAnyDataDirectory)
{
    EXPECT_EQ(RunPlain({L"-q"}).output, "");
}

TEST_F(HostModes, ListDisabledCases)
{
    WriteData();

    ExpectOutput("disabled.txt", Run({L"--list-disabled"}));
}

TEST_F(HostModes, ListDuplicates)
{
    WriteData();

    ExpectOutput("duplicates_list.txt", Run({L"--list-duplicates"}));
}

TEST_F(HostModes, DeleteDuplicates)
{
    WriteData();

    ExpectOutput("duplicates_delete.txt", Run({L"--delete-duplicates"}));
    EXPECT_EQ(LbFileSystem::GetFileNames(m_folder.GetPathOf(L"Daten/weiter/CDataSetModel")),
              (std::vector<std::wstring>{L"#ExtraInfo.xml", L"a.txt", L"d.txt", L"e.txt"}));
}

/// The host prints only why a comparison failed. It prints nothing if it wrote the page.
TEST_F(HostModes, ReportWhyReportsCannotBeCompared)
{
    const std::wstring report = m_folder.WriteFile(
        L"a.xml", LbFileSystem::ReadFile8Bit(LbPath::ToNative(L"" LUTESTSUITE_GOLDEN_DIR "/report/full.xml")));
    const std::wstring broken = m_folder.WriteFile(L"kaputt.xml", "<report>");
    const std::wstring missing = m_folder.GetPathOf(L"fehlt.xml");
    const std::wstring page = m_folder.GetPathOf(L"Seite.html");
    std::string output;
    for (const auto& [first, second, out] : std::vector<std::array<std::wstring, 3>>{{report, L"", page},
                                                                                     {report, missing, page},
                                                                                     {report, broken, page},
                                                                                     {report, report, report},
                                                                                     {report, report, page}})
    {
        std::vector<std::wstring> options = {L"--diff-in", first, L"--diff-out", out};
        if (!second.empty())
        {
            options.insert(options.end(), {L"--diff-in", second});
        }
        const SHostRun run = RunPlain(options);

        output += run.output;
        EXPECT_EQ(run.errors, "");
        EXPECT_EQ(run.exitStatus, 0);
    }
    ExpectGolden("cli/diff.txt", Normalize(output));
    EXPECT_TRUE(LbFileSystem::IsFile(page));
}

/// The complete output of a child process without a parent.
TEST_F(HostModes, ReportAChildThatNoRunHasStarted)
{
    m_folder.MakeFolder(L"Daten");

    const SHostRun run = Run({L"--memory-id", L"a", L"--request-event-id", L"b", L"--response-event-id", L"c"});

    ExpectGolden("cli/child.txt", std::regex_replace(Normalize(run.errors), std::regex("Zeile \\d+"), "Zeile N"));
    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.exitStatus, 2);
}

/// Archive runs by the host of this build, with the example's checksum tests.
class HostArchive : public HostModes
{
protected:
    HostArchive()
    {
        const std::wstring stored =
            LbPath::ToNative(L"" LUTESTSUITE_SOURCE_DIR "/examples/data/Checksums/CGzipTrailers/stored.gz");
        m_folder.WriteFile(L"Daten und mehr/CGzipTrailers/stored.gz", LbFileSystem::ReadFile8Bit(stored));
    }

    /// Writes a configuration with one archive run, and returns the value of --archive-run that selects it.
    std::wstring Configure(const std::wstring& elements = L"") const
    {
        const std::wstring host = LbPath::ToNative(L"" LUTESTSUITE_HOST);
        const std::wstring text =
            LbFormat(L"<?xml version=\"1.0\" encoding=\"UTF-8\"?><ArchiveRun><Run name=\"Nacht\"><BinaryDir>%s"
                     L"</BinaryDir><Config>%s</Config><Platform>x64</Platform><DataDir>%s</DataDir><OutDir>%s</OutDir>"
                     L"<External>false</External>%s</Run></ArchiveRun>",
                     LbPath::GetParent(host), IsDebug() ? L"Debug" : L"Release", m_folder.GetPathOf(L"Daten und mehr"),
                     m_folder.GetPathOf(L"Ausgabe"), elements);
        return m_folder.WriteFile(L"Archiv.xml", LbEncoding::ToUtf8(text)) + L":Nacht";
    }

    /// Writes a configuration with one archive run, which may be invalid, and returns the value of --archive-run.
    std::wstring WriteRun(const std::wstring& file, const std::wstring& binaryDir, const std::wstring& config,
                          const std::wstring& platform, const std::wstring& dataDir = L"",
                          const std::wstring& outDir = L"") const
    {
        const std::wstring text =
            LbFormat(L"<ArchiveRun><Run name=\"Nacht\"><BinaryDir>%s</BinaryDir><Config>%s</Config><Platform>%s"
                     L"</Platform><DataDir>%s</DataDir><OutDir>%s</OutDir></Run></ArchiveRun>",
                     binaryDir, config, platform, dataDir.empty() ? m_folder.GetPathOf(L"Daten und mehr") : dataDir,
                     outDir.empty() ? m_folder.GetPathOf(L"Ausgabe") : outDir);
        return m_folder.WriteFile(file, LbEncoding::ToUtf8(text)) + L":Nacht";
    }

    static bool IsDebug() { return std::wstring(L"" LUTESTSUITE_HOST).find(L"CLID") != std::wstring::npos; }

    std::vector<std::wstring> GetArchive(const std::wstring& ending) const
    {
        std::vector<std::wstring> names = LbFileSystem::GetFileNames(m_folder.GetPathOf(L"Ausgabe/Archive"));
        std::erase_if(names, [&ending](const std::wstring& name) {
            return !name.starts_with(L"Report") || !name.ends_with(ending);
        });
        return names;
    }

    /// Changes the year of the only archived run to 2001, because two runs in one second would have the same name.
    void PutBack() const
    {
        const std::wstring folder = m_folder.GetPathOf(L"Ausgabe/Archive") + LbPath::c_Separator;
        for (const wchar_t* const ending : {L".xml", L".html"})
        {
            ASSERT_EQ(GetArchive(ending).size(), 1U);
            const std::wstring name = GetArchive(ending)[0];
            std::wstring earlier = name;
            earlier.replace(earlier.find(L'['), 5, L"[2001");
            ASSERT_TRUE(LbOs::RenameFile(folder + name, folder + earlier));
        }
    }

    /// Writes the example's configuration, and returns the value of --archive-run that selects its run for this build.
    std::wstring WriteExample() const
    {
        const bool isWindows = LbPath::c_Separator == L'\\';
        const std::wstring binaryDir =
            LbFormat(L"build/%s-%s/bin", isWindows ? L"mingw" : L"linux", IsDebug() ? L"debug" : L"release");
        std::string text =
            LbFileSystem::ReadFile8Bit(LbPath::ToNative(L"" LUTESTSUITE_SOURCE_DIR "/examples/archive/ArchiveRun.xml"));
        for (const auto& [folder, ours] :
             {std::pair(binaryDir, LbPath::GetParent(LbPath::ToNative(L"" LUTESTSUITE_HOST))),
              std::pair(std::wstring(IsDebug() ? L"examples/data/Checksums" : L"examples/data"),
                        m_folder.GetPathOf(L"Daten und mehr")),
              std::pair(std::wstring(L"build/archive"), m_folder.GetPathOf(L"Ausgabe"))})
        {
            const std::string element = LbEncoding::ToUtf8(LbFormat(L">%s<", LbPath::ToNative(folder)));
            EXPECT_NE(text.find(element), std::string::npos) << element;
            replaceAll(text, element, LbEncoding::ToUtf8(LbFormat(L">%s<", LbPath::WithoutSeparator(ours))));
        }
        return LbFormat(L"%s:%s%s", m_folder.WriteFile(L"ArchiveRun.xml", text), isWindows ? L"Windows" : L"Linux",
                        IsDebug() ? L" Debug" : L"");
    }
};

TEST_F(HostArchive, PrintsEachExecutedRun)
{
    const SHostRun run = RunPlain({L"--archive-run", Configure()});

    ExpectOutput("archive.txt", run);
    ASSERT_EQ(GetArchive(L".xml").size(), 1U);
    const std::wstring pattern =
        LbFormat(L"Report\\.x64\\.%s\\.\\[\\d{4}-\\d\\d-\\d\\d\\]-\\[\\d\\d-\\d\\d-\\d\\d\\]\\.xml",
                 IsDebug() ? L"debug" : L"release");
    EXPECT_TRUE(std::regex_match(GetArchive(L".xml")[0], std::wregex(pattern)));
    EXPECT_EQ(GetArchive(L".html").size(), 1U);
}

TEST_F(HostArchive, ComparesRunsOfTwoDays)
{
    const std::wstring value = Configure();
    RunPlain({L"--archive-run", value});
    PutBack();
    m_folder.WriteFile(L"Daten und mehr/CGzipTrailers/stored.gz", "kein Archiv");

    RunPlain({L"--archive-run", value});

    EXPECT_EQ(GetArchive(L".xml").size(), 2U);
    EXPECT_EQ(GetArchive(L".html").size(), 2U);
    EXPECT_TRUE(std::ranges::any_of(LbFileSystem::GetFileNames(m_folder.GetPathOf(L"Ausgabe/Archive/Diff")),
                                    [](const std::wstring& name) { return name.starts_with(L"Diff.x64."); }));
    const std::string overview = LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"Ausgabe/index.html"));
    EXPECT_NE(overview.find("100.00% (1/1)"), std::string::npos) << overview;
    EXPECT_NE(overview.find("0.00% (0/1)"), std::string::npos) << overview;
    EXPECT_NE(overview.find(">Diff</a>"), std::string::npos) << overview;
}

TEST_F(HostArchive, UsesTheModulesOfTheCommandLine)
{
    m_folder.MakeFolder(L"Daten und mehr/CPassedModel");

    RunPlain({L"--archive-run", Configure(), L"--dll", L"resultmodels"});

    const std::string overview = LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"Ausgabe/index.html"));
    EXPECT_NE(overview.find("100.00% (2/2)"), std::string::npos) << overview;
}

TEST_F(HostArchive, UsesTheSelectionOfTheCommandLine)
{
    m_folder.MakeFolder(L"Daten und mehr/CPassedModel");

    const SHostRun run = RunPlain({L"--archive-run", Configure(), L"--dll", L"resultmodels", L"-i", L":eins$"});

    const std::string overview = LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"Ausgabe/index.html"));
    EXPECT_NE(overview.find("100.00% (1/1)"), std::string::npos) << overview;
    EXPECT_EQ(run.output.find("Warnung"), std::string::npos) << run.output;
}

TEST_F(HostArchive, WarnsOfARunWithoutCases)
{
    const SHostRun run = RunPlain({L"--archive-run", Configure(), L"-i", L"gibt es nicht"});

    EXPECT_NE(FromPlatformLines(run.output).find("Warnung: Der archivierte Lauf hat keinen Testfall ausgeführt.\n"),
              std::string::npos)
        << run.output;
    EXPECT_EQ(run.exitStatus, 0);
}

/// The test creates reports for each second in which the run may begin.
TEST_F(HostArchive, OverwritesTheReportsOfTheSameSecond)
{
    const std::vector<std::wstring> stamps = GetNextTimeStamps();
    for (const std::wstring& stamp : stamps)
    {
        const std::wstring stem =
            LbFormat(L"Ausgabe/Archive/Report.x64.%s.%s", IsDebug() ? L"debug" : L"release", stamp);
        m_folder.WriteFile(stem + L".xml", "alt");
        m_folder.WriteFile(stem + L".html", "alt");
    }

    RunPlain({L"--archive-run", Configure()});

    for (const wchar_t* const ending : {L".xml", L".html"})
    {
        const std::vector<std::wstring> names = GetArchive(ending);
        EXPECT_EQ(names.size(), stamps.size());
        EXPECT_EQ(std::ranges::count_if(names,
                                        [this](const std::wstring& name) {
                                            return LbFileSystem::ReadFile8Bit(
                                                       m_folder.GetPathOf(L"Ausgabe/Archive/" + name)) != "alt";
                                        }),
                  1);
    }
}

/// Uses the run for this platform in the shipped configuration, with the folders of this build and of this test.
TEST_F(HostArchive, RunsTheExampleOnTwoDays)
{
    const std::wstring value = WriteExample();

    const SHostRun first = RunPlain({L"--archive-run", value});
    PutBack();
    const SHostRun second = RunPlain({L"--archive-run", value});

    for (const SHostRun* const run : {&first, &second})
    {
        EXPECT_EQ(run->errors, "");
        EXPECT_EQ(run->exitStatus, 0) << run->output;
    }
    EXPECT_EQ(GetArchive(L".xml").size(), 2U);
    EXPECT_EQ(GetArchive(L".html").size(), 2U);
    // The data has one class with one case. The overview shows the counts of classes and of cases for both runs.
    const std::regex passed("100\\.00% \\(1/1\\)");
    const std::string overview = LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"Ausgabe/index.html"));
    EXPECT_EQ(std::distance(std::sregex_iterator(overview.begin(), overview.end(), passed), std::sregex_iterator()), 4)
        << overview;
}

/// The archive has all files that its pages need.
TEST_F(HostArchive, LeavesNoTemporaryFiles)
{
    RunPlain({L"--archive-run", Configure()});

    const std::wstring folder = m_user.GetPathOf(L"LuTestSuite/Orvell/Temp");
    EXPECT_EQ(GetArchive(L".xml").size(), 1U);
    for (const wchar_t* const name : {L"LuTestSuite.css", L"LuTestSuite.js"})
    {
        EXPECT_TRUE(LbFileSystem::IsFile(m_folder.GetPathOf(std::wstring(L"Ausgabe/Archive/") + name)));
    }
    EXPECT_TRUE(LbFileSystem::IsDirectory(folder));
    EXPECT_EQ(LbFileSystem::GetFileNames(folder), std::vector<std::wstring>());
}

TEST_F(HostArchive, ReportsAMissingRun)
{
    const std::wstring value = Configure();

    const SHostRun run = RunPlain({L"--archive-run", value + L"s"});

    EXPECT_EQ(run.output, ToPlatformLines("Fehler: Run Eintrag 'Nachts' nicht gefunden\n"));
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(HostArchive, ReportsAFailureInOneLine)
{
    const std::wstring data = m_folder.GetPathOf(L"Daten und mehr") + LbPath::c_Separator;
    const std::wstring missing = m_folder.GetPathOf(L"fehlt") + LbPath::c_Separator;
    const std::vector<std::pair<std::wstring, std::string>> failures = {
        {L"Nacht", "Fehler: Datei  nicht gefunden\n"},
        {L"fehlt.xml:Nacht", "Fehler: Datei fehlt.xml nicht gefunden\n"},
        {m_folder.WriteFile(L"kaputt.xml", "<ArchiveRun>") + L":Nacht", "Fehler: XML-Syntax Fehler\n"},
        {WriteRun(L"Konfiguration.xml", L"a", L"x", L"x64"), "Fehler: Ungültige Konfiguration\n"},
        {WriteRun(L"Platform.xml", L"a", L"Debug", L"ARM"), "Fehler: Ungültige Platform\n"},
        {WriteRun(L"Ordner.xml", missing, L"Debug", L"x64"),
         LbEncoding::ToUtf8(LbFormat(L"Fehler: Verzeichnis %s existiert nicht\n", missing))},
        {WriteRun(L"Daten.xml", data, L"Debug", L"x64", missing),
         LbEncoding::ToUtf8(LbFormat(L"Fehler: Verzeichnis %s existiert nicht\n", missing))},
        {WriteRun(L"Ausgabe.xml", data, L"Debug", L"x64", data, m_folder.WriteFile(L"Datei", "")),
         LbEncoding::ToUtf8(LbFormat(L"Fehler: Verzeichnis %s existiert nicht\n",
                                     m_folder.GetPathOf(L"Datei") + LbPath::c_Separator))},
        {WriteRun(L"Programm.xml", data, L"Debug", L"x64"),
         LbEncoding::ToUtf8(
             LbFormat(L"Fehler: Executable %sLuTestSuiteCLID%s nicht gefunden.\n", data, LbOs::c_ExecutableSuffix))},
    };
    for (const auto& [value, line] : failures)
    {
        const SHostRun run = RunPlain({L"--archive-run", value});

        EXPECT_EQ(run.errors, ToPlatformLines(line));
        EXPECT_EQ(run.output, "");
        EXPECT_EQ(run.exitStatus, 2);
    }
}

TEST_F(HostArchive, RunsEvenIfAnotherModeIsGiven)
{
    const SHostRun run = RunPlain({L"--list-duplicates", L"--archive-run", Configure()});

    EXPECT_TRUE(run.output.starts_with(ToPlatformLines("Ausführung...\n"))) << run.output;
    EXPECT_EQ(run.output.find("Check: "), std::string::npos);
}

} // namespace
