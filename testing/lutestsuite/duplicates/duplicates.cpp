/// The mode that finds data sets of identical content, and lists them or deletes all but the oldest of each set.

#include <optional>

#include "testing/lutestsuite/duplicates/deletion.h"
#include "testing/lutestsuite/duplicates/duplicatesets.h"
#include "testing/lutestsuite/duplicates/examination.h"
#include "testing/lutestsuite/duplicates/filechecksums.h"
#include "testing/lutestsuite/environment/crashnotes.h"
#include "testing/lutestsuite/environment/utilsfailure.h"
#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/output/warning.h"
#include "testing/lutestsuite/selection/selection.h"

namespace
{

using LuTestSuite::DuplicateSet;
using LuTestSuite::SDuplicates;

std::size_t countRedundant(const SDuplicates& duplicates)
{
    std::size_t count = 0;
    for (const DuplicateSet& set : duplicates.sets)
    {
        count += set.size() - 1;
    }
    return count;
}

void deleteDuplicates(const DuplicateSet& set, LuTestSuite::CDeletion& deletion)
{
    if (set.size() < 2)
    {
        LuTestSuite::ThrowUtilsFailure(L"LuTestSuiteUtils::RunDuplicateDetection");
    }
    const LuTestSuite::SDataSet& kept = set.front();
    LuTestSuiteOut::Write(L"    %s... [KEEP]\n", kept.caseName);
    for (auto dataSet = set.begin() + 1; dataSet != set.end(); ++dataSet)
    {
        if (deletion.Delete(*dataSet, kept))
        {
            LuTestSuiteOut::Write(L"    %s... [DELETED]\n", dataSet->caseName);
        }
        else
        {
            LuTestSuite::WriteWarning(L"Fehler während Löschen von Datei %s\n", dataSet->path);
        }
    }
}

void listDuplicates(const DuplicateSet& set)
{
    for (const LuTestSuite::SDataSet& dataSet : set)
    {
        LuTestSuiteOut::Write(L"    %s\n", dataSet.caseName);
    }
}

/// Without `deletion`, only lists the sets.
void writeSets(const SDuplicates& duplicates, std::optional<LuTestSuite::CDeletion>& deletion)
{
    if (duplicates.sets.empty())
    {
        return;
    }
    LuTestSuiteOut::Write(L"%s\n", duplicates.unitTestPath);
    for (std::size_t index = 0; index < duplicates.sets.size(); ++index)
    {
        LuTestSuiteOut::Write(L"  Duplikat-Set (%d/%d):\n", index + 1, duplicates.sets.size());
        if (deletion)
        {
            deleteDuplicates(duplicates.sets[index], *deletion);
        }
        else
        {
            listDuplicates(duplicates.sets[index]);
        }
    }
    LuTestSuiteOut::Write(L"\n");
}

} // namespace

void LuTestSuiteUtils::RunDuplicateDetection(const LuTestSuiteSetup& setup, LuTestSuiteEnvironment& environment)
{
    const LuTestSuite::CCrashNotes notes;
    LuTestSuite::LoadTestModules(setup, environment);
    UnitTests tests = LuTestSuite::FindUnitTests(setup, true);
    LuTestSuite::SelectTestCases(setup, tests);
    LuTestSuite::CFileChecksums checksums;
    std::vector<SDuplicates> results;
    std::size_t redundantCount = 0;
    for (const LuTestSuite::SUnitTest& test : tests)
    {
        LuTestSuiteOut::Write(L"Check: %s\n", test.dataDirectory);
        results.push_back(LuTestSuite::ExamineDataSets(test, checksums));
        redundantCount += countRedundant(results.back());
    }
    LuTestSuiteOut::Write(L"\n");
    if (setup.duplicateMode == eDM_None)
    {
        return;
    }
    std::optional<LuTestSuite::CDeletion> deletion;
    // Skips the search for links if nothing is to be deleted, for example without a data directory.
    if (setup.duplicateMode == eDM_Delete && redundantCount > 0)
    {
        deletion.emplace(results, setup.dataDir);
        deletion->DeleteLinks();
    }
    for (const SDuplicates& duplicates : results)
    {
        writeSets(duplicates, deletion);
    }
    LuTestSuiteOut::Write(L"Durchsuchtes Datenverzeichnis: %s\n", setup.dataDir);
    LuTestSuiteOut::Write(L"Gefundene Unittest-Klassen: %d\n", tests.size());
    LuTestSuiteOut::Write(L"Redundante Datensätze darin: %d\n", redundantCount);
}
