#include "testing/lutestsuiterunner/journal/recordtext.h"

#include "testing/lutestsuiterunner/journal/jsontext.h"
#include "testing/lutestsuiterunner/model/names.h"
#include "testing/lutestsuiterunner/model/textescape.h"

namespace Runner
{

namespace
{

/// Five texts of this size and all other members fit into a record.
constexpr std::size_t c_LargestText = 12000;

class CEncoder
{
public:
    CEncoder(std::uint64_t elapsed, const StoreText& store, std::string& json)
        : m_elapsed(elapsed), m_store(store), m_json(json)
    {
    }

    void operator()(const SJournalBegun& record) const
    {
        CJsonObject object(m_json);
        object.Add("t", "begin");
        object.Add("plan", record.planDigest);
        object.Add("cases", record.caseCount);
        object.Add("journal", record.journal);
        addText(object, "version", record.hostVersion);
        object.Add("process", record.processId);
        addText(object, "machine", record.machine);
        addText(object, "time", record.time);
    }

    void operator()(const SCaseStarted& record) const
    {
        CJsonObject object(m_json);
        object.Add("t", "start");
        object.Add("case", record.caseIndex);
        object.Add("attempt", record.attempt);
        object.AddUnless(GetName(EAttemptKind::First), "kind", GetName(record.kind));
        object.AddUnless(std::int32_t{-1}, "worker", record.worker);
        object.Add("process", record.processId);
        addTime(object, record.elapsed);
    }

    void operator()(const SCaseEnded& record) const
    {
        CJsonObject object(m_json);
        object.Add("t", "end");
        object.Add("case", record.caseIndex);
        object.Add("attempt", record.attempt);
        object.AddUnless(GetName(EAttemptEnd::Returned), "end", GetName(record.end));
        addInfo(object, record.info);
        object.Add("process", record.processId);
        if (record.exitStatus)
        {
            object.Add("status", *record.exitStatus);
        }
        addText(object, "reason", record.reason);
        addText(object, "messages", record.info.messages);
        addText(object, "output", record.output);
        addText(object, "stacks", record.stacks);
        addText(object, "core", record.core);
        addTime(object, record.elapsed);
    }

    void operator()(const SRunCanceled& record) const
    {
        CJsonObject object(m_json);
        object.Add("t", "cancel");
        addText(object, "reason", record.reason);
        addTime(object, record.elapsed);
    }

    void operator()(const SRunProblem& record) const
    {
        CJsonObject object(m_json);
        object.Add("t", "problem");
        addText(object, "reason", record.text);
    }

    void operator()(const SRunFinished& record) const
    {
        CJsonObject object(m_json);
        object.Add("t", "finish");
        addText(object, "time", record.time);
        addTime(object, record.elapsed);
    }

private:
    static void addInfo(CJsonObject& object, const LuTestSuiteRun::SCaseInfo& info)
    {
        constexpr std::uint64_t c_None = 0;
        object.Add("result", GetName(info.result));
        object.Add("ns", info.time);
        object.AddUnless(std::int64_t{0}, "growth", static_cast<std::int64_t>(info.memoryGrowth));
        object.AddUnless(c_None, "allocations", info.allocations);
        object.AddUnless(c_None, "peak", info.peakMemory);
        object.AddUnless(false, "warning", info.warning);
        object.AddUnless(std::int32_t{-1}, "worker", info.threadIndex);
        object.AddUnless(std::int32_t{-1}, "child", info.processIndex);
    }

    void addText(CJsonObject& object, std::string_view name, const std::wstring& text) const
    {
        if (text.empty())
        {
            return;
        }
        const std::string utf8 = ToEscapedUtf8(text);
        std::string& json = object.Add(name);
        const std::size_t start = json.size();
        AppendJsonString(std::string_view(utf8), json);
        if (json.size() - start > c_LargestText)
        {
            json.resize(start);
            addReference(m_store(utf8), json);
        }
    }

    static void addReference(const STextPlace& place, std::string& json)
    {
        CJsonObject reference(json);
        reference.Add("file", place.file);
        reference.Add("at", place.offset);
        reference.Add("size", place.size);
        reference.Add("sum", place.checksum);
    }

    void addTime(CJsonObject& object, std::uint64_t elapsed) const
    {
        object.Add("at", elapsed == 0 ? m_elapsed : elapsed);
    }

    std::uint64_t m_elapsed;
    const StoreText& m_store;
    std::string& m_json;
};

} // namespace

void EncodeRecord(const Record& record, std::uint64_t elapsed, const StoreText& store, std::string& json)
{
    std::visit(CEncoder(elapsed, store, json), record);
}

} // namespace Runner
