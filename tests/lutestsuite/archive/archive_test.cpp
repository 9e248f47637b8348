// Tests of the configuration of archive runs, and of runs whose host fails.

#include "testing/lutestsuite/archive/archive.h"

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include "base/lbcommandline.h"
#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lustream.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "tests/support/capturedoutput.h"
#include "tests/support/fulldevice.h"
#include "tests/support/places.h"
#include "tests/support/scopedenvironment.h"
#include "tests/support/scopedfolder.h"
#include "tests/support/timestamps.h"

namespace
{

using LuTestSuite::SArchiveRun;

constexpr const char* c_Build = "<Config>Release</Config><Platform>x64</Platform>";

/// The message that the call throws.
template<typename F>
std::wstring getMessage(const F& call)
{
    try
    {
        call();
    }
    catch (const std::wstring& message)
    {
        return message;
    }
    return L"none";
}

class ArchiveRuns : public testing::Test
{
protected:
    std::vector<SArchiveRun> Read(const std::string& runs, const LuTestSuiteSetup& setup = {}) const
    {
        return LuTestSuite::ReadArchiveRuns(m_folder.WriteFile(L"a.xml", "<ArchiveRun>" + runs + "</ArchiveRun>"),
                                            setup);
    }

    LuTestSuiteRun::SParams ReadParams(const std::string& elements, const LuTestSuiteSetup& setup = {}) const
    {
        return Read("<Run name=\"a\">" + std::string(c_Build) + elements + "</Run>", setup).at(0).params;
    }

    static std::wstring GetOptions(const SArchiveRun& run)
    {
        return LuTestSuite::GetArchiveRunArguments(run, {L"x.xml", L"h.html"});
    }

