#include "testing/lutestsuiterunner/journal/recordparser.h"

#include <array>
#include <bitset>
#include <limits>
#include <utility>

#include <nlohmann/json.hpp>

#include "testing/lutestsuiterunner/model/names.h"
#include "testing/lutestsuiterunner/model/textescape.h"

namespace Runner
{

namespace
{

enum EField : std::size_t
{
    eF_Type,
    eF_Plan,
    eF_Cases,
    eF_Journal,
    eF_Version,
    eF_Machine,
    eF_Time,
    eF_Case,
    eF_Attempt,
    eF_Kind,
    eF_Worker,
    eF_Process,
    eF_At,
    eF_End,
    eF_Result,
    eF_Nanoseconds,
    eF_Growth,
    eF_Allocations,
    eF_Peak,
    eF_Warning,
    eF_Child,
    eF_Status,
    eF_Reason,
    eF_Messages,
    eF_Output,
    eF_Stacks,
    eF_Core,
    eF_Count
};

constexpr std::array<std::string_view, eF_Count> c_Fields = {
    "t",    "plan",    "cases",   "journal", "version", "machine",  "time",   "case",   "attempt",
    "kind", "worker",  "process", "at",      "end",     "result",   "ns",     "growth", "allocations",
    "peak", "warning", "child",   "status",  "reason",  "messages", "output", "stacks", "core"};

std::size_t findField(std::string_view name)
{
    return static_cast<std::size_t>(std::ranges::find(c_Fields, name) - c_Fields.begin());
}

/// The members of a record that is being read.
struct SMembers
{
    std::bitset<eF_Count> given;
    std::array<std::int64_t, eF_Count> numbers{};
    std::array<std::string, eF_Count> texts;
    std::array<STextPlace, eF_Count> places; ///< of large texts; a place of size 0 is not used
};

/// Thrown when a record has wrong members.
struct SUnreadable
{
};

std::int64_t getNumber(const SMembers& members, EField field, std::int64_t usual)
{
    return members.given[field] ? members.numbers[field] : usual;
}

template<typename T>
T getInRange(const SMembers& members, EField field, T usual)
{
    const std::int64_t number = getNumber(members, field, static_cast<std::int64_t>(usual));
    if (!std::in_range<T>(number))
    {
        throw SUnreadable();
    }
    return static_cast<T>(number);
}

template<typename T>
T requireInRange(const SMembers& members, EField field)
{
    if (!members.given[field])
    {
        throw SUnreadable();
    }
    return getInRange<T>(members, field, 0);
}

template<typename E>
E getNamed(const SMembers& members, EField field, E usual)
{
    if (!members.given[field])
    {
        return usual;
    }
    const std::optional<E> value = FindValue<E>(members.texts[field]);
    return value ? *value : throw SUnreadable();
}

std::wstring getText(const SMembers& members, EField field, const LoadText& load)
{
    if (!members.given[field])
    {
        return {};
    }
    const STextPlace& place = members.places[field];
    return FromEscapedUtf8(place.size == 0 ? members.texts[field] : load(place));
}

SJournalBegun makeBegun(const SMembers& members, const LoadText& load)
{
    return {members.texts[eF_Plan],
            requireInRange<std::uint64_t>(members, eF_Cases),
            requireInRange<std::uint32_t>(members, eF_Journal),
            getText(members, eF_Version, load),
            getInRange<std::uint64_t>(members, eF_Process, 0),
            getText(members, eF_Machine, load),
            getText(members, eF_Time, load)};
}

SCaseStarted makeStarted(const SMembers& members, const LoadText& /*load*/)
{
    return {requireInRange<std::uint32_t>(members, eF_Case),   requireInRange<std::uint32_t>(members, eF_Attempt),
            getNamed(members, eF_Kind, EAttemptKind::First),   getInRange<std::int32_t>(members, eF_Worker, -1),
            getInRange<std::uint64_t>(members, eF_Process, 0), getInRange<std::uint64_t>(members, eF_At, 0)};
}

LuTestSuiteRun::SCaseInfo makeInfo(const SMembers& members, const LoadText& load)
{
    LuTestSuiteRun::SCaseInfo info;
    info.result = getNamed(members, eF_Result, LuTestSuiteRun::ECaseRunResult::Unknown);
    info.memoryGrowth = static_cast<std::uint64_t>(getNumber(members, eF_Growth, 0));
    info.allocations = getInRange<std::uint64_t>(members, eF_Allocations, 0);
    info.peakMemory = getInRange<std::uint64_t>(members, eF_Peak, 0);
    info.time = getInRange<std::uint64_t>(members, eF_Nanoseconds, 0);
    info.messages = getText(members, eF_Messages, load);
    info.warning = getNumber(members, eF_Warning, 0) != 0;
    info.executed = true;
    info.threadIndex = getInRange<std::int32_t>(members, eF_Worker, -1);
    info.processIndex = getInRange<std::int32_t>(members, eF_Child, -1);
    return info;
}

SCaseEnded makeEnded(const SMembers& members, const LoadText& load)
{
    SCaseEnded ended;
    ended.caseIndex = requireInRange<std::uint32_t>(members, eF_Case);
    ended.attempt = requireInRange<std::uint32_t>(members, eF_Attempt);
    ended.end = getNamed(members, eF_End, EAttemptEnd::Returned);
    // Texts are loaded in the order in which they were written, see CStoredTexts.
    ended.reason = getText(members, eF_Reason, load);
    ended.info = makeInfo(members, load);
    ended.output = getText(members, eF_Output, load);
    ended.stacks = getText(members, eF_Stacks, load);
    ended.core = getText(members, eF_Core, load);
    ended.processId = getInRange<std::uint64_t>(members, eF_Process, 0);
    if (members.given[eF_Status])
    {
        ended.exitStatus = members.numbers[eF_Status];
    }
    ended.elapsed = getInRange<std::uint64_t>(members, eF_At, 0);
    return ended;
}

SRunCanceled makeCanceled(const SMembers& members, const LoadText& load)
{
    return {getText(members, eF_Reason, load), getInRange<std::uint64_t>(members, eF_At, 0)};
}

SRunProblem makeProblem(const SMembers& members, const LoadText& load)
{
    return {getText(members, eF_Reason, load)};
}

SRunFinished makeFinished(const SMembers& members, const LoadText& load)
{
    return {getText(members, eF_Time, load), getInRange<std::uint64_t>(members, eF_At, 0)};
}

template<auto Make>
void make(const SMembers& members, const LoadText& load, Record& record)
{
    record = Make(members, load);
}

struct SType
{
    std::string_view name;
    void (*make)(const SMembers& members, const LoadText& load, Record& record);
};

constexpr SType c_Types[] = {{"start", make<makeStarted>},   {"end", make<makeEnded>},
                             {"begin", make<makeBegun>},     {"cancel", make<makeCanceled>},
                             {"problem", make<makeProblem>}, {"finish", make<makeFinished>}};

} // namespace

/// Receives the members of an object from the JSON reader, which then builds no tree.
class CRecordParser::CHandler : public nlohmann::json_sax<nlohmann::json>
{
public:
    SMembers& Begin()
    {
        m_members.given.reset();
        m_depth = 0;
        return m_members;
    }

