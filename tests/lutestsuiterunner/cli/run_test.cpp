#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/os/platform.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuiterunner/journal/reader.h"
#include "tests/lutestsuiterunner/cli/runnertest.h"
#include "tests/support/binaryfolder.h"
#include "tests/support/places.h"

namespace
{

using RunnerRun = RunnerTest;

TEST_F(RunnerRun, IsGreenWhenEveryCasePassed)
{
    m_folder.MakeFolder(L"data/CPassedModel");

    const SHostRun run = Run({L"run"});

    EXPECT_EQ(run.exitStatus, 0) << run.output << run.errors;
    ExpectLine(run.output, "Fälle: 2, bestanden: 2");
    for (const wchar_t* name :
         {L"plan.ndjson", L"journal.ndjson", L"junit.xml", L"summary.json", L"report.xml", L"report.html"})
    {
        EXPECT_TRUE(LbFileSystem::IsFile(GetOut() + name)) << LbEncoding::ToUtf8(name);
    }
}

TEST_F(RunnerRun, PrintsFailedCasesWithTheirFileAndARepeatCommand)
{
    m_folder.WriteFile(L"data/CDataSetModel/schlecht.txt", "schlecht");

    const SHostRun run = Run({L"run"});

    EXPECT_EQ(run.exitStatus, 1);
    ExpectLine(run.output, "FEHLGESCHLAGEN CDataSetModel:schlecht.txt");
    ExpectLine(run.output, "schlecht.txt\n");
    ExpectLine(run.output, "Fehlgeschlagen:\n    CDataSetModel:schlecht.txt\n");
    ExpectLine(run.output, " run --previous ");
}

TEST_F(RunnerRun, RepeatsOnlyFailedCasesEachInItsOwnProcess)
{
    m_folder.MakeFolder(L"data/CSharedStateModel");
    const std::string output = Run({L"run"}).output;

    const SHostRun run = Run({L"run", L"--previous", GetOut(), L"--only-failed", L"--force"}, {L"-s"});

    // The case passes alone, and fails if another case has run in its process before.
    EXPECT_EQ(run.exitStatus, 0) << output;
    ExpectLine(run.output, "Fälle: 1, bestanden: 1");
}

TEST_F(RunnerRun, PrintsACommandThatRepeatsEachFailedCaseAlone)
{
    if (LbPath::c_Separator == L'\\')
    {
        GTEST_SKIP() << "the command needs a POSIX shell";
    }
    m_folder.MakeFolder(L"data/CSharedStateModel");
    const std::string output = Run({L"run"}).output;
    const std::string title = "Wiederholt jeden fehlgeschlagenen Testfall allein:\n";
    const std::size_t start = output.find(title);
    ASSERT_NE(start, std::string::npos) << output;
    const std::size_t command = start + title.size();

    // Only the exit status matters here; the output is discarded.
    EXPECT_EQ(std::system((output.substr(command, output.find('\n', command) - command) + " > /dev/null").c_str()), 0);
    const std::unique_ptr<Runner::CRunState> state = Runner::LoadRun(m_folder.GetPathOf(L"out-wiederholt/"));
    EXPECT_EQ(state->CountVerdicts().planned, 1U);
    EXPECT_EQ(state->CountVerdicts().passed, 1U);
}

TEST_F(RunnerRun, IsGreenWhenThereIsNothingToRepeat)
{
    m_folder.MakeFolder(L"data/CPassedModel");
    Run({L"run"});

    const SHostRun run = Run({L"run", L"--previous", GetOut(), L"--only-failed", L"--force"});

    EXPECT_EQ(run.exitStatus, 0) << run.output;
    ExpectLine(run.output, "ist kein Testfall der Auswahl fehlgeschlagen\n");
}

TEST_F(RunnerRun, CountsOnlyFailedCasesForTheMinimumNumber)
{
    m_folder.MakeFolder(L"data/CPassedModel");
    m_folder.MakeFolder(L"data/CFailedModel");
    Run({L"run"});

    ExpectLine(Run({L"run", L"--previous", GetOut(), L"--only-failed", L"--min-cases", L"2", L"--force"}).output,
               "Die Auswahl trifft 1 Testfall, verlangt sind mindestens 2");
}

TEST_F(RunnerRun, ReplacesARunOnlyIfForced)
{
    m_folder.MakeFolder(L"data/CPassedModel");
    Run({L"run"});

    const SHostRun run = Run({L"run"});

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "enthält schon einen Lauf");
    EXPECT_EQ(Run({L"run", L"--force"}).exitStatus, 0);
}