    ScopedFolder m_folder;
};

TEST_F(ArchiveRuns, AreReadInFileOrder)
{
    const std::vector<SArchiveRun> runs =
        Read("<Run name=\"a\"><BinaryDir>b</BinaryDir><Config>Debug</Config><Platform>Win32</Platform>"
             "<DataDir>d</DataDir><OutDir>o</OutDir></Run><Other/><Run name=\"c\">" +
             std::string(c_Build) + "</Run>");

    ASSERT_EQ(runs.size(), 2U);
    EXPECT_EQ(runs[0].name, L"a");
    EXPECT_EQ(runs[0].binaryDir, L"b");
    EXPECT_EQ(runs[0].config, L"Debug");
    EXPECT_EQ(runs[0].platform, L"Win32");
    EXPECT_EQ(runs[0].dataDir, L"d");
    EXPECT_EQ(runs[0].outDir, L"o");
    EXPECT_EQ(runs[1].name, L"c");
}

TEST_F(ArchiveRuns, UseTheirOwnDefaultsForMissingElements)
{
    const LuTestSuiteRun::SParams params = ReadParams("");

    EXPECT_TRUE(params.trackHeap);
    EXPECT_TRUE(params.external);
    EXPECT_FALSE(params.isolated);
    EXPECT_FALSE(params.assertDialog);
    EXPECT_FALSE(params.verbose);
    EXPECT_FALSE(params.parallel);
    EXPECT_EQ(params.workerThreads, 0U);
    EXPECT_EQ(params.repetitions, 1U);
    EXPECT_EQ(params.timeOutSec, 300U);
    EXPECT_EQ(params.testCaseMax, LuTestSuiteRun::c_NoLimit);
}

TEST_F(ArchiveRuns, TakeTheRemainingDefaultsFromTheSetup)
{
    LuTestSuiteSetup setup;
    setup.params.isolated = true;
    setup.params.verbose = true;
    setup.params.parallel = true;
    setup.params.workerThreads = 7;
    setup.params.repetitions = 3;
    setup.params.timeOutSec = 9;
    setup.params.testCaseMax = 50;
    setup.params.trackHeap = false;

    const LuTestSuiteRun::SParams params = ReadParams("", setup);

    EXPECT_TRUE(params.isolated);
    EXPECT_TRUE(params.verbose);
    EXPECT_TRUE(params.parallel);
    EXPECT_EQ(params.workerThreads, 7U);
    EXPECT_EQ(params.repetitions, 3U);
    EXPECT_EQ(params.timeOutSec, 300U);
    EXPECT_EQ(params.testCaseMax, 50U);
    EXPECT_TRUE(params.trackHeap);
}

TEST_F(ArchiveRuns, HaveZeroThreadsIfTheSetupIsNotParallel)
{
    LuTestSuiteSetup setup;
    setup.params.workerThreads = 7;

    EXPECT_EQ(ReadParams("", setup).workerThreads, 0U);
}

TEST_F(ArchiveRuns, ReadTheirParameters)
{
    const LuTestSuiteRun::SParams params =
        ReadParams("<TrackHeap>false</TrackHeap><ExternalRelease>false</ExternalRelease><AssertDialog>true"
                   "</AssertDialog><TimeOutSec>12</TimeOutSec><Unbekannt>1</Unbekannt>");

    EXPECT_FALSE(params.trackHeap);
    EXPECT_FALSE(params.external);
    EXPECT_TRUE(params.assertDialog);
    EXPECT_EQ(params.timeOutSec, 12U);
}

TEST_F(ArchiveRuns, NameTheFileThatIsMissingOrCannotBeRead)
{
    const std::wstring path = m_folder.GetPathOf(L"fehlt.xml");
    const std::wstring none = LbPath::WithoutSeparator(m_folder.MakeFolder(L"Ordner.xml"));

    EXPECT_EQ(getMessage([&] { LuTestSuite::ReadArchiveRuns(path, {}); }), L"Datei " + path + L" nicht gefunden");
    EXPECT_EQ(getMessage([&] { LuTestSuite::ReadArchiveRuns(none, {}); }),
              L"Datei " + none + L" konnte nicht gelesen werden");
}

TEST_F(ArchiveRuns, RefuseWrongRootElementsAndBrokenFiles)
{
    for (const char* const text : {"<Config/>", "<ArchiveRun>", ""})
    {
        const std::wstring path = m_folder.WriteFile(L"b.xml", text);
        EXPECT_EQ(getMessage([&] { LuTestSuite::ReadArchiveRuns(path, {}); }), L"XML-Syntax Fehler") << text;
    }
}

TEST_F(ArchiveRuns, RefuseAFileIfAnyEntryNamesAnUnknownBuild)
{
    const std::string good = "<Run name=\"a\">" + std::string(c_Build) + "</Run>";

    EXPECT_EQ(getMessage([&] { Read(good + "<Run><Config>debug</Config><Platform>x64</Platform></Run>"); }),
              L"Ungültige Konfiguration");
    EXPECT_EQ(getMessage([&] { Read(good + "<Run><Config>Debug</Config><Platform>ARM</Platform></Run>"); }),
              L"Ungültige Platform");
    EXPECT_EQ(getMessage([&] { Read(good + "<Run/>"); }), L"Ungültige Konfiguration");
}

TEST_F(ArchiveRuns, PassOnTheModulesOfTheCommandLine)
{
    LuTestSuiteSetup setup;
    setup.dlls = {L"Eigene Tests", L"b"};
    SArchiveRun run = Read("<Run>" + std::string(c_Build) + "<DataDir>a b</DataDir></Run>", setup).at(0);

    EXPECT_EQ(GetOptions(run), L" -d \"a b\" --xml \"x.xml\" --html \"h.html\" -x --track-heap --no-assert-dialog"
                               L" -t 300 -c 4294967295 --dll \"Eigene Tests\" --dll \"b\"");
}

TEST_F(ArchiveRuns, BecomeArgumentsIfAllParametersAreSet)
{
    SArchiveRun run;
    run.dataDir = L"d//";
    run.params.isolated = run.params.external = run.params.parallel = run.params.trackHeap = run.params.verbose = true;
    run.params.workerThreads = 3;
    run.params.repetitions = 2;
    run.params.timeOutSec = 5;
    run.params.testCaseMax = 6;
    run.params.dumpHeap = run.params.deVerboseOutput = true;
    run.params.deDebuggingSerialization = run.params.dePredefinedBreakPoints = true;

    EXPECT_EQ(GetOptions(run),
              L" -d \"d\" --xml \"x.xml\" --html \"h.html\" -x -s -w 3 --track-heap -v -r 2 -t 5 -c 6");
}

TEST_F(ArchiveRuns, BecomeArgumentsIfNoFlagIsSet)
{
    SArchiveRun run;
    run.dataDir = L"d";
    run.params.assertDialog = false;
    run.params.timeOutSec = 0;
    run.params.testCaseMax = 1;

    EXPECT_EQ(GetOptions(run), L" -d \"d\" --xml \"x.xml\" --html \"h.html\" --no-assert-dialog -t 0 -c 1");
}

/// Only a root keeps its separator; a backslash must not escape the closing quotation mark.
TEST_F(ArchiveRuns, PassOnTheDataDirectoryWithoutTrailingSeparatorUnlessItIsARoot)
{
    const bool isWindows = LbPath::c_Separator == L'\\';
    const std::vector<std::pair<std::wstring, std::wstring>> rows =
        isWindows ? std::vector<std::pair<std::wstring, std::wstring>>{{L"C:\\", L"\"C:\\\\\""},
                                                                       {L"C:\\\\", L"\"C:\\\\\""},
                                                                       {L"C:\\mit Lücke\\", L"\"C:\\mit Lücke\""},
                                                                       {L"C:\\a\\\\", L"\"C:\\a\""},
                                                                       {L"\\", L"\"\\\\\""}}
                  : std::vector<std::pair<std::wstring, std::wstring>>{{L"/", L"\"/\""},
                                                                       {L"//", L"\"/\""},
                                                                       {L"/mit Lücke/", L"\"/mit Lücke\""},
                                                                       {L"/a//", L"\"/a\""},
                                                                       {L"/a\\", L"\"/a\\\\\""}};
    for (const auto& [directory, word] : rows)
    {
        SArchiveRun run;
        run.dataDir = directory;

        EXPECT_TRUE(GetOptions(run).starts_with(L" -d " + word + L" --xml ")) << LbEncoding::ToUtf8(GetOptions(run));
        EXPECT_EQ(LbCommandLine::Split(GetOptions(run)).at(2), L"--xml");
    }
}

/// An archive run that uses the program archivechild in place of the host.
class ArchiveRunChild : public testing::Test
{
protected:
    ArchiveRunChild()
    {
        const std::wstring suffix = LbOs::c_ExecutableSuffix;
        m_run.binaryDir = m_folder.MakeFolder(L"Programme und mehr");
        std::filesystem::copy_file(
            std::filesystem::path(LbPath::ToNative(L"" LUTESTSUITE_BIN_DIR "/archivechild") + suffix),
            std::filesystem::path(GetHost()));
        CopyLibraries();
        m_run.config = L"Release";
        m_run.platform = L"x64";
        m_run.dataDir = m_folder.MakeFolder(L"leer");
        m_run.outDir = m_folder.GetPathOf(L"neu/Ausgabe");
    }

