/// Writing plans.

#include <algorithm>
#include <span>

#include "base/lbfilesystem.h"
#include "testing/lutestsuiterunner/journal/appendfile.h"
#include "testing/lutestsuiterunner/journal/checksum.h"
#include "testing/lutestsuiterunner/journal/jsontext.h"
#include "testing/lutestsuiterunner/journal/line.h"
#include "testing/lutestsuiterunner/journal/planfields.h"
#include "testing/lutestsuiterunner/journal/planfile.h"

namespace Runner
{

namespace
{

/// A record with a list gets no further elements once it has this size. It then stays below the limit of a record
/// unless a single name is very long.
constexpr std::size_t c_GroupSize = 32768;

template<typename R>
void addTexts(CJsonObject& object, std::span<const STextField<R>> fields, const R& record)
{
    for (const STextField<R>& field : fields)
    {
        object.AddUnlessEmpty(field.name, record.*field.member);
    }
}

template<typename R, std::size_t N>
void addTextObject(CJsonObject& parent, std::string_view name, const STextField<R> (&fields)[N], const R& record)
{
    CJsonObject object(parent.Add(name));
    addTexts<R>(object, fields, record);
}

template<typename R, std::size_t N>
void addValues(CJsonObject& parent, std::string_view name, const SValueField<R> (&fields)[N], const R& record)
{
    CJsonObject object(parent.Add(name));
    for (const SValueField<R>& field : fields)
    {
        std::visit([&](const auto member) { object.Add(field.name, record.*member); }, field.member);
    }
}

void addOrigin(CJsonObject& parent, const SOrigin& origin)
{
    CJsonObject object(parent.Add("origin"));
    addTexts<SOrigin>(object, c_OriginFields, origin);
    if (origin.svn)
    {
        addTextObject(object, "svn", c_SvnFields, *origin.svn);
    }
    if (origin.pscm)
    {
        addTextObject(object, "pscm", c_PscmFields, *origin.pscm);
    }
}

void addParameter(CJsonObject& object, const std::wstring& name, const LbVariant& value)
{
    const std::string quoted = ToJsonString(name);
    if (value == LbVariant(true) || value == LbVariant(false))
    {
        object.AddQuoted(quoted) += value == LbVariant(true) ? "true" : "false";
    }
    else if (const auto number = value.ToUInt32())
    {
        AppendNumber(*number, object.AddQuoted(quoted));
    }
    else
    {
        object.AddQuoted(quoted) += "null";
    }
}

/// Sorted by name, so that equal parameters have equal texts.
void addParameters(CJsonObject& parent, const LuTestSuite::ParameterMap& parameters)
{
    std::vector<std::wstring> names;
    for (const auto& [name, value] : parameters)
    {
        names.push_back(name);
    }
    std::ranges::sort(names);
    CJsonObject object(parent.Add("parameters"));
    for (const std::wstring& name : names)
    {
        addParameter(object, name, parameters.at(name));
    }
}

/// `folder` is that of the unit test.
void appendCase(const LuTestSuite::STestCase& testCase, const std::wstring& folder, std::string& json)
{
    CJsonObject object(json);
    object.Add("name", testCase.name);
    if (!testCase.dataSetFile.empty() && testCase.dataSetFile == folder + testCase.name)
    {
        object.Add("file", true);
    }
    else
    {
        object.AddUnlessEmpty("file", testCase.dataSetFile);
    }
    if (!testCase.parameters.empty())
    {
        addParameters(object, testCase.parameters);
    }
}

struct SRange
{
    std::size_t first;
    std::size_t count;
};

void appendRange(const SRange& range, std::string& json)
{
    AppendNumber(range.first, json += '[');
    AppendNumber(range.count, json += ',');
    json += ']';
}

/// Appends elements until the record has become large, and returns their number.
template<typename T, typename F>
std::size_t appendList(std::string& json, std::span<const T> list, const F& append)
{
    std::size_t count = 0;
    json += '[';
    for (; count < list.size() && (count == 0 || json.size() < c_GroupSize); ++count)
    {
        json += count == 0 ? "" : ",";
        append(list[count], json);
    }
    json += ']';
    return count;
}

class CPlanEncoder
{
public:
    explicit CPlanEncoder(const std::function<void(std::string_view line)>& write) : m_write(write) {}

    void EncodeHead(const SPlan& plan)
    {
        write("plan", [&](CJsonObject& object) {
            object.Add("format", c_PlanFormat);
            object.Add("run", plan.runId);
            object.Add("folder", plan.workingDirectory);
            object.Add("data", plan.dataDirectory);
            addValues(object, "params", c_ParamFields, plan.params);
            addValues(object, "rules", c_RuleFields, plan.rules);
            addValues(object, "shard", c_ShardFields, plan.shard);
            object.AddUnless(std::uint32_t{0}, "parts", plan.partCount);
            addOrigin(object, plan.origin);
        });
        if (plan.part)
        {
            write("part", [&](CJsonObject& object) { object.Add("whole", plan.part->wholeDigest); });
        }
        for (const std::wstring& argument : plan.arguments)
        {
            write("argument", [&](CJsonObject& object) { object.Add("text", argument); });
        }
    }

    void EncodeUnitTest(const LuTestSuite::SUnitTest& unitTest)
    {
        write("unit-test", [&](CJsonObject& object) {
            object.Add("class", unitTest.className);
            object.Add("folder", unitTest.dataDirectory);
            object.AddUnlessEmpty("module", unitTest.moduleName);
        });
        for (const SContact& contact : unitTest.contacts)
        {
            write("contact", [&](CJsonObject& object) { addTexts<SContact>(object, c_ContactFields, contact); });
        }
        encodeCases(unitTest);
    }