TEST_F(RunnerRun, ReplacesAReportOfNoRunOnlyIfForced)
{
    m_folder.MakeFolder(L"data/CPassedModel");
    const std::wstring report = m_folder.WriteFile(L"out/report.xml", "x");

    const SHostRun run = Run({L"run"});

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "enthält keinen Lauf, aber die Datei report.xml: '--force' ersetzt sie\n");
    EXPECT_EQ(LbFileSystem::ReadFile8Bit(report), "x");
    EXPECT_EQ(Run({L"run", L"--force"}).exitStatus, 0);
    EXPECT_NE(LbFileSystem::ReadFile8Bit(report), "x");
}

/// Copies the host, its libraries and one test module into the folder. Returns the path of the copy.
std::wstring copyRunner(const ScopedFolder& folder)
{
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(GetBinaryFolder())))
    {
        const std::wstring name = entry.path().filename().wstring();
        const bool isNeeded = name.starts_with(L"lib") || name.starts_with(L"Lu") || name.starts_with(L"Lb") ||
                              name.starts_with(L"resultmodels");
        if (isNeeded && name.find(LbOs::c_ModuleSuffix) != std::wstring::npos)
        {
            std::filesystem::copy_file(entry.path(), folder.GetPathOf(name));
        }
    }
    const std::filesystem::path program(L"" LUTESTSUITE_RUNNER);
    std::filesystem::copy_file(program, folder.GetPathOf(program.filename().wstring()));
    return folder.GetPathOf(program.filename().wstring());
}

TEST_F(RunnerRun, IsRedWhenAModuleOfTheFixedListDoesNotLoad)
{
    const ScopedFolder bin;
    SHostOptions host;
    host.program = copyRunner(bin);
    m_folder.MakeFolder(L"data/CPassedModel");
    const std::vector<std::wstring> arguments = {
        L"run", L"--force", L"--require-all-modules",    L"--out", m_folder.GetPathOf(L"out"),
        L"--",  L"-d",      m_folder.GetPathOf(L"data"), L"--dll", L"resultmodels"};
    EXPECT_EQ(RunHost(arguments, host).exitStatus, 0);
    bin.WriteFile(LuTestSuiteEnvironment::GetTestDLLs().front() + LbOs::c_ModuleSuffix, "x");

    const SHostRun run = RunHost(arguments, host);

    EXPECT_EQ(run.exitStatus, 1);
    ExpectLine(run.output, "konnte nicht geladen werden\n");
}

TEST_F(RunnerRun, IsRedWhenTheSelectionHasTooFewCases)
{
    m_folder.MakeFolder(L"data/CPassedModel");

    EXPECT_EQ(Run({L"run", L"--force"}, {L"-i", L"gibtesnicht"}).exitStatus, 1);
    EXPECT_EQ(Run({L"run", L"--force", L"--min-cases", L"0"}, {L"-i", L"gibtesnicht"}).exitStatus, 0);
    EXPECT_EQ(Run({L"run", L"--force", L"--min-cases", L"2"}).exitStatus, 0);
    const SHostRun run = Run({L"run", L"--force", L"--min-cases", L"3"});
    EXPECT_EQ(run.exitStatus, 1);
    ExpectLine(run.output, "Die Auswahl trifft 2 Testfälle, verlangt sind mindestens 3");
}

TEST_F(RunnerRun, WarnsOfCaseFilesInASubfolderOfAClassFolder)
{
    m_folder.WriteFile(L"data/CReferenceModel/notes.md", "no case");
    m_folder.WriteFile(L"data/CReferenceModel/deep/er/a.txt", "text");

    const SHostRun run = Run({L"run"});

    ExpectLine(run.errors, "Warnung: " + LbEncoding::ToUtf8(m_folder.GetPathOf(L"data/CReferenceModel/")) +
                               " hat keine Datei für einen Testfall, aber " +
                               LbEncoding::ToUtf8(m_folder.GetPathOf(L"data/CReferenceModel/deep/er/")) +
                               ": Ordner im Ordner einer Klasse werden nicht durchsucht\n");
}

TEST_F(RunnerRun, DoesNotWarnOfOtherSubfoldersOfAClassFolder)
{
    m_folder.WriteFile(L"data/CReferenceModel/a.txt", "text");
    m_folder.WriteFile(L"data/CReferenceModel/kept/a.txt", "text");
    m_folder.WriteFile(L"data/other/CReferenceModel/notes/a.md", "no case");

    for (const wchar_t* selected : {L"/CReferenceModel:", L"no such case"})
    {
        const SHostRun run = Run({L"run", L"--force"}, {L"-i", selected});
        EXPECT_EQ(run.errors.find("nicht durchsucht"), std::string::npos) << run.errors;
    }
}

