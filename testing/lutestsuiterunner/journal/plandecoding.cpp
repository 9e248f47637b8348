/// Reading plans.

#include <limits>
#include <span>

#include <nlohmann/json.hpp>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/lustream.h"
#include "testing/lutestsuiterunner/journal/checksum.h"
#include "testing/lutestsuiterunner/journal/line.h"
#include "testing/lutestsuiterunner/journal/linereader.h"
#include "testing/lutestsuiterunner/journal/planfields.h"
#include "testing/lutestsuiterunner/journal/planfile.h"
#include "testing/lutestsuiterunner/model/textescape.h"

namespace Runner
{

namespace
{

using Json = nlohmann::json;

/// A record with a correct checksum that this version does not understand.
struct SUnreadable
{
};

void require(bool condition)
{
    if (!condition)
    {
        throw SUnreadable();
    }
}

/// Missing texts are empty.
std::wstring getText(const Json& object, const char* name)
{
    const auto found = object.find(name);
    return found == object.end() ? std::wstring() : FromEscapedUtf8(found->get_ref<const std::string&>());
}

template<typename R, std::size_t N>
R readTexts(const Json& object, const STextField<R> (&fields)[N])
{
    R record;
    for (const STextField<R>& field : fields)
    {
        record.*field.member = getText(object, std::string(field.name).c_str());
    }
    return record;
}

template<typename R, std::size_t N>
R readValues(const Json& object, const SValueField<R> (&fields)[N])
{
    R record;
    for (const SValueField<R>& field : fields)
    {
        const Json& value = object.at(std::string(field.name));
        std::visit([&](const auto member) { record.*member = value; }, field.member);
    }
    return record;
}

SOrigin readOrigin(const Json& object)
{
    SOrigin origin = readTexts(object, c_OriginFields);
    if (object.contains("svn"))
    {
        origin.svn = readTexts(object["svn"], c_SvnFields);
    }
    if (object.contains("pscm"))
    {
        origin.pscm = readTexts(object["pscm"], c_PscmFields);
    }
    return origin;
}

LbVariant readParameter(const Json& value)
{
    if (value.is_boolean())
    {
        return LbVariant(value.get<bool>());
    }
    return value.is_null() ? LbVariant() : LbVariant(value.get<std::uint32_t>());
}

LuTestSuite::STestCase readCase(const Json& object, const std::wstring& folder)
{
    LuTestSuite::STestCase testCase;
    testCase.name = getText(object, "name");
    if (const auto file = object.find("file"); file != object.end())
    {
        testCase.dataSetFile = file->is_boolean() ? folder + testCase.name : getText(object, "file");
    }
    if (const auto parameters = object.find("parameters"); parameters != object.end())
    {
        for (const auto& [name, value] : parameters->items())
        {
            testCase.parameters.emplace(FromEscapedUtf8(name), readParameter(value));
        }
    }
    return testCase;
}

class CPlanDecoder
{
public:
    /// Throws SUnreadable, or an exception of the JSON library.
    void Add(const Json& record)
    {
        const std::string& type = record.at("t").get_ref<const std::string&>();
        // The first record, and no other one, has the type "plan".
        require((type == "plan") != std::exchange(m_hasBegun, true) && !m_hasEnded);
        for (const SType& candidate : c_Types)
        {
            if (type == candidate.name)
            {
                (this->*candidate.read)(record);
                return;
            }
        }
        throw SUnreadable();
    }

    bool HasEnded() const { return m_hasEnded; }
    const std::string& GetDigest() const { return m_digest; }
    SPlan Take() { return std::move(m_plan); }

private:
    struct SType
    {
        std::string_view name;
        void (CPlanDecoder::*read)(const Json& record);
    };
    static const SType c_Types[12];

    void readHead(const Json& record)
    {
        require(record.at("format") == c_PlanFormat);
        m_plan.runId = record.at("run");
        m_plan.workingDirectory = getText(record, "folder");
        m_plan.dataDirectory = getText(record, "data");
        m_plan.params = readValues(record.at("params"), c_ParamFields);
        m_plan.rules = readValues(record.at("rules"), c_RuleFields);
        m_plan.shard = readValues(record.at("shard"), c_ShardFields);
        m_plan.partCount = record.value("parts", std::uint32_t{0});
        m_plan.origin = readOrigin(record.at("origin"));
    }

    void readPart(const Json& record) { m_plan.part = SShardPlace{record.at("whole"), {}}; }

    void readArgument(const Json& record) { m_plan.arguments.push_back(getText(record, "text")); }

    void readUnitTest(const Json& record)
    {
        LuTestSuite::SUnitTest unitTest;
        unitTest.className = getText(record, "class");
        unitTest.dataDirectory = getText(record, "folder");
        unitTest.moduleName = getText(record, "module");
        m_plan.unitTests.push_back(std::move(unitTest));
    }

    void readContact(const Json& record)
    {
        require(!m_plan.unitTests.empty());
        m_plan.unitTests.back().contacts.push_back(readTexts(record, c_ContactFields));
    }

    void readCases(const Json& record)
    {
        require(!m_plan.unitTests.empty());
        LuTestSuite::SUnitTest& unitTest = m_plan.unitTests.back();
        for (const Json& element : record.at("list"))
        {
            unitTest.cases.push_back(readCase(element, unitTest.dataDirectory));
        }
    }

    void readDisabled(const Json& record) { m_plan.disabled.push_back(readTexts(record, c_DisabledFields)); }