    void EncodeDisabled(const SDisabledCase& disabled)
    {
        write("disabled", [&](CJsonObject& object) { addTexts<SDisabledCase>(object, c_DisabledFields, disabled); });
    }

    /// Writes the indices of the cases whose `mark` has this value.
    void EncodeMarks(const char* type, const std::vector<SPlannedCase>& cases, bool SPlannedCase::*mark, bool value)
    {
        std::vector<std::uint32_t> marked;
        for (std::uint32_t index = 0; index < cases.size(); ++index)
        {
            if (cases[index].*mark == value)
            {
                marked.push_back(index);
            }
        }
        EncodeIndices(type, marked);
    }

    /// Writes the indices as ranges: first index and count.
    void EncodeIndices(const char* type, const std::vector<std::uint32_t>& indices)
    {
        std::vector<SRange> ranges;
        for (const std::uint32_t index : indices)
        {
            if (ranges.empty() || ranges.back().first + ranges.back().count != index)
            {
                ranges.push_back({index, 0});
            }
            ++ranges.back().count;
        }
        encodeList(type, "ranges", std::span<const SRange>(ranges), appendRange);
    }

    /// Writes the expected times of all cases; nothing if no time is known.
    void EncodeTimes(const std::vector<SPlannedCase>& cases)
    {
        if (std::ranges::any_of(cases, [](const SPlannedCase& planned) { return planned.expected != 0; }))
        {
            encodeList("expected", "list", std::span(cases),
                       [](const SPlannedCase& planned, std::string& json) { AppendNumber(planned.expected, json); });
        }
    }

    std::string EncodeEnd(const SPlan& plan)
    {
        const std::string digest = m_digest.GetText();
        write("end", [&](CJsonObject& object) {
            object.Add("unitTests", plan.unitTests.size());
            object.Add("cases", plan.cases.size());
            object.Add("digest", digest);
        });
        return digest;
    }

private:
    void encodeCases(const LuTestSuite::SUnitTest& unitTest)
    {
        std::span<const LuTestSuite::STestCase> cases = unitTest.cases;
        while (!cases.empty())
        {
            write("cases", [&](CJsonObject& object) {
                cases =
                    cases.subspan(appendList(object.Add("list"), cases, [&](const auto& testCase, std::string& json) {
                        appendCase(testCase, unitTest.dataDirectory, json);
                    }));
            });
        }
    }

    template<typename T, typename F>
    void encodeList(const char* type, const char* name, std::span<const T> list, const F& append)
    {
        while (!list.empty())
        {
            write(type, [&](CJsonObject& object) { list = list.subspan(appendList(object.Add(name), list, append)); });
        }
    }

    template<typename F>
    void write(const char* type, const F& fill)
    {
        m_json.clear();
        {
            CJsonObject object(m_json);
            object.Add("t", type);
            fill(object);
        }
        MakeLine(++m_sequence, m_json, m_line);
        m_digest.Add(m_line);
        m_write(m_line);
    }

    const std::function<void(std::string_view line)>& m_write;
    std::uint64_t m_sequence = 0;
    CDigest m_digest;
    std::string m_json;
    std::string m_line;
};

} // namespace

std::string EncodePlan(const SPlan& plan, const std::function<void(std::string_view line)>& write)
{
    CPlanEncoder encoder(write);
    encoder.EncodeHead(plan);
    for (const LuTestSuite::SUnitTest& unitTest : plan.unitTests)
    {
        encoder.EncodeUnitTest(unitTest);
    }
    for (const SDisabledCase& disabled : plan.disabled)
    {
        encoder.EncodeDisabled(disabled);
    }
    encoder.EncodeMarks("elsewhere", plan.cases, &SPlannedCase::isInShard, false);
    encoder.EncodeMarks("quarantined", plan.cases, &SPlannedCase::isQuarantined, true);
    encoder.EncodeTimes(plan.cases);
    if (plan.part)
    {
        encoder.EncodeIndices("in-whole", plan.part->indices);
    }
    return encoder.EncodeEnd(plan);
}

std::string WritePlan(const std::wstring& path, const SPlan& plan)
{
    std::string digest;
    LbFileSystem::WriteWhole(path, [&](const std::wstring& place) {
        CAppendFile file(place);
        std::string bytes;
        digest = EncodePlan(plan, [&](std::string_view line) {
            bytes += line;
            if (bytes.size() > c_LargestRecord)
            {
                file.Append(bytes);
                bytes.clear();
            }
        });
        file.Append(bytes);
        file.Close();
    });
    return digest;
}

std::string DigestSelection(const SPlan& plan)
{
    std::vector<std::string> unitTests;
    for (const LuTestSuite::SUnitTest& unitTest : plan.unitTests)
    {
        std::vector<std::string> cases;
        for (LuTestSuite::STestCase testCase : unitTest.cases)
        {
            // The digest contains only whether the case has a file, not its path.
            testCase.dataSetFile = testCase.dataSetFile.empty() ? std::wstring() : testCase.name;
            appendCase(testCase, {}, cases.emplace_back());
        }
        std::ranges::sort(cases);
        std::string& json = unitTests.emplace_back();
        AppendJsonString(GetUnitTestName(plan, unitTest.dataDirectory, unitTest.className), json);
        for (const std::string& testCase : cases)
        {
            json += testCase;
        }
    }
    std::ranges::sort(unitTests);
    CDigest digest;
    std::string repetitions;
    AppendNumber(plan.params.repetitions, repetitions);
    digest.Add(repetitions);
    for (const std::string& unitTest : unitTests)
    {
        digest.Add(unitTest);
    }
    return digest.GetText();
}

} // namespace Runner
