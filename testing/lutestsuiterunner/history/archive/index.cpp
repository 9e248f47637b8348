#include "testing/lutestsuiterunner/history/archive/index.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <optional>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lustream.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/history/archive/bytes.h"
#include "testing/lutestsuiterunner/history/archive/contentdigest.h"

namespace Runner::History
{

namespace
{

/// Contains the version of the format. If an index has another version, the runs are read from their own files again.
constexpr std::string_view c_Begin = "LuTestSuite history index 4\n";

template<typename T, typename Get>
void writeColumn(CByteWriter& writer, const SRun& run, const Get& get)
{
    std::vector<T> values;
    values.reserve(run.cells.size());
    std::ranges::transform(run.cells, std::back_inserter(values), get);
    writer.WriteAll(values);
}

void writeRun(CByteWriter& writer, const SRun& run)
{
    for (const std::wstring SRunLabel::*text :
         {&SRunLabel::name, &SRunLabel::configuration, &SRunLabel::build, &SRunLabel::machine, &SRunLabel::begin})
    {
        writer.Write(run.label.*text);
    }
    writer.Write(static_cast<std::uint64_t>(run.cells.size()));
    const bool hasAllocations =
        std::ranges::any_of(run.cells, [](const SCell& cell) { return cell.measured.allocations != c_UnknownCount; });
    writer.Write(hasAllocations);
    writeColumn<std::uint32_t>(writer, run, [](const SCell& cell) { return cell.caseIndex; });
    writeColumn<std::uint8_t>(writer, run,
                              [](const SCell& cell) { return static_cast<std::uint8_t>(cell.measured.result); });
    writeColumn<std::uint8_t>(
        writer, run, [](const SCell& cell) { return static_cast<std::uint8_t>(cell.measured.hasBoth ? 1 : 0); });
    writeColumn<float>(writer, run, [](const SCell& cell) { return cell.measured.seconds; });
    writeColumn<std::uint64_t>(writer, run, [](const SCell& cell) { return cell.measured.memory; });
    if (hasAllocations)
    {
        writeColumn<std::uint64_t>(writer, run, [](const SCell& cell) { return cell.measured.allocations; });
    }
    writer.Write(static_cast<std::uint64_t>(run.messages.size()));
    for (const SMessage& message : run.messages)
    {
        writer.Write(message.caseIndex);
        writer.Write(message.text);
    }
}

std::uint32_t checkIndex(std::uint32_t index, std::size_t nameCount)
{
    if (index >= nameCount)
    {
        throw LbException(L"Der Index nennt einen Fall ohne Namen");
    }
    return index;
}

void readCells(CByteReader& reader, std::size_t nameCount, std::vector<SCell>& cells)
{
    const std::size_t count = reader.ReadCount();
    const bool hasAllocations = reader.Read<bool>();
    const auto indices = reader.ReadColumn<std::uint32_t>(count);
    const auto results = reader.ReadColumn<std::uint8_t>(count);
    const auto both = reader.ReadColumn<std::uint8_t>(count);
    const auto seconds = reader.ReadColumn<float>(count);
    const auto memory = reader.ReadColumn<std::uint64_t>(count);
    const auto allocations = reader.ReadColumn<std::uint64_t>(hasAllocations ? count : 0);
    cells.reserve(count);
    for (std::size_t place = 0; place < count; ++place)
    {
        cells.push_back({checkIndex(indices[place], nameCount),
                         {static_cast<ECaseRunResult>(results[place]), both[place] != 0, seconds[place], memory[place],
                          hasAllocations ? allocations[place] : c_UnknownCount}});
    }
}

SRun readRun(CByteReader& reader, std::size_t nameCount)
{
    SRun run;
    for (std::wstring SRunLabel::*text :
         {&SRunLabel::name, &SRunLabel::configuration, &SRunLabel::build, &SRunLabel::machine, &SRunLabel::begin})
    {
        run.label.*text = reader.ReadText();
    }
    readCells(reader, nameCount, run.cells);
    run.messages.resize(reader.ReadCount());
    for (SMessage& message : run.messages)
    {
        message.caseIndex = checkIndex(reader.Read<std::uint32_t>(), nameCount);
        message.text = reader.ReadText();
    }
    return run;
}

SIndexedRun readIndexedRun(CByteReader& reader, std::size_t nameCount)
{
    SIndexedRun indexed;
    indexed.stamps.resize(reader.ReadCount());
    for (SFileStamp& stamp : indexed.stamps)
    {
        stamp.name = reader.ReadText();
        stamp.size = reader.Read<std::int64_t>();
        stamp.time = reader.Read<std::int64_t>();
    }
    indexed.digest = reader.ReadBytes();
    indexed.isReadable = reader.Read<bool>();
    indexed.run = readRun(reader, nameCount);
    return indexed;
}

SIndex readContent(std::string_view content)
{
    SIndex index;
    CByteReader reader(content);
    index.names.resize(reader.ReadCount());
    for (SCaseName& name : index.names)
    {
        name.className = reader.ReadText();
        name.caseName = reader.ReadText();
    }
    for (std::size_t count = reader.ReadCount(); count > 0; --count)
    {
        SIndexedRun run = readIndexedRun(reader, index.names.size());
        const std::wstring name = run.run.label.name;
        index.runs.emplace(name, std::move(run));
    }
    return index;
}

std::string getContent(const std::vector<SCaseName>& names, const std::vector<const SIndexedRun*>& runs)
{
    CByteWriter writer;
    writer.Write(static_cast<std::uint64_t>(names.size()));
    for (const SCaseName& name : names)
    {
        writer.Write(name.className);
        writer.Write(name.caseName);
    }
    writer.Write(static_cast<std::uint64_t>(runs.size()));
    for (const SIndexedRun* run : runs)
    {
        writer.Write(static_cast<std::uint64_t>(run->stamps.size()));
        for (const SFileStamp& stamp : run->stamps)
        {
            writer.Write(stamp.name);
            writer.Write(stamp.size);
            writer.Write(stamp.time);
        }
        writer.Write(std::string_view(run->digest));
        writer.Write(run->isReadable);
        writeRun(writer, run->run);
    }
    return writer.GetBytes();
}

} // namespace

SIndex ReadIndex(const std::wstring& path)
{
    const std::optional<LbOs::SFileStatus> status = LbOs::GetFileStatus(path);
    if (!status)
    {
        return {};
    }
    try
    {
        const std::string bytes = LbFileSystem::ReadFile8Bit(path);
        const std::string_view all(bytes);
        if (all.size() < c_Begin.size() + c_DigestSize || !all.starts_with(c_Begin))
        {
            return {};
        }
        const std::string_view content = all.substr(c_Begin.size() + c_DigestSize);
        const std::string digest = GetDigest(content);
        if (digest != all.substr(c_Begin.size(), c_DigestSize))
        {
            return {};
        }
        SIndex index = readContent(content);
        index.digest = digest;
        index.time = status->modificationTime;
        return index;
    }
    catch (const LbException&)
    {
        // Not an error: the runs themselves still exist.
        return {};
    }
    catch (const std::bad_alloc&)
    {
        return {};
    }
}

std::string WriteIndex(const std::wstring& path, const std::vector<SCaseName>& names,
                       const std::vector<const SIndexedRun*>& runs)
try
{
    const std::string content = getContent(names, runs);
    const std::string digest = GetDigest(content);
    LbFileSystem::WriteWhole(path, [&](const std::wstring& place) {
        LuStreamWriteBinaryFile file(place);
        file.Write(c_Begin.data(), c_Begin.size());
        file.Write(digest.data(), digest.size());
        file.Write(content.data(), content.size());
        file.Close();
    });
    return digest;
}
catch (const LbException&)
{
    return {};
}

} // namespace Runner::History