TEST_F(RunnerRun, IsRedWhenARequiredModuleIsMissing)
{
    m_folder.MakeFolder(L"data/CPassedModel");

    EXPECT_EQ(Run({L"run", L"--require-all-modules"}).exitStatus, 0);
    const SHostRun run = Run({L"run", L"--require-all-modules", L"--force"}, {L"--dll", L"gibtesnicht"});
    EXPECT_EQ(run.exitStatus, 1);
    ExpectLine(run.output, "Das Modul 'gibtesnicht' fehlt");
}

TEST_F(RunnerRun, WarnsOfAMissingModule)
{
    m_folder.MakeFolder(L"data/CPassedModel");

    const SHostRun run = Run({L"run"}, {L"--dll", L"gibtesnicht"});

    EXPECT_EQ(run.exitStatus, 0);
    ExpectLine(run.errors, "Warnung: " + DescribeMissingModule(L"gibtesnicht") + "\n");
    EXPECT_EQ(run.errors.find("resultmodels"), std::string::npos) << run.errors;
}

TEST_F(RunnerRun, FindsFlakyCasesByRetries)
{
    m_folder.MakeFolder(L"data/CFlakyModel");
    const std::vector<std::wstring> selection = {L"-i", L"zweiten Mal"};

    const SHostRun run = Run({L"run", L"--retries", L"2"}, selection);

    EXPECT_EQ(run.exitStatus, 1);
    ExpectLine(run.output, "UNZUVERLÄSSIG CFlakyModel:besteht beim zweiten Mal (im Versuch 2 bestanden)");
    ExpectLine(run.output, "Fehler: Ein Testfall ist unzuverlässig; ohne '--allow-flaky' ist der Lauf rot\n");
    ExpectLine(run.output, "unzuverlässig: 1, fehlgeschlagen: 0");
}

TEST_F(RunnerRun, AllowsFlakyCasesOnRequest)
{
    m_folder.MakeFolder(L"data/CFlakyModel");

    EXPECT_EQ(Run({L"run", L"--retries", L"1", L"--allow-flaky"}, {L"-i", L"zweiten Mal"}).exitStatus, 0);
}

TEST_F(RunnerRun, RetriesFailedCasesTheGivenNumberOfTimes)
{
    m_folder.MakeFolder(L"data/CFlakyModel");

    const SHostRun run = Run({L"run", L"--retries", L"3"}, {L"-i", L"besteht nie"});

    EXPECT_EQ(run.exitStatus, 1);
    ExpectLine(run.output, "Versuch 4)");
    EXPECT_EQ(run.output.find("Versuch 5)"), std::string::npos);
}

TEST_F(RunnerRun, IsGreenIfOnlyQuarantinedCasesFail)
{
    m_folder.MakeFolder(L"data/CFailedModel");
    m_folder.MakeFolder(L"data/CPassedModel");
    const std::wstring file = m_folder.WriteFile(L"quarantaene.txt", "CFailedModel\nCNochNie\n");

    const SHostRun run = Run({L"run", L"--quarantine", file});

    EXPECT_EQ(run.exitStatus, 0);
    ExpectLine(run.output, "Fehlgeschlagen, in Quarantäne:\n    CFailedModel:allein\n");
    ExpectLine(run.output, "Quarantäne: 'CNochNie' trifft keinen Testfall");
}

TEST_F(RunnerRun, FindsCasesThatFailOnlyInTheSharedProcess)
{
    m_folder.MakeFolder(L"data/CSharedStateModel");

    const SHostRun run = Run({L"run", L"--confirm"});

    EXPECT_EQ(run.exitStatus, 1);
    ExpectLine(run.output, "NUR IM GEMEINSAMEN PROZESS CSharedStateModel:braucht einen frischen Prozess");
    ExpectLine(run.output, "(nur im gemeinsamen Prozess; davor liefen dort: CSharedStateModel:hinterlässt etwas)");
}

TEST_F(RunnerRun, RunsFailedCasesFirst)
{
    const std::vector<std::wstring> selection = {L"-i", L":bestanden$", L"-i", L":fehlgeschlagen$"};
    m_folder.MakeFolder(L"data/CResultModel");
    ExpectLine(Run({L"run", L"--fail-fast"}, selection).output, "bestanden: 1, unzuverlässig: 0, fehlgeschlagen: 1,");

    const SHostRun run =
        Run({L"run", L"--order", L"failed-first", L"--fail-fast", L"--previous", GetOut(), L"--force"}, selection);

    ExpectLine(run.output, "bestanden: 0, unzuverlässig: 0, fehlgeschlagen: 1,");
}

