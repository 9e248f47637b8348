#include "testing/lutestsuite/duplicates/examination.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "base/lbdatetime.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/os/clock.h"
#include "testing/lutestsuite/output/warning.h"

namespace LuTestSuite
{

namespace
{

enum class EState
{
    Candidate, ///< may be a duplicate
    Different, ///< treated as different from all others
    Unreadable
};

/// The known facts about a file; each step adds some.
struct SExaminedFile
{
    const STestCase* testCase = nullptr;
    EState state = EState::Candidate;
    LbOs::SFileStatus status = {}; ///< read before the content
    Checksum checksum = {};        ///< of the beginning, then of the whole file
    std::wstring modificationTime;

    const std::wstring& GetPath() const { return testCase->dataSetFile; }
};

using ExaminedFiles = std::vector<SExaminedFile>;

struct SContentKey
{
    std::int64_t size;
    Checksum checksum;

    friend bool operator==(const SContentKey&, const SContentKey&) = default;
};

struct SContentHash
{
    std::size_t operator()(const Checksum& checksum) const noexcept
    {
        return static_cast<std::size_t>(checksum.low ^ checksum.high);
    }
    std::size_t operator()(const SContentKey& key) const noexcept
    {
        return std::hash<std::int64_t>()(key.size) ^ (*this)(key.checksum);
    }
};

/// Calls `examine` for each candidate; a candidate for which it throws is marked unreadable.
template<typename F>
void examineEach(ExaminedFiles& files, const F& examine)
{
    for (SExaminedFile& file : files)
    {
        if (file.state != EState::Candidate)
        {
            continue;
        }
        try
        {
            examine(file);
        }
        catch (const std::exception&)
        {
            file.state = EState::Unreadable;
        }
    }
}

/// Calls `leave` for each candidate that differs from every other candidate in size or checksum.
template<typename F>
void leaveOutDifferent(ExaminedFiles& files, const F& leave)
{
    std::unordered_map<SContentKey, std::size_t, SContentHash> counts;
    const auto getKey = [](const SExaminedFile& file) { return SContentKey{file.status.size, file.checksum}; };
    examineEach(files, [&](const SExaminedFile& file) { ++counts[getKey(file)]; });
    examineEach(files, [&](SExaminedFile& file) {
        if (counts[getKey(file)] == 1)
        {
            leave(file);
        }
    });
}

ExaminedFiles findFiles(const SUnitTest& test)
{
    ExaminedFiles files;
    std::unordered_set<std::wstring_view> paths;
    for (const STestCase& testCase : test.cases)
    {
        const std::wstring& path = testCase.dataSetFile;
        if (testCase.GetKind() != 1 || !paths.insert(path).second)
        {
            continue;
        }
        const std::optional<LbOs::SFileStatus> status = LbOs::GetFileStatus(path);
        // Opening a pipe would block until another process writes to it.
        const bool isReadable = status && status->isRegularFile;
        if (isReadable || LbFileSystem::IsFile(path))
        {
            files.push_back({&testCase, isReadable ? EState::Candidate : EState::Unreadable,
                             status.value_or(LbOs::SFileStatus()), Checksum(), std::wstring()});
        }
    }
    return files;
}

/// Excludes a file without reading it, or marks it as unreadable if it cannot be opened.
void leaveUnread(SExaminedFile& file)
{
    // A file of size 0 stays a candidate: like files in /proc, it may have content that only reading shows.
    if (file.status.size > 0)
    {
        const LbOs::FileHandle opened = LbOs::OpenForReading(file.GetPath());
        file.state = opened == LbOs::c_InvalidFile ? EState::Unreadable : EState::Different;
        if (file.state == EState::Different)
        {
            LbOs::CloseFile(opened);
        }
    }
}

/// True if the file is longer than a beginning, which is then read separately. Others are read only once, as a whole.
bool hasBeginning(const SExaminedFile& file)
{
    return static_cast<std::uint64_t>(file.status.size) > CFileChecksums::sc_uiBeginning;
}

/// Excludes a file after its beginning was compared. If the whole file is only this beginning, leaveUnread decides.
void leaveRead(SExaminedFile& file)
{
    if (hasBeginning(file))
    {
        file.state = EState::Different;
    }
    else
    {
        leaveUnread(file);
    }
}

void leaveOutTooLong(SExaminedFile& file)
{
    if (file.status.size > std::numeric_limits<std::uint32_t>::max())
    {
        leaveUnread(file);
    }
}

void readWhole(SExaminedFile& file, CFileChecksums& checksums)
{
    const std::optional<Checksum> checksum = checksums.Get(file.GetPath());
    const std::optional<LbOs::SLocalTime> time = LbOs::GetModificationTime(file.GetPath());
    if (!time)
    {
        throw LbException();
    }
    file.modificationTime = LbDateTime::Format(*time, L"Y.m.d-H:i:s");
    file.checksum = checksum.value_or(Checksum());
    file.state = checksum ? EState::Candidate : EState::Different;
}

ExaminedFiles examineFiles(const SUnitTest& test, CFileChecksums& checksums)
{
    ExaminedFiles files = findFiles(test);
    examineEach(files, leaveOutTooLong);
    leaveOutDifferent(files, leaveUnread);
    examineEach(files, [&checksums](SExaminedFile& file) {
        if (hasBeginning(file))
        {
            file.checksum = checksums.GetOfBeginning(file.GetPath());
        }
    });
    leaveOutDifferent(files, leaveRead);
    examineEach(files, [&checksums](SExaminedFile& file) { readWhole(file, checksums); });
    return files;
}

/// Groups the candidates by content; the groups are in the order in which their contents first appear.
std::vector<std::vector<SDataSet>> groupByChecksum(const SUnitTest& test, ExaminedFiles files)
{
    std::vector<std::vector<SDataSet>> groups;
    std::unordered_map<Checksum, std::size_t, SContentHash> groupOf;
    examineEach(files, [&](SExaminedFile& file) {
        const auto [entry, isNew] = groupOf.try_emplace(file.checksum, groups.size());
        if (isNew)
        {
            groups.emplace_back();
        }
        groups[entry->second].push_back(
            {test.dataDirectory, file.testCase->name, file.GetPath(), std::move(file.modificationTime), file.status});
    });
    return groups;
}

/// Moves the first of the oldest data sets to the front; the others keep their order.
void putOldestFirst(DuplicateSet& set)
{
    const auto oldest = std::ranges::min_element(set, {}, &SDataSet::modificationTime);
    std::rotate(set.begin(), oldest, oldest + 1);
}

} // namespace

SDuplicates ExamineDataSets(const SUnitTest& test, CFileChecksums& checksums)
{
    ExaminedFiles files = examineFiles(test, checksums);
    for (const SExaminedFile& file : files)
    {
        if (file.state == EState::Unreadable)
        {
            WriteWarning(L"Fehler während Einlesen von Datei %s\n", file.GetPath());
        }
    }
    SDuplicates duplicates{test.dataDirectory, {}};
    for (DuplicateSet& group : groupByChecksum(test, std::move(files)))
    {
        if (group.size() >= 2)
        {
            putOldestFirst(group);
            duplicates.sets.push_back(std::move(group));
        }
    }
    return duplicates;
}

} // namespace LuTestSuite