    void readElsewhere(const Json& record) { mark(record, &SPlannedCase::isInShard, false); }

    void readQuarantined(const Json& record) { mark(record, &SPlannedCase::isQuarantined, true); }

    void readExpected(const Json& record)
    {
        planCases();
        for (const Json& time : record.at("list"))
        {
            require(m_timesRead < m_plan.cases.size());
            m_plan.cases[m_timesRead++].expected = time;
        }
    }

    void readIndices(const Json& record)
    {
        planCases();
        require(m_plan.part.has_value());
        std::vector<std::uint32_t>& indices = m_plan.part->indices;
        for (const Json& range : record.at("ranges"))
        {
            const auto first = range.at(0).get<std::uint32_t>();
            const auto count = range.at(1).get<std::uint32_t>();
            require(count <= m_plan.cases.size() - indices.size());
            for (std::uint32_t place = 0; place < count; ++place)
            {
                indices.push_back(first + place);
            }
        }
    }

    /// All unit tests precede the first mark, so the case runs are known here.
    void mark(const Json& record, bool SPlannedCase::*mark, bool value)
    {
        planCases();
        for (const Json& range : record.at("ranges"))
        {
            const auto first = range.at(0).get<std::uint64_t>();
            const auto count = range.at(1).get<std::uint64_t>();
            require(first <= m_plan.cases.size() && count <= m_plan.cases.size() - first);
            for (SPlannedCase& planned : std::span(m_plan.cases).subspan(first, count))
            {
                planned.*mark = value;
            }
        }
    }

    void planCases()
    {
        if (m_plan.cases.empty())
        {
            m_plan.cases = PlanCases(m_plan.unitTests, m_plan.params.repetitions);
        }
    }

    void readEnd(const Json& record)
    {
        // Checked before the case runs are created, because a forged file may demand very many of them.
        require(record.at("unitTests") == m_plan.unitTests.size());
        planCases();
        require(record.at("cases") == m_plan.cases.size());
        require(!m_plan.part || m_plan.part->indices.size() == m_plan.cases.size());
        m_digest = record.at("digest");
        m_hasEnded = true;
    }

    SPlan m_plan;
    std::string m_digest;
    std::size_t m_timesRead = 0;
    bool m_hasBegun = false;
    bool m_hasEnded = false;
};

const CPlanDecoder::SType CPlanDecoder::c_Types[12] = {{"plan", &CPlanDecoder::readHead},
                                                       {"part", &CPlanDecoder::readPart},
                                                       {"argument", &CPlanDecoder::readArgument},
                                                       {"unit-test", &CPlanDecoder::readUnitTest},
                                                       {"contact", &CPlanDecoder::readContact},
                                                       {"cases", &CPlanDecoder::readCases},
                                                       {"disabled", &CPlanDecoder::readDisabled},
                                                       {"elsewhere", &CPlanDecoder::readElsewhere},
                                                       {"quarantined", &CPlanDecoder::readQuarantined},
                                                       {"expected", &CPlanDecoder::readExpected},
                                                       {"in-whole", &CPlanDecoder::readIndices},
                                                       {"end", &CPlanDecoder::readEnd}};

/// Reads a plan's file. Its last record contains the digest of all earlier lines.
class CPlanReader
{
public:
    explicit CPlanReader(const std::wstring& path)
        : m_path(path), m_file(path),
          // Records have no limit here: a single long name may make one longer than usual, but no name is longer than
          // the file.
          m_lines([this](char* buffer, std::size_t size) { return m_file.Read(buffer, size); },
                  std::numeric_limits<std::uint32_t>::max())
    {
    }

    SPlan Read()
    {
        try
        {
            CPlanDecoder decoder;
            CDigest digest;
            std::string digestBefore;
            for (std::string_view record; m_lines.Next(record);)
            {
                digestBefore = digest.GetText();
                add(record, digest);
                decoder.Add(Json::parse(record));
            }
            if (!decoder.HasEnded() || decoder.GetDigest() != digestBefore)
            {
                fail(L"Der Plan ist nicht vollständig");
            }
            SPlan plan = decoder.Take();
            plan.digest = digestBefore;
            return plan;
        }
        catch (const SDamage& damage)
        {
            throw LbException(LbFormat(L"Der Plan %s ist beschädigt: Zeile %u, Byte %u: %s", m_path, damage.line,
                                       damage.offset, damage.what));
        }
        catch (const SUnreadable&)
        {
            fail(L"Der Eintrag ist nicht verständlich");
        }
        catch (const Json::exception&)
        {
            fail(L"Der Eintrag ist nicht verständlich");
        }
    }

private:
    /// Adds a line of the file to the digest. Makes the line again from its record, from which all other parts follow.
    void add(std::string_view record, CDigest& digest)
    {
        MakeLine(m_lines.GetSequence(), record, m_line);
        digest.Add(m_line);
    }

    [[noreturn]] void fail(const wchar_t* what)
    {
        throw LbException(LbFormat(L"Der Plan %s ist nicht lesbar: Zeile %u, Byte %u: %s", m_path,
                                   m_lines.GetSequence(), m_lines.GetOffset(), what));
    }

    std::wstring m_path;
    LuStreamReadBinaryFile m_file;
    CLineReader m_lines;
    std::string m_line;
};

} // namespace

SPlan ReadPlan(const std::wstring& path)
{
    return CPlanReader(path).Read();
}

} // namespace Runner