TEST_F(RunnerRun, PrintsTheSeedOfARandomOrder)
{
    m_folder.MakeFolder(L"data/CPassedModel");

    ExpectLine(Run({L"run", L"--order", L"random:7"}).output, "Reihenfolge: --order random:7\n");
    ExpectLine(Run({L"run", L"--order", L"random", L"--force"}).output, "Reihenfolge: --order random:");
}

TEST_F(RunnerRun, CoversTheWholeSelectionAfterItsShardsAreMerged)
{
    m_folder.MakeFolder(L"data/CResultModel");
    const std::wstring first = m_folder.GetPathOf(L"teil1");
    const std::wstring second = m_folder.GetPathOf(L"teil2");
    EXPECT_EQ(Run({L"run", L"--shard", L"1/2", L"--out", first}).exitStatus, 1);
    EXPECT_EQ(Run({L"run", L"--shard", L"2/2", L"--out", second}).exitStatus, 1);

    const SHostRun run = RunRunner({L"merge", first, second, L"--out", GetOut()});

    EXPECT_EQ(run.exitStatus, 1) << run.errors;
    ExpectLine(run.output, "Fälle: 7, bestanden: 2");
    ExpectLine(run.output, "nicht ausgeführt: 0");
}

TEST_F(RunnerRun, PrintsThePlaceOfACrash)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers handle crashes themselves";
#endif
    m_folder.MakeFolder(L"data/CCrashModel");

    const SHostRun run = Run({L"run"}, {L"-i", L":Zugriffsverletzung$", L"-s"});

    ExpectLine(run.output, "    Stelle: crashmodels" + LbEncoding::ToUtf8(LbOs::c_ModuleSuffix) + "+0x");
    EXPECT_EQ(run.output.find("Stapel von Thread"), std::string::npos) << run.output;
    const nlohmann::json end = FindRecord("end");
    EXPECT_TRUE(end.at("stacks").get<std::string>().starts_with("Stapel von Thread ")) << end;
    EXPECT_EQ(end.at("messages").get<std::string>().find("Stapel von Thread"), std::string::npos) << end;
    for (const wchar_t* report : {L"junit.xml", L"report.xml"})
    {
        const std::string text = LbFileSystem::ReadFile8Bit(GetOut() + report);
        const std::size_t stack = text.find("Stapel von Thread");
        EXPECT_NE(stack, std::string::npos) << text;
        EXPECT_EQ(text.find("(Ursache)", stack + 100), std::string::npos) << text;
    }
}

TEST_F(RunnerRun, KeepsAMemoryDumpOfEachCaseThatCrashes)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers handle crashes themselves";
#endif
    m_folder.MakeFolder(L"data/CCrashModel");
    const std::wstring dumps = m_folder.GetPathOf(L"Abbilder/neu");

    const SHostRun run = Run({L"run", L"--core", dumps}, {L"-i", L":(vorher|abort|Zugriffsverletzung)$", L"-s"});

    EXPECT_EQ(run.exitStatus, 1) << run.errors;
    const std::vector<std::wstring> files = LbFileSystem::GetFileNames(dumps);
    if (LbPath::c_Separator == L'\\' && files.size() < 2)
    {
        GTEST_SKIP() << "Wine needs longer to write a dump than the crashed process waits: " << run.output;
    }
    ASSERT_EQ(files.size(), 2U);
    for (const std::wstring& file : files)
    {
        ExpectLine(run.output, LbEncoding::ToUtf8(file));
        for (const wchar_t* report : {L"junit.xml", L"report.xml", L"journal.ndjson", L"summary.json"})
        {
            const std::string text = LbFileSystem::ReadFile8Bit(GetOut() + report);
            EXPECT_NE(text.find(LbEncoding::ToUtf8(file)), std::string::npos) << LbEncoding::ToUtf8(report);
        }
    }
}

TEST_F(RunnerRun, WarnsIfMemoryDumpsCannotBeWritten)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers handle crashes themselves";
#endif
    m_folder.MakeFolder(L"data/CCrashModel");
    m_folder.WriteFile(L"Datei", "");

    const SHostRun run = Run({L"run", L"--core", m_folder.GetPathOf(L"Datei")}, {L"-i", L":(vorher|abort)$", L"-s"});

    EXPECT_EQ(run.exitStatus, 1);
    ExpectLine(run.errors, "Warnung: Der Ordner ");
    ExpectLine(run.output, "Fälle: 2, bestanden: 1");
    ExpectLine(run.output, "WARNUNG: Das Speicherabbild konnte nicht geschrieben werden: ");
    EXPECT_TRUE(FindRecord("end").contains("result"));
}