    bool key(string_t& name) override
    {
        if (m_depth == 1)
        {
            m_field = findField(name);
        }
        m_part = m_depth == 2 ? name : std::string();
        return true;
    }

    bool number_integer(number_integer_t value) override { return setNumber(value); }

    bool number_unsigned(number_unsigned_t value) override
    {
        return std::in_range<std::int64_t>(value) && setNumber(static_cast<std::int64_t>(value));
    }

    bool boolean(bool value) override { return setNumber(value ? 1 : 0); }

    bool string(string_t& value) override
    {
        if (m_field == eF_Count)
        {
            return true;
        }
        STextPlace& place = m_members.places[m_field];
        if (m_depth == 1)
        {
            m_members.given.set(m_field);
            m_members.texts[m_field].swap(value);
            m_members.numbers[m_field] = 0;
            place.size = 0;
        }
        else if (m_part == "file")
        {
            place.file.swap(value);
        }
        else if (m_part == "sum")
        {
            place.checksum.swap(value);
        }
        return true;
    }

    bool start_object(std::size_t /*elements*/) override
    {
        ++m_depth;
        if (m_depth == 2 && m_field < eF_Count)
        {
            m_members.given.set(m_field);
            m_members.texts[m_field].clear();
            m_members.places[m_field] = {};
        }
        return m_depth <= 2;
    }

    bool end_object() override
    {
        --m_depth;
        return true;
    }

    bool null() override { return false; }
    bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return false; }
    bool binary(binary_t& /*value*/) override { return false; }
    bool start_array(std::size_t /*elements*/) override { return false; }
    bool end_array() override { return false; }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::detail::exception& /*error*/) override
    {
        return false;
    }

private:
    bool setNumber(std::int64_t value)
    {
        if (m_field == eF_Count)
        {
            return true;
        }
        if (m_depth == 1)
        {
            m_members.given.set(m_field);
            m_members.numbers[m_field] = value;
            m_members.texts[m_field].clear();
            m_members.places[m_field].size = 0;
        }
        else if (value >= 0)
        {
            STextPlace& place = m_members.places[m_field];
            (m_part == "at" ? place.offset : place.size) = static_cast<std::uint64_t>(value);
        }
        return true;
    }

    SMembers m_members;
    std::size_t m_field = eF_Count;
    std::string m_part; ///< the current member of a text's place
    int m_depth = 0;
};

CRecordParser::CRecordParser() : m_handler(std::make_unique<CHandler>()) {}

CRecordParser::~CRecordParser() = default;

bool CRecordParser::Parse(std::string_view json, const LoadText& load, Record& record)
{
    const SMembers& members = m_handler->Begin();
    if (!nlohmann::json::sax_parse(json.data(), json.data() + json.size(), m_handler.get()) || !members.given[eF_Type])
    {
        return false;
    }
    const auto type = std::ranges::find(c_Types, members.texts[eF_Type], &SType::name);
    if (type == std::end(c_Types))
    {
        return false;
    }
    try
    {
        type->make(members, load, record);
        return true;
    }
    catch (const SUnreadable&)
    {
        return false;
    }
}

} // namespace Runner
