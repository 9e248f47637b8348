#include "testing/lutestsuiterunner/history/archive/archivefolder.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <optional>
#include <tuple>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbparallel.h"
#include "base/lbpath.h"
#include "base/os/files.h"
#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuiterunner/history/archive/contentdigest.h"
#include "testing/lutestsuiterunner/history/archive/index.h"
#include "testing/lutestsuiterunner/history/archive/runsources.h"

namespace Runner::History
{

namespace
{

/// A run that was read, before its names are stored.
struct SReadRun
{
    std::optional<SRecordedRun> recorded; ///< nothing if it cannot be read
    std::vector<SFileStamp> stamps;
    std::string digest; ///< see getDigest
};

std::vector<SFileStamp> getStamps(const std::wstring& folder, const SRunSource& source)
{
    std::vector<SFileStamp> stamps;
    for (const std::wstring& file : source.files)
    {
        const std::optional<LbOs::SFileStatus> status = LbOs::GetFileStatus(folder + file);
        stamps.push_back(status ? SFileStamp{file, status->size, status->modificationTime} : SFileStamp{file, -1, 0});
    }
    return stamps;
}

/// Empty if one of the files exists and cannot be read.
std::string getDigest(const std::wstring& folder, const SRunSource& source)
{
    std::string digests;
    for (const std::wstring& file : source.files)
    {
        const std::string digest = GetFileDigest(folder + file);
        if (digest.empty() && LbFileSystem::IsFile(folder + file))
        {
            return {};
        }
        digests += digest + ";";
    }
    return digests;
}

/// When the newest of the files changed.
std::int64_t getTime(const SIndexedRun& run)
{
    return run.stamps.empty() ? 0 : std::ranges::max(run.stamps, {}, &SFileStamp::time).time;
}

/// True if the run's files are still those that were indexed. Unchanged times prove that only if all of them are
/// earlier than the index: otherwise a second change may have left the same time. The content decides in that case, and
/// also if the time of a file has changed.
bool isCurrent(const std::wstring& folder, const SRunSource& source, const SIndex& index, SIndexedRun& indexed)
{
    std::vector<SFileStamp> stamps = getStamps(folder, source);
    const bool isOlder = std::ranges::all_of(stamps, [&](const SFileStamp& stamp) { return stamp.time < index.time; });
    // An empty digest means that a file could not be opened. The file may be readable now, with the same time.
    if (stamps == indexed.stamps && isOlder && !indexed.digest.empty())
    {
        return true;
    }
    const bool isSame = !indexed.digest.empty() && getDigest(folder, source) == indexed.digest;
    indexed.stamps = std::move(stamps);
    return isSame;
}

SReadRun readRun(const std::wstring& folder, const SRunSource& source)
{
    SReadRun run;
    run.stamps = getStamps(folder, source);
    run.digest = getDigest(folder, source);
    SRecordedRun recorded;
    if (source.read(folder + source.name, recorded))
    {
        recorded.label.name = source.name;
        run.recorded = std::move(recorded);
    }
    return run;
}

/// The cells in the order of the names, so that a table is filled row by row.
std::vector<SCell> sortCells(const std::vector<SCell>& cells, std::size_t nameCount)
{
    std::vector<const SCell*> places(nameCount, nullptr);
    for (const SCell& cell : cells)
    {
        places[cell.caseIndex] = &cell;
    }
    std::vector<SCell> sorted;
    sorted.reserve(cells.size());
    for (const SCell* const cell : places)
    {
        if (cell != nullptr)
        {
            sorted.push_back(*cell);
        }
    }
    return sorted;
}

/// Collects the runs of an archive: those of the index first, then the others from their files.
class CArchiveReader
{
public:
    explicit CArchiveReader(const std::wstring& folder) : m_folder(folder), m_index(ReadIndex(folder + c_IndexName)) {}

    SArchiveContent Read();

private:
    std::vector<SRunSource> takeIndexed();
    void readFiles(const std::vector<SRunSource>& sources);
    void addBatch(const std::vector<SRunSource>& sources, std::size_t first, std::size_t end);
    void sortNames();
    void writeIndex();
    std::vector<SUnreadableRun> findUnreadable() const;