TEST_F(RunnerRun, WarnsIfNoCaseCanHaveATimeLimit)
{
    m_folder.MakeFolder(L"data/CPassedModel");
    const std::string warning = "Warnung: '-t' bewirkt nichts: kein Testfall läuft in einem Kindprozess (-x oder -s)\n";
    const auto run = [&](const std::vector<std::wstring>& library) {
        const SHostRun result = Run({L"run", L"--force"}, library);
        EXPECT_EQ(result.exitStatus, 0) << result.errors;
        return FromPlatformLines(result.errors).find(warning) != std::string::npos;
    };

    EXPECT_TRUE(run({L"-t", L"60"}));
    EXPECT_FALSE(run({L"-t", L"60", L"-s"}));
    EXPECT_FALSE(run({}));
}

TEST_F(RunnerRun, RefusesWrongLibraryOptionsInOneLine)
{
    const auto getErrors = [](std::vector<std::wstring> library) {
        library.insert(library.begin(), {L"run", L"--"});
        const SHostRun run = RunRunner(library);
        EXPECT_EQ(run.exitStatus, 2);
        EXPECT_EQ(run.output, "");
        return FromPlatformLines(run.errors);
    };

    EXPECT_EQ(getErrors({L"--dll", L"x"}),
              "Fehler: Hinter '--' fehlt das Datenverzeichnis (-d); 'LuTestSuiteCLI -h' nennt alle Optionen\n");
    EXPECT_EQ(getErrors({L"-d", L"fehlt"}),
              std::string("Fehler: Falsche Optionen hinter '--': Datenverzeichnis 'fehlt") +
                  static_cast<char>(LbPath::c_Separator) + "' konnte nicht gefunden werden\n");
    EXPECT_EQ(getErrors({L"--gibtesnicht"}), "Fehler: Falsche Optionen hinter '--': Unbekannte Option --gibtesnicht\n");
    EXPECT_EQ(getErrors({L"-d", L".", L"a", L"b"}),
              "Fehler: Falsche Optionen hinter '--': Unbekannte Argumente: a, b\n");
}

TEST_F(RunnerRun, WarnsIfNoCaseCanHaveAMemoryDump)
{
    m_folder.MakeFolder(L"data/CPassedModel");
    const std::string warning =
        "Warnung: '--core' bewirkt nichts: kein Testfall läuft in einem Kindprozess (-x oder -s)\n";
    const auto run = [&](std::vector<std::wstring> own, const std::vector<std::wstring>& library = {}) {
        own.insert(own.begin(), {L"run", L"--force", L"--core", m_folder.GetPathOf(L"Abbilder")});
        const SHostRun result = Run(own, library);
        EXPECT_EQ(result.exitStatus, 0) << result.errors;
        return FromPlatformLines(result.errors).find(warning) != std::string::npos;
    };

    EXPECT_TRUE(run({}));
    EXPECT_FALSE(run({}, {L"-x"}));
    EXPECT_FALSE(run({L"--confirm"}));
    m_folder.WriteFile(L"data/CPassedModel/#ExtraInfo.xml",
                       "<ExtraInfo><TestCase name=\"eins\"><External>true</External></TestCase></ExtraInfo>");
    EXPECT_FALSE(run({}));
}

TEST_F(RunnerRun, MeasuresTheTimeOfACaseThatExceedsItsTimeLimit)
{
    m_folder.MakeFolder(L"data/CCrashModel");

    const SHostRun run = Run({L"run"}, {L"-i", L":Endlosschleife$", L"-s", L"-t", L"0"});

    EXPECT_EQ(run.exitStatus, 1);
    EXPECT_GE(FindRecord("end").at("ns").get<std::uint64_t>(), 500'000'000U);
}

TEST_F(RunnerRun, RefusesReportOptionsOfLuTestSuiteCLI)
{
    m_folder.MakeFolder(L"data/CPassedModel");

    const SHostRun run = Run({L"run"}, {L"--xml", L"x.xml"});

    EXPECT_EQ(run.exitStatus, 2);
    ExpectLine(run.errors, "Die Option '--xml' gibt es hier nicht");
}

TEST_F(RunnerRun, RequiresAnEarlierRunToFindFailedCases)
{
    EXPECT_EQ(Run({L"run", L"--order", L"failed-first"}).exitStatus, 2);
    EXPECT_EQ(Run({L"run", L"--only-failed"}).exitStatus, 2);
}

} // namespace
