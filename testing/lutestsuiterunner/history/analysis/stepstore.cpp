#include "testing/lutestsuiterunner/history/analysis/stepstore.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lustream.h"
#include "testing/lutestsuiterunner/history/archive/bytes.h"
#include "testing/lutestsuiterunner/history/archive/contentdigest.h"

namespace Runner::History
{

namespace
{

/// Contains the version of the format and of the method. The results of another version are computed again.
constexpr std::string_view c_Begin = "LuTestSuite history steps 6\n";

/// A call with another set of options or configurations needs an entry of its own. The number of entries is limited,
/// because each run that is added to the archive makes all of them useless.
constexpr std::size_t c_MostEntries = 16;

void write(CByteWriter& writer, const std::vector<SStep>& steps)
{
    writer.Write(static_cast<std::uint64_t>(steps.size()));
    for (const SStep& step : steps)
    {
        writer.WriteAll(std::vector<std::uint64_t>{step.index, step.first, step.last});
        writer.WriteAll(std::vector<double>{step.before, step.after, step.bits, step.deviations});
    }
}

std::vector<SStep> readSteps(CByteReader& reader)
{
    std::vector<SStep> steps(reader.ReadCount());
    for (SStep& step : steps)
    {
        step.index = static_cast<std::size_t>(reader.Read<std::uint64_t>());
        step.first = static_cast<std::size_t>(reader.Read<std::uint64_t>());
        step.last = static_cast<std::size_t>(reader.Read<std::uint64_t>());
        step.before = reader.Read<double>();
        step.after = reader.Read<double>();
        step.bits = reader.Read<double>();
        step.deviations = reader.Read<double>();
    }
    return steps;
}

void write(CByteWriter& writer, const SStepAnalysis::StepsOfCases& cases)
{
    writer.Write(static_cast<std::uint64_t>(cases.size()));
    for (const auto& [caseIndex, steps] : cases)
    {
        writer.Write(caseIndex);
        write(writer, steps);
    }
}

SStepAnalysis::StepsOfCases readCases(CByteReader& reader)
{
    SStepAnalysis::StepsOfCases cases(reader.ReadCount());
    for (auto& [caseIndex, steps] : cases)
    {
        caseIndex = reader.Read<std::uint32_t>();
        steps = readSteps(reader);
    }
    return cases;
}

std::string toBytes(const SStepAnalysis& analysis)
{
    CByteWriter writer;
    writer.Write(static_cast<std::uint64_t>(analysis.tempo.size()));
    writer.WriteAll(analysis.tempo);
    write(writer, analysis.whole);
    write(writer, analysis.times);
    write(writer, analysis.memory);
    writer.WriteAll(std::vector<double>{analysis.thresholds.bits, analysis.thresholds.deviations});
    writer.WriteAll(std::vector<std::uint64_t>{analysis.seriesCount, analysis.testCount, analysis.shuffleCount,
                                               analysis.check.archives, analysis.check.alarms,
                                               analysis.check.archivesWithAlarm});
    return writer.GetBytes();
}

SStepAnalysis fromBytes(std::string_view bytes)
{
    CByteReader reader(bytes);
    SStepAnalysis analysis;
    analysis.tempo.resize(reader.ReadCount());
    std::ranges::generate(analysis.tempo, [&reader] { return reader.Read<double>(); });
    analysis.whole = readSteps(reader);
    analysis.times = readCases(reader);
    analysis.memory = readCases(reader);
    analysis.thresholds.bits = reader.Read<double>();
    analysis.thresholds.deviations = reader.Read<double>();
    for (std::uint64_t* const count :
         {&analysis.seriesCount, &analysis.testCount, &analysis.shuffleCount, &analysis.check.archives,
          &analysis.check.alarms, &analysis.check.archivesWithAlarm})
    {
        *count = reader.Read<std::uint64_t>();
    }
    return analysis;
}

std::vector<SStoredSteps> readFile(const std::wstring& path)
{
    std::vector<SStoredSteps> stored;
    try
    {
        const std::string bytes = LbFileSystem::ReadFile8Bit(path);
        const std::string_view all(bytes);
        const std::size_t start = c_Begin.size() + c_DigestSize;
        if (all.size() < start || !all.starts_with(c_Begin) ||
            GetDigest(all.substr(start)) != all.substr(c_Begin.size(), c_DigestSize))
        {
            return {};
        }
        CByteReader reader(all.substr(start));
        for (std::size_t count = reader.ReadCount(); count > 0; --count)
        {
            SStoredSteps& entry = stored.emplace_back();
            entry.key = reader.ReadBytes();
            entry.bytes = reader.ReadBytes();
        }
    }
    catch (const LbException&)
    {
        // The file is missing, or it has another format.
        stored.clear();
    }
    return stored;
}

/// Equal for the same archive, configuration, number of newest runs, and rules.
std::string getKey(const std::string& digest, const std::wstring& configuration, const CTable& table,
                   const SStepRules& rules)
{
    CByteWriter writer;
    writer.Write(std::string_view(digest));
    writer.Write(configuration);
    writer.Write(static_cast<std::uint64_t>(table.GetRunCount()));
    writer.WriteAll(std::vector<double>{rules.alarmRate, rules.smallestChange});
    writer.WriteAll(std::vector<std::uint64_t>{rules.checks, rules.checkSeed});
    return writer.GetBytes();
}

} // namespace

CStepStore::CStepStore(const std::wstring& folder, const std::string& digest)
    : m_path(LbPath::WithSeparator(folder) + c_StepStoreName), m_digest(digest)
{
    if (!digest.empty())
    {
        m_entries = readFile(m_path);
        std::ranges::transform(m_entries, std::back_inserter(m_storedKeys), &SStoredSteps::key);
    }
}

SStepAnalysis CStepStore::Get(const std::wstring& configuration, const CTable& table, const SStepRules& rules)
{
    const std::string key = getKey(m_digest, configuration, table, rules);
    m_usedKeys.insert(key);
    const auto stored = std::ranges::find(m_entries, key, &SStoredSteps::key);
    if (stored == m_entries.end())
    {
        SStepAnalysis analysis = AnalyzeSteps(table, rules);
        m_entries.insert(m_entries.begin(), {key, toBytes(analysis)});
        return analysis;
    }
    std::rotate(m_entries.begin(), stored, stored + 1);
    return fromBytes(m_entries.front().bytes);
}

void CStepStore::Save() const
{
    if (m_digest.empty() || std::ranges::equal(m_entries, m_storedKeys, {}, &SStoredSteps::key))
    {
        return;
    }
    const std::size_t count = std::min(m_entries.size(), std::max(c_MostEntries, m_usedKeys.size()));
    CByteWriter writer;
    writer.Write(static_cast<std::uint64_t>(count));
    for (const SStoredSteps& entry : std::span(m_entries).first(count))
    {
        writer.Write(std::string_view(entry.key));
        writer.Write(std::string_view(entry.bytes));
    }
    const std::string digest = GetDigest(writer.GetBytes());
    try
    {
        LbFileSystem::WriteWhole(m_path, [&](const std::wstring& place) {
            LuStreamWriteBinaryFile file(place);
            file.Write(c_Begin.data(), c_Begin.size());
            file.Write(digest.data(), digest.size());
            file.Write(writer.GetBytes().data(), writer.GetBytes().size());
            file.Close();
        });
    }
    catch (const LbException&)
    {
        // ReadArchive has already reported that the folder cannot be written.
    }
}

} // namespace Runner::History
