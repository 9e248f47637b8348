/// Reads any bytes as the request of a parent. Checks that the child ignores it, or stays within the buffer and answers
/// with a result and messages that the parent can read.
#include <algorithm>
#include <cstring>

#include "base/lbencoding.h"
#include "base/luunittest.h"
#include "fuzz/fuzzing.h"
#include "testing/lutestsuite/run/children/workbuffer.h"
#include "testing/lutestsuite/run/executor.h"

namespace
{

using LuTestSuiteRun::SWorkBuffer;

/// The size of the fields before the messages.
constexpr std::size_t c_HeadSize = offsetof(SWorkBuffer, messages);
/// Messages up to about this length are filled and read; the full length would take too long.
constexpr std::uint32_t c_FewMessages = 64;

class CFuzzed : public LuUnitTest
{
    LB_RTTI(CFuzzed)

public:
    void InitSubtests() override
    {
        AddSubtest(L"gut", [] {});
        AddSubtest(L"falsch", [this] { Error(L"falsch in %s", GetDataDirectory()); });
        AddSubtest(L"wirft", [] { throw std::exception(); });
        AddSubtest(L"lang", [this] { Info(L"%s", std::wstring(c_FewMessages, L'ä') + L"\U0001F600"); });
    }
};

LB_RTTI_CLASS(CFuzzed, LuUnitTest)

class CInput
{
public:
    explicit CInput(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {}

    std::size_t TakeNumber() { return m_bytes.empty() ? 0 : Take(1)[0]; }

    std::span<const std::uint8_t> Take(std::size_t count)
    {
        const auto taken = m_bytes.subspan(0, std::min(count, m_bytes.size()));
        m_bytes = m_bytes.subspan(taken.size());
        return taken;
    }

    void CopyTo(void* destination, std::size_t size)
    {
        const auto taken = Take(size);
        std::memcpy(destination, taken.data(), taken.size());
    }

private:
    std::span<const std::uint8_t> m_bytes;
};

/// Writes `good`, or bytes of the input. With 255 bytes of input, fills the rest of the field, so that it has no
/// terminator.
void fillName(char16_t (&field)[LuTestSuiteRun::c_NameCapacity], std::u16string_view good, CInput& input)
{
    const std::size_t length = input.TakeNumber();
    if (length == 0)
    {
        std::ranges::copy(good, field);
        return;
    }
    input.CopyTo(field, length);
    if (length == 255)
    {
        std::fill(std::begin(field) + length, std::end(field), u'x');
    }
}

std::u16string_view getCaseName(std::size_t number)
{
    constexpr std::u16string_view c_Names[] = {u"gut", u"falsch", u"wirft", u"lang", u"fehlt"};
    return c_Names[number % std::size(c_Names)];
}

void fill(SWorkBuffer& buffer, CInput& input)
{
    std::memset(static_cast<void*>(&buffer), 0, c_HeadSize);
    fillName(buffer.className, u"CFuzzed", input);
    fillName(buffer.caseName, getCaseName(input.TakeNumber()), input);
    fillName(buffer.dataDirectory, u"/", input);
    LuTestSuiteRun::SubmitRequest(buffer, 1);
    if (input.TakeNumber() % 2 != 0)
    {
        input.CopyTo(&buffer.request, sizeof(buffer.request));
        input.CopyTo(&buffer.result, sizeof(buffer.result));
        input.CopyTo(&buffer.messageLength, sizeof(buffer.messageLength));
    }
    input.CopyTo(&buffer.params, sizeof(buffer.params));
    const std::size_t place = std::min<std::size_t>(buffer.messageLength, LuTestSuiteRun::c_MessageMax);
    const std::size_t room = LuTestSuiteRun::c_MessageCapacity - place;
    input.CopyTo(buffer.messages + place, sizeof(char16_t) * std::min<std::size_t>(room, c_FewMessages));
}

void checkAnswer(SWorkBuffer& buffer, std::uint32_t field)
{
    Fuzzing::Check(buffer.result < LuTestSuiteRun::SStats::SCounts::sc_uiResults);
    Fuzzing::Check(static_cast<std::uint32_t>(LuTestSuiteRun::LoadResult(buffer)) == buffer.result);
    if (buffer.messageLength < 4 * c_FewMessages)
    {
        Fuzzing::Check(LuTestSuiteRun::LoadMessages(buffer).size() <= buffer.messageLength);
    }
    constexpr std::uint32_t c_StateBits = 2;
    Fuzzing::Check(field == 0 ? buffer.request == 0
                              : LuTestSuiteRun::IsAnswered(buffer, field >> c_StateBits) &&
                                    !LuTestSuiteRun::TakeRequest(buffer));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static LuTestSuiteRun::CHeapWorkBuffer s_memory;
    const LuTestSuiteRun::CWorkBufferWriteView buffer = s_memory.GetWriteAccess();
    CInput input({data, size});
    fill(*buffer, input);
    const std::uint32_t field = buffer->request;
    if (!LuTestSuiteRun::TakeRequest(*buffer))
    {
        Fuzzing::Check(buffer->request == field);
        return 0;
    }
    if (LuTestSuiteRun::IsLeaveRequest(*buffer))
    {
        return 0;
    }
    LuTestSuiteRun::ExecuteInBuffer(*buffer);
    LuTestSuiteRun::AnswerRequest(*buffer);
    checkAnswer(*buffer, field);
    return 0;
}
