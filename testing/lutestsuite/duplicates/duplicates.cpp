/// The mode that finds data sets of identical content, and deletes all but the oldest of each.

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "base/lbdatetime.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/os/clock.h"
#include "base/os/files.h"
#include "testing/lutestsuite/duplicates/deletion.h"
#include "testing/lutestsuite/duplicates/duplicatesets.h"
#include "testing/lutestsuite/duplicates/filechecksums.h"
#include "testing/lutestsuite/environment/utilsfailure.h"
#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/output/warning.h"
#include "testing/lutestsuite/selection/selection.h"

namespace
{

using LuTestSuite::Checksum;
using LuTestSuite::DuplicateSet;
using LuTestSuite::SDataSet;
using LuTestSuite::SDuplicates;

struct SChecksumHash
{
    std::size_t operator()(const Checksum& checksum) const noexcept
    {
        return static_cast<std::size_t>(checksum.low ^ checksum.high);
    }
};

std::optional<SDataSet> examineFile(const LuTestSuite::SUnitTest& test, const LuTestSuite::STestCase& testCase,
                                    LuTestSuite::CFileChecksums& checksums)
{
    const std::optional<LbOs::SFileStatus> status = LbOs::GetFileStatus(testCase.dataSetFile);
    // Opening a pipe would wait for somebody who writes to it.
    if (!status || !LbOs::IsRegularFile(testCase.dataSetFile))
    {
        throw LbException();
    }
    const std::optional<Checksum> checksum = checksums.Get(testCase.dataSetFile);
    const std::optional<LbOs::SLocalTime> time = LbOs::GetModificationTime(testCase.dataSetFile);
    if (!time)
    {
        throw LbException();
    }
    return checksum ? std::optional(SDataSet{test.dataDirectory, testCase.name, testCase.dataSetFile, *checksum,
                                             LbDateTime::Format(*time, L"Y.m.d-H:i:s"), *status})
                    : std::nullopt;
}

/// In case order. Two cases of one file are one data set.
std::vector<SDataSet> examineFiles(const LuTestSuite::SUnitTest& test, LuTestSuite::CFileChecksums& checksums)
{
    std::vector<SDataSet> dataSets;
    std::unordered_set<std::wstring> paths;
    for (const LuTestSuite::STestCase& testCase : test.cases)
    {
        const std::wstring& path = testCase.dataSetFile;
        if (testCase.GetKind() != 1 || !LbFileSystem::IsFile(path) || !paths.insert(path).second)
        {
            continue;
        }
        try
        {
            if (const std::optional<SDataSet> dataSet = examineFile(test, testCase, checksums))
            {
                dataSets.push_back(*dataSet);
            }
        }
        catch (const std::exception&)
        {
            LuTestSuite::WriteWarning(L"Fehler während Einlesen von Datei %s\n", path);
        }
    }
    return dataSets;
}

/// Groups by content, in the order of first appearance.
std::vector<std::vector<SDataSet>> groupByChecksum(std::vector<SDataSet> dataSets)
{
    std::vector<std::vector<SDataSet>> groups;
    std::unordered_map<Checksum, std::size_t, SChecksumHash> groupOf;
    for (SDataSet& dataSet : dataSets)
    {
        const auto [entry, isNew] = groupOf.try_emplace(dataSet.checksum, groups.size());
        if (isNew)
        {
            groups.emplace_back();
        }
        groups[entry->second].push_back(std::move(dataSet));
    }
    return groups;
}

/// The first of the oldest goes to the front, the others keep their order.
void putOldestFirst(DuplicateSet& set)
{
    const auto oldest = std::ranges::min_element(set, {}, &SDataSet::modificationTime);
    std::rotate(set.begin(), oldest, oldest + 1);
}

SDuplicates examine(const LuTestSuite::SUnitTest& test, LuTestSuite::CFileChecksums& checksums)
{
    SDuplicates duplicates{test.dataDirectory, {}};
    for (std::vector<SDataSet>& group : groupByChecksum(examineFiles(test, checksums)))
    {
        if (group.size() >= 2)
        {
            putOldestFirst(group);
            duplicates.sets.push_back(std::move(group));
        }
    }
    return duplicates;
}

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
    const SDataSet& kept = set.front();
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
    for (const SDataSet& dataSet : set)
    {
        LuTestSuiteOut::Write(L"    %s\n", dataSet.caseName);
    }
}

/// Without a deletion the sets are listed.
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
    LuTestSuite::LoadTestModules(setup, environment);
    UnitTests tests = LuTestSuite::FindUnitTests(setup, true);
    LuTestSuite::SelectTestCases(setup, tests);
    LuTestSuite::CFileChecksums checksums;
    std::vector<SDuplicates> results;
    std::size_t redundantCount = 0;
    for (const LuTestSuite::SUnitTest& test : tests)
    {
        LuTestSuiteOut::Write(L"Check: %s\n", test.dataDirectory);
        results.push_back(examine(test, checksums));
        redundantCount += countRedundant(results.back());
    }
    LuTestSuiteOut::Write(L"\n");
    if (setup.duplicateMode == eDM_None)
    {
        return;
    }
    std::optional<LuTestSuite::CDeletion> deletion;
    // Without anything to delete there is nothing to search for, least of all where no directory was named.
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