    std::wstring GetHost() const { return m_run.binaryDir + L"LuTestSuiteCLI" + LbOs::c_ExecutableSuffix; }

    /// Copies the program's libraries beside it if the platform searches for them only there.
    void CopyLibraries() const
    {
        const std::wstring bin = LbPath::ToNative(L"" LUTESTSUITE_BIN_DIR "/");
        for (const std::wstring& name : LbFileSystem::GetFileNames(bin))
        {
            if (LbPath::c_Separator == L'\\' && name.starts_with(L"lib") && name.ends_with(L".dll"))
            {
                LbFileSystem::CopyContent(bin + name, m_run.binaryDir + name);
            }
        }
    }

    std::wstring Execute(std::uint32_t timeOutSec = 60)
    {
        const CapturedOutput output;
        LuTestSuite::ExecuteArchiveRun(m_run, timeOutSec);
        return output.GetText();
    }

    void ExpectEmptyArchive()
    {
        EXPECT_TRUE(LbFileSystem::IsFile(m_folder.GetPathOf(L"neu/Ausgabe/index.html")));
        EXPECT_TRUE(LbFileSystem::IsDirectory(m_folder.GetPathOf(L"neu/Ausgabe/Archive")));
        EXPECT_TRUE(LbFileSystem::GetFileNames(m_folder.GetPathOf(L"neu/Ausgabe/Archive")).empty());
    }

    /// The path of the archived report without extension, for each second in which the run may begin.
    std::vector<std::wstring> GetReportStems() const
    {
        std::vector<std::wstring> stems;
        for (const std::wstring& stamp : GetNextTimeStamps())
        {
            stems.push_back(L"neu/Ausgabe/Archive/Report.x64.release." + stamp);
        }
        return stems;
    }

    std::vector<std::wstring> GetArchive() const
    {
        return LbFileSystem::GetFileNames(m_folder.GetPathOf(L"neu/Ausgabe/Archive"));
    }

    /// Full paths of the files that the child has written to the temporary folder.
    std::vector<std::wstring> GetTemporaryFiles() const
    {
        const std::wstring folder = LuTestSuiteUtils::GetLocalTestSuiteDir() + L"Temp" + LbPath::c_Separator;
        std::vector<std::wstring> paths = LbFileSystem::GetFileNames(folder);
        std::ranges::for_each(paths, [&folder](std::wstring& path) { path.insert(0, folder); });
        return paths;
    }