    std::wstring m_folder;
    SIndex m_index;
    CArchive m_archive;
    std::vector<SIndexedRun> m_runs;
    std::vector<SIndexedRun> m_unreadable;
    std::size_t m_readCount = 0;
    bool m_isChanged = false;
};

/// Returns the sources that are not in the index or have changed.
std::vector<SRunSource> CArchiveReader::takeIndexed()
{
    m_archive = CArchive(std::move(m_index.names));
    std::vector<SRunSource> rest;
    for (SRunSource& source : FindRuns(m_folder))
    {
        const auto indexed = m_index.runs.find(source.name);
        const std::vector<SFileStamp> before =
            indexed == m_index.runs.end() ? std::vector<SFileStamp>() : indexed->second.stamps;
        if (indexed == m_index.runs.end() || !isCurrent(m_folder, source, m_index, indexed->second))
        {
            rest.push_back(std::move(source));
            continue;
        }
        m_isChanged = m_isChanged || before != indexed->second.stamps;
        (indexed->second.isReadable ? m_runs : m_unreadable).push_back(std::move(indexed->second));
        m_index.runs.erase(indexed);
    }
    // Runs that are left in m_index no longer exist, so the index is written again without them.
    m_isChanged = m_isChanged || !m_index.runs.empty() || !rest.empty();
    return rest;
}

void CArchiveReader::addBatch(const std::vector<SRunSource>& sources, std::size_t first, std::size_t end)
{
    std::vector<SReadRun> batch(end - first);
    LbParallel::For(static_cast<std::int64_t>(first), static_cast<std::int64_t>(end), [&](std::int64_t number) {
        const auto index = static_cast<std::size_t>(number);
        batch[index - first] = readRun(m_folder, sources[index]);
    });
    for (std::size_t index = first; index < end; ++index)
    {
        SReadRun& read = batch[index - first];
        if (!read.recorded)
        {
            m_unreadable.push_back({std::move(read.stamps), std::move(read.digest), {}, /*isReadable*/ false});
            m_unreadable.back().run.label.name = sources[index].name;
            continue;
        }
        m_runs.push_back({std::move(read.stamps), std::move(read.digest), m_archive.MakeRun(*read.recorded)});
        ++m_readCount;
    }
}

void CArchiveReader::readFiles(const std::vector<SRunSource>& sources)
{
    // A report takes many times its size in memory while it is read.
    constexpr std::size_t c_BatchSize = 4;
    for (std::size_t first = 0; first < sources.size(); first += c_BatchSize)
    {
        addBatch(sources, first, std::min(first + c_BatchSize, sources.size()));
    }
}

/// Makes the results independent of the order in which the runs were read.
void CArchiveReader::sortNames()
{
    std::vector<SCaseName> names = m_archive.TakeNames();
    std::vector<std::uint32_t> order(names.size());
    std::iota(order.begin(), order.end(), 0U);
    std::ranges::sort(order, [&](std::uint32_t a, std::uint32_t b) { return names[a] < names[b]; });
    std::vector<std::uint32_t> places(names.size());
    std::vector<SCaseName> sorted;
    sorted.reserve(names.size());
    for (const std::uint32_t index : order)
    {
        places[index] = static_cast<std::uint32_t>(sorted.size());
        sorted.push_back(std::move(names[index]));
    }
    for (SIndexedRun& indexed : m_runs)
    {
        for (SCell& cell : indexed.run.cells)
        {
            cell.caseIndex = places[cell.caseIndex];
        }
        for (SMessage& message : indexed.run.messages)
        {
            message.caseIndex = places[message.caseIndex];
        }
        if (!std::ranges::is_sorted(indexed.run.cells, {}, &SCell::caseIndex))
        {
            indexed.run.cells = sortCells(indexed.run.cells, sorted.size());
        }
    }
    m_archive = CArchive(std::move(sorted));
}

void CArchiveReader::writeIndex()
{
    std::vector<const SIndexedRun*> runs;
    for (const SIndexedRun& run : m_runs)
    {
        runs.push_back(&run);
    }
    for (const SIndexedRun& run : m_unreadable)
    {
        runs.push_back(&run);
    }
    m_index.digest = WriteIndex(m_folder + c_IndexName, m_archive.GetNames(), runs);
    if (m_index.digest.empty())
    {
        LuTestSuiteOut::Write(L"Warnung: Der Index %s konnte nicht geschrieben werden; das nächste Mal wird alles "
                              L"wieder gelesen.\n",
                              m_folder + c_IndexName);
    }
}

/// The configuration and the begin of an unreadable run are unknown, so the time of its files stands for the begin.
std::vector<SUnreadableRun> CArchiveReader::findUnreadable() const
{
    std::map<std::wstring, std::int64_t> newest; // by configuration
    for (const SIndexedRun& indexed : m_runs)
    {
        std::int64_t& time = newest[indexed.run.label.configuration];
        time = std::max(time, getTime(indexed));
    }
    std::vector<SUnreadableRun> runs;
    for (const SIndexedRun& indexed : m_unreadable)
    {
        SUnreadableRun run{indexed.run.label.name, {}};
        for (const auto& [configuration, time] : newest)
        {
            if (getTime(indexed) >= time)
            {
                run.configurations.push_back(configuration);
            }
        }
        if (!run.configurations.empty())
        {
            runs.push_back(std::move(run));
        }
    }
    std::ranges::sort(runs, {}, &SUnreadableRun::name);
    return runs;
}

SArchiveContent CArchiveReader::Read()
{
    readFiles(takeIndexed());
    for (const SIndexedRun& indexed : m_unreadable)
    {
        LuTestSuiteOut::Write(L"Warnung: %s wurde nicht gelesen und fehlt in der Auswertung.\n",
                              m_folder + indexed.run.label.name);
    }
    if (m_isChanged)
    {
        sortNames();
        writeIndex();
    }
    SArchiveContent content;
    content.names = m_archive.TakeNames();
    content.readCount = m_readCount;
    content.digest = m_index.digest;
    content.unreadable = findUnreadable();
    for (SIndexedRun& indexed : m_runs)
    {
        content.runs.push_back(std::move(indexed.run));
    }
    std::ranges::sort(content.runs, {}, [](const SRun& run) { return std::tie(run.label.begin, run.label.name); });
    return content;
}

} // namespace

SArchiveContent ReadArchive(const std::wstring& directory)
{
    if (!LbFileSystem::IsDirectory(directory))
    {
        throw LbException(LbFormat(L"Verzeichnis %s existiert nicht", directory));
    }
    return CArchiveReader(LbPath::WithSeparator(directory)).Read();
}

} // namespace Runner::History
