#include "testing/lutestsuiterunner/history/analysis/stepstore.h"

#include <algorithm>

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
constexpr std::string_view c_Begin = "LuTestSuite history steps 5\n";

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

std::map<std::string, std::string> readFile(const std::wstring& path)
{
    std::map<std::string, std::string> stored;
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
            const std::string key(reader.ReadBytes());
            stored[key] = reader.ReadBytes();
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
        m_stored = readFile(m_path);
    }
}

SStepAnalysis CStepStore::Get(const std::wstring& configuration, const CTable& table, const SStepRules& rules)
{
    const std::string key = getKey(m_digest, configuration, table, rules);
    if (const auto stored = m_stored.find(key); stored != m_stored.end())
    {
        m_used[key] = stored->second;
        return fromBytes(stored->second);
    }
    SStepAnalysis analysis = AnalyzeSteps(table, rules);
    m_used[key] = toBytes(analysis);
    m_isNew = true;
    return analysis;
}

void CStepStore::Save() const
{
    if (m_digest.empty() || !m_isNew)
    {
        return;
    }
    CByteWriter writer;
    writer.Write(static_cast<std::uint64_t>(m_used.size()));
    for (const auto& [key, bytes] : m_used)
    {
        writer.Write(std::string_view(key));
        writer.Write(std::string_view(bytes));
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