    /// Expects that the page is archived, the child's XML report is not, and `text` reports only that error.
    void ExpectOnlyThePage(const std::wstring& text) const
    {
        const std::vector<std::wstring> left = GetTemporaryFiles();
        ASSERT_EQ(left.size(), 1U);
        EXPECT_TRUE(left[0].ends_with(L"-Report.xml")) << LbEncoding::ToUtf8(left[0]);
        EXPECT_EQ(LbFileSystem::ReadFile8Bit(left[0]), "xml");
        const std::wstring line = L"Fehler: Report " + left[0] + L" konnte nicht archiviert werden.\n";
        const std::size_t found = text.find(line);
        EXPECT_NE(found, std::wstring::npos) << LbEncoding::ToUtf8(text);
        EXPECT_EQ(text.find(L"Fehler", found + 1), std::wstring::npos) << LbEncoding::ToUtf8(text);

        const std::vector<std::wstring> archive = GetArchive();
        ASSERT_EQ(archive.size(), 3U);
        EXPECT_TRUE(archive[2].ends_with(L".html")) << LbEncoding::ToUtf8(archive[2]);
    }

    ScopedUserFolder m_user;
    ScopedFolder m_folder;
    SArchiveRun m_run;
};

TEST_F(ArchiveRunChild, LeavesTheArchiveEmptyIfItWritesNoReports)
{
    const std::wstring text = Execute();

    EXPECT_TRUE(text.starts_with(L"Ausführung...\n" + GetHost() + L"  -d \"")) << LbEncoding::ToUtf8(text);
    EXPECT_EQ(text.find(L"Warnung"), std::wstring::npos) << LbEncoding::ToUtf8(text);
    ExpectEmptyArchive();
}

TEST_F(ArchiveRunChild, LeavesTheArchiveEmptyIfItCrashes)
{
    m_run.dataDir = m_folder.MakeFolder(L"crash");
    Execute();

    ExpectEmptyArchive();
}

TEST_F(ArchiveRunChild, IsTerminatedAfterItsTimeOut)
{
    m_run.dataDir = m_folder.MakeFolder(L"hang");

    const std::wstring text = Execute(1);

    EXPECT_TRUE(text.ends_with(
        LbFormat(L"Warnung: Prozess LuTestSuiteCLI%s nach 1 Sekunden abgebrochen.\n", LbOs::c_ExecutableSuffix)))
        << LbEncoding::ToUtf8(text);
    ExpectEmptyArchive();
}

TEST_F(ArchiveRunChild, HasItsReportsArchived)
{
    m_run.dataDir = m_folder.MakeFolder(L"reports");
    Execute();

    const std::vector<std::wstring> archive = GetArchive();
    ASSERT_EQ(archive.size(), 4U);
    const std::wstring folder = m_folder.GetPathOf(L"neu/Ausgabe/Archive") + LbPath::c_Separator;
    EXPECT_EQ(archive[0], L"LuTestSuite.css");
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(folder + archive[0]), LuTestSuiteUtils::GetDefaultStylesheet());
    EXPECT_EQ(archive[1], L"LuTestSuite.js");
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(folder + archive[1]), LuTestSuiteUtils::GetJavascriptSource());
    EXPECT_TRUE(archive[2].ends_with(L".html")) << LbEncoding::ToUtf8(archive[2]);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(folder + archive[2]), "html");
    EXPECT_TRUE(archive[3].ends_with(L".xml")) << LbEncoding::ToUtf8(archive[3]);
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(folder + archive[3]), "xml");
    EXPECT_TRUE(GetTemporaryFiles().empty());
}

TEST_F(ArchiveRunChild, KeepsItsTemporaryReportIfItsNameExistsInTheArchive)
{
    m_run.dataDir = m_folder.MakeFolder(L"reports");
    for (const std::wstring& stem : GetReportStems())
    {
        m_folder.MakeFolder(stem + L".xml");
    }

    ExpectOnlyThePage(Execute());
}

TEST_F(ArchiveRunChild, KeepsItsTemporaryReportWhenTheDiskIsFull)
{
    const std::wstring device = GetFullDevice();
    if (device.empty())
    {
        GTEST_SKIP() << "there is no full device here";
    }
    m_run.dataDir = m_folder.MakeFolder(L"reports");
    m_folder.MakeFolder(L"neu/Ausgabe/Archive");
    for (const std::wstring& stem : GetReportStems())
    {
        std::filesystem::create_symlink(device, m_folder.GetPathOf(stem + L".html"));
    }

    const std::wstring text = Execute();

    const std::vector<std::wstring> left = GetTemporaryFiles();
    ASSERT_FALSE(left.empty());
    EXPECT_TRUE(left.back().ends_with(L"-Report.html")) << LbEncoding::ToUtf8(left.back());
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(left.back()), "html");
    EXPECT_NE(text.find(LbFormat(L"Fehler: Report %s konnte nicht archiviert werden.\n", left.back())),
              std::wstring::npos)
        << LbEncoding::ToUtf8(text);
}

