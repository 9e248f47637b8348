// Which test modules the host loads.

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/os/platform.h"
#include "tests/support/brokenmodule.h"
#include "tests/support/hostprocess.h"
#include "tests/support/places.h"
#include "tests/support/scopedfolder.h"

namespace
{

constexpr const char* c_TwoPassed = "\n"
                                    "Zusammenfassung\n"
                                    "\tAusgeführt:\t1 Klasse, 2 Tests\n"
                                    "\tErfolgreich:\t1 Klasse, 2 Tests\n";

class HostModules : public testing::Test
{
protected:
    HostModules() { m_folder.MakeFolder(L"CPassedModel"); }

    SHostRun Run(std::vector<std::wstring> options) const
    {
        options.insert(options.begin(), {L"-d", m_folder.GetPath()});
        return RunHost(options);
    }

    ScopedFolder m_folder;
};

TEST_F(HostModules, AreRequiredToFindTheirClasses)
{
    const SHostRun run = Run({});

    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(HostModules, AreLoadedByName)
{
    const SHostRun run = Run({L"--dll", L"resultmodels"});

    EXPECT_TRUE(run.output.ends_with(ToPlatformLines(c_TwoPassed))) << run.output;
}

TEST_F(HostModules, AreLoadedFromAFolderBesideTheHost)
{
    m_folder.MakeFolder(L"CNestedModel");

    const SHostRun run = Run({L"--dll", L"nested/nestedmodels"});

    EXPECT_TRUE(run.output.starts_with(ToPlatformLines("CNestedModel\n\tFall... OK\n"))) << run.output;
}

TEST_F(HostModules, AreLoadedFromAFolderNamedWithABackslash)
{
    m_folder.MakeFolder(L"CNestedModel");

    const SHostRun run = Run({L"--dll", L"nested\\nestedmodels"});

    EXPECT_TRUE(run.output.starts_with(ToPlatformLines("CNestedModel\n\tFall... OK\n"))) << run.output;
}

TEST_F(HostModules, AreLoadedInTheOrderOfTheirOptions)
{
    m_folder.MakeFolder(L"CRivalModel");

    const std::string firstFirst = Run({L"--dll", L"firstrival", L"--dll", L"secondrival"}).output;
    const std::string secondFirst = Run({L"--dll", L"secondrival", L"--dll", L"firstrival"}).output;

    // The first loaded module registers the class name.
    EXPECT_NE(firstFirst.find("\tErster... OK"), std::string::npos) << firstFirst;
    EXPECT_NE(secondFirst.find("\tZweiter... OK"), std::string::npos) << secondFirst;
}

TEST_F(HostModules, AreIgnoredIfTheyAreMissing)
{
    const SHostRun run = Run({L"--dll", L"gibt es nicht"});

    EXPECT_EQ(run.output, "");
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(HostModules, CauseAWarningWithAReasonIfTheyCannotBeLoaded)
{
    const CBrokenModule broken;

    const SHostRun run = Run({L"--dll", broken.GetName(), L"--dll", L"resultmodels"});

    const std::string line = "DLL '" + LbEncoding::ToUtf8(broken.GetFileName()) + "' konnte nicht geladen werden.\n";
    EXPECT_TRUE(run.output.starts_with(ToPlatformLines(line + "    Grund: "))) << run.output;
    EXPECT_NE(run.output.find(ToPlatformLines("\nCPassedModel\n")), std::string::npos) << run.output;
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(HostModules, CauseAWarningWithAReasonIfTheirStaticObjectsThrow)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "exceptions cannot pass the sanitizer's dlopen";
#endif
    const SHostRun run = Run({L"--dll", L"throwingstatic", L"--dll", L"resultmodels"});

    const std::wstring file = std::wstring(L"throwingstatic") + LbOs::c_ModuleSuffix;
    const std::string lines = "DLL '" + LbEncoding::ToUtf8(file) + "' konnte nicht geladen werden.\n    Grund: ";
    EXPECT_TRUE(run.output.starts_with(ToPlatformLines(lines))) << run.output;
    EXPECT_NE(run.output.find(ToPlatformLines("\nCPassedModel\n")), std::string::npos) << run.output;
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(HostModules, CanPrintWideText)
{
    const ScopedFolder folder;
    folder.MakeFolder(L"CWideOutputModel");

    const SHostRun run = RunHost({L"-d", folder.GetPath(), L"--dll", L"wideoutputmodels"});

    EXPECT_EQ(run.output, ToPlatformLines("[Anfang]CWideOutputModel\n"
                                          "\tFall... [Anfang][Fall]OK\n"
                                          "\n"
                                          "Zusammenfassung\n"
                                          "\tAusgeführt:\t1 Klasse, 1 Test\n"
                                          "\tErfolgreich:\t1 Klasse, 1 Test\n"));
    EXPECT_EQ(run.exitStatus, 0);
}

TEST_F(HostModules, AreNotLoadedForHelp)
{
    const CBrokenModule broken;

    const SHostRun run = RunHost({L"-h", L"--dll", broken.GetName()});

    EXPECT_EQ(run.output, RunHost({L"-h"}).output);
    EXPECT_EQ(run.exitStatus, 0);
}

} // namespace
