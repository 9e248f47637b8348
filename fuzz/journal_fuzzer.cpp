/// Reads any bytes as JSON of one record, and as the lines of a journal, with a record in each line. Checks that the
/// reader refuses them, or that each record is the same after it was written and read again.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "base/lbexception.h"
#include "testing/lutestsuiterunner/journal/line.h"
#include "testing/lutestsuiterunner/journal/linereader.h"
#include "testing/lutestsuiterunner/journal/recordparser.h"
#include "testing/lutestsuiterunner/model/runstate.h"

namespace
{

/// Throws, because the fuzzer does not store large texts.
std::string refuseText(const Runner::STextPlace& /*place*/)
{
    throw LbException(L"kein Text");
}

Runner::STextPlace storeText(const std::string& text)
{
    return {"output/1.txt", 0, text.size(), {}};
}

std::string encode(const Runner::Record& record)
{
    std::string json;
    Runner::EncodeRecord(record, 1, storeText, json);
    return json;
}

/// Reads a record; the record must be the same after it was written and read again.
void checkRecord(std::string_view json, Runner::CRecordParser& parser, Runner::CRunState& state, std::uint64_t sequence)
{
    Runner::Record record;
    try
    {
        if (!parser.Parse(json, refuseText, record))
        {
            return;
        }
        const std::string text = encode(record);
        Runner::Record again;
        const bool isLarge = text.find("\"file\":") != std::string::npos;
        if (!isLarge && (!parser.Parse(text, refuseText, again) || encode(again) != text))
        {
            std::abort();
        }
        state.Apply({1, sequence}, record);
    }
    catch (const LbException&)
    {
        // The reader has refused the record with a message.
    }
}

Runner::SPlan makePlan()
{
    Runner::SPlan plan;
    constexpr std::uint32_t c_Cases = 4;
    plan.cases.resize(c_Cases);
    plan.unitTests.resize(1);
    plan.unitTests[0].cases.resize(c_Cases);
    for (std::uint32_t index = 0; index < c_Cases; ++index)
    {
        plan.cases[index].testCase = index;
    }
    return plan;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    Runner::CRecordParser parser;
    Runner::CRunState state(makePlan());
    checkRecord(bytes, parser, state, 1);

    Runner::CLineReader lines(
        [&bytes](char* buffer, std::size_t space) {
            const std::size_t count = std::min(space, bytes.size());
            std::copy_n(bytes.data(), count, buffer);
            bytes.remove_prefix(count);
            return count;
        },
        Runner::c_LargestRecord);
    try
    {
        std::uint64_t position = 0;
        for (std::string_view record; lines.Next(record);)
        {
            if (lines.GetOffset() < position)
            {
                std::abort();
            }
            position = lines.GetOffset() + record.size();
            checkRecord(record, parser, state, lines.GetSequence() + 1);
        }
        if (lines.GetTailSize() > size)
        {
            std::abort();
        }
    }
    catch (const Runner::SDamage& damage)
    {
        if (damage.offset > size)
        {
            std::abort();
        }
    }
    return 0;
}