TEST_F(ArchiveRunChild, KeepsTheTemporaryStylesheetForPagesThatCouldNotBeArchived)
{
    m_run.dataDir = m_folder.MakeFolder(L"reports");
    const std::wstring archive = m_folder.WriteFile(L"neu/Ausgabe/Archive", "");
    Execute();
    LbOs::RemoveFile(archive);
    const std::wstring folder = LuTestSuiteUtils::GetLocalTestSuiteDir() + L"Temp" + LbPath::c_Separator;
    LuStreamWriteBinaryFile(folder + L"LuTestSuite.css").Close();
    LuStreamWriteBinaryFile(folder + L"LuTestSuite.js").Close();

    Execute();

    const std::vector<std::wstring> left = GetTemporaryFiles();
    EXPECT_EQ(GetArchive().size(), 4U);
    ASSERT_EQ(left.size(), 4U);
    EXPECT_EQ(left[0], folder + L"LuTestSuite.css");
    EXPECT_EQ(left[1], folder + L"LuTestSuite.js");
}

TEST_F(ArchiveRunChild, KeepsItsTemporaryReportsIfTheArchiveCannotBeMade)
{
    m_run.dataDir = m_folder.MakeFolder(L"reports");
    const std::wstring archive = m_folder.WriteFile(L"neu/Ausgabe/Archive", "");
    const std::wstring text = Execute();

    const std::vector<std::wstring> left = GetTemporaryFiles();
    ASSERT_EQ(left.size(), 2U);
    EXPECT_TRUE(text.ends_with(LbFormat(L"Fehler: Report %s konnte nicht archiviert werden.\n"
                                        L"Fehler: Report %s konnte nicht archiviert werden.\n"
                                        L"Fehler: Ungültiges Verzeichnis %s%c\n",
                                        left[1], left[0], archive, LbPath::c_Separator)))
        << LbEncoding::ToUtf8(text);
}

TEST_F(ArchiveRunChild, HasItsReportsArchivedIfTheStylesheetCannotBeWritten)
{
    m_run.dataDir = m_folder.MakeFolder(L"reports");
    const std::wstring folder = m_folder.MakeFolder(L"neu/Ausgabe/Archive/LuTestSuite.css");

    const std::wstring text = Execute();

    EXPECT_NE(
        text.find(LbFormat(L"\nFehler: Datei %s konnte nicht geöffnet werden\n", LbPath::WithoutSeparator(folder))),
        std::wstring::npos)
        << LbEncoding::ToUtf8(text);
    EXPECT_EQ(GetArchive().size(), 2U);
    EXPECT_TRUE(GetTemporaryFiles().empty());
}

TEST_F(ArchiveRunChild, MustBeAnExistingExecutable)
{
    m_run.config = L"Debug";

    EXPECT_EQ(getMessage([this] { Execute(); }), LbFormat(L"Fehler: Executable %sLuTestSuiteCLID%s nicht gefunden.\n",
                                                          m_run.binaryDir, LbOs::c_ExecutableSuffix));
}

TEST_F(ArchiveRunChild, RequiresItsDirectories)
{
    const std::wstring missing = m_folder.GetPathOf(L"fehlt");
    const std::wstring file = m_folder.WriteFile(L"Datei", "");
    for (std::wstring SArchiveRun::*const field : {&SArchiveRun::binaryDir, &SArchiveRun::dataDir})
    {
        SArchiveRun run = m_run;
        run.*field = missing;
        run.outDir = L""; // also missing: the message names the first missing directory
        EXPECT_EQ(getMessage([&run] { LuTestSuite::ExecuteArchiveRun(run, 1); }),
                  L"Verzeichnis " + missing + LbPath::c_Separator + L" existiert nicht");
        run.*field = L"";
        EXPECT_EQ(getMessage([&run] { LuTestSuite::ExecuteArchiveRun(run, 1); }), L"Verzeichnis  existiert nicht");
    }
    m_run.outDir = file;
    EXPECT_EQ(getMessage([this] { Execute(); }), L"Verzeichnis " + file + LbPath::c_Separator + L" existiert nicht");
}

TEST_F(ArchiveRunChild, RemovesAFileNamedIndexFromTheOutputDirectory)
{
    m_folder.WriteFile(L"neu/Ausgabe/index", "alt");
    Execute();

    EXPECT_FALSE(LbFileSystem::Exists(m_folder.GetPathOf(L"neu/Ausgabe/index")));
}

} // namespace
