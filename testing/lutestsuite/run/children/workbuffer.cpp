#include "testing/lutestsuite/run/children/workbuffer.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include "base/lbencoding.h"

namespace LuTestSuiteRun
{

namespace
{

bool isFirstOfPair(char16_t unit)
{
    return unit >= 0xD800 && unit <= 0xDBFF;
}

/// Reads a number that another process may change at any time. Reads it only once, so that the caller uses the same
/// value that it has checked.
std::uint32_t readOnce(const std::uint32_t& number)
{
    return *static_cast<const volatile std::uint32_t*>(&number);
}

std::size_t getMessageLength(const SWorkBuffer& buffer)
{
    return std::min<std::size_t>(readOnce(buffer.messageLength), c_MessageMax);
}

constexpr std::size_t c_LeadingFlags = offsetof(SParams, parallel) + 1;

/// The state of a request. Stored in the lowest two bits of SWorkBuffer::request; the other bits contain the number.
enum ERequestState : std::uint32_t
{
    eRS_None,
    eRS_Submitted,
    eRS_Taken,
    eRS_Answered
};

constexpr std::uint32_t c_StateBits = 2;

/// The offset of four reserved bytes that contain the index of the likely sub-test plus one, or 0 if there is none.
constexpr std::size_t c_LikelySubtest = offsetof(SWorkBuffer, params) + offsetof(SParams, testCaseMax) + 4;
static_assert(c_LikelySubtest == 6172);
static_assert(c_LikelySubtest + 4 == offsetof(SWorkBuffer, params) + offsetof(SParams, breakAllocId));

/// The value of SWorkBuffer::result in a request to exit. In a request for a case, the value is Unknown.
constexpr std::uint32_t c_Leave = 0xFFFFFFFF;

/// The value of SWorkBuffer::request if the parent does not number requests.
constexpr std::uint32_t c_Unnumbered = 0;

using Request = std::atomic_ref<std::uint32_t>;
static_assert(Request::is_always_lock_free, "a lock would be a process's own");

constexpr std::uint32_t toField(std::uint32_t number, ERequestState state)
{
    return (number << c_StateBits) | state;
}

/// Moves the request from state `from` to `to`; false if it is not in state `from`.
bool moveRequest(SWorkBuffer& buffer, std::uint32_t number, ERequestState from, ERequestState to)
{
    std::uint32_t expected = toField(number, from);
    return Request(buffer.request).compare_exchange_strong(expected, toField(number, to));
}

} // namespace

IWorkBuffer::~IWorkBuffer() = default;

// Does not initialise the two megabytes, because a case uses only a few hundred bytes of them.
CHeapWorkBuffer::CHeapWorkBuffer() : m_buffer(std::make_unique_for_overwrite<SWorkBuffer>()) {}

CWorkBufferWriteView CHeapWorkBuffer::GetWriteAccess()
{
    return {*m_buffer, nullptr};
}

CWorkBufferReadView CHeapWorkBuffer::GetReadAccess()
{
    return {*m_buffer, nullptr};
}

bool StoreName(char16_t (&field)[c_NameCapacity], const std::wstring& name)
{
    const std::u16string units = LbEncoding::ToUtf16(name);
    if (units.size() >= c_NameCapacity)
    {
        return false;
    }
    *std::ranges::copy(units, field).out = u'\0';
    return true;
}

std::wstring LoadName(const char16_t (&field)[c_NameCapacity])
{
    const char16_t* const end = std::find(std::begin(field), std::end(field), u'\0');
    return LbEncoding::FromUtf16({field, static_cast<std::size_t>(end - field)});
}

bool AppendMessages(SWorkBuffer& buffer, std::wstring_view text)
{
    const std::size_t length = getMessageLength(buffer);
    const std::size_t capacity = c_MessageMax - length;
    // Each character becomes at least one unit, so characters beyond `capacity` cannot fit and need no conversion.
    const std::u16string units = LbEncoding::ToUtf16(text.substr(0, capacity));
    const bool isCut = text.size() > capacity || units.size() > capacity;
    std::size_t count = std::min(units.size(), capacity);
    if (isCut && count > 0 && isFirstOfPair(units[count - 1]))
    {
        --count;
    }
    std::copy_n(units.begin(), count, buffer.messages + length);
    buffer.messages[length + count] = u'\0';
    buffer.messageLength = static_cast<std::uint32_t>(length + count);
    return !isCut;
}

std::wstring LoadMessages(const SWorkBuffer& buffer)
{
    return LbEncoding::FromUtf16({buffer.messages, getMessageLength(buffer)});
}

void ClearRequest(SWorkBuffer& buffer)
{
    // The number is arbitrary, but not 0: 0 in this state means that the parent does not number requests.
    Request(buffer.request).store(toField(c_MostRequests, eRS_None));
}

void CopyRequest(const SWorkBuffer& from, SWorkBuffer& to)
{
    std::memcpy(static_cast<void*>(&to), &from, offsetof(SWorkBuffer, messageLength));
    to.messageLength = 0;
    to.messages[0] = u'\0';
}

void StoreLikelySubtest(SWorkBuffer& buffer, std::optional<std::uint32_t> subtest)
{
    const std::uint32_t number = subtest ? *subtest + 1 : 0;
    std::memcpy(reinterpret_cast<std::byte*>(&buffer) + c_LikelySubtest, &number, sizeof(number));
}

std::optional<std::uint32_t> LoadLikelySubtest(const SWorkBuffer& buffer)
{
    std::uint32_t number = 0;
    std::memcpy(&number, reinterpret_cast<const std::byte*>(&buffer) + c_LikelySubtest, sizeof(number));
    return number == 0 ? std::nullopt : std::optional(number - 1);
}

void SubmitRequest(SWorkBuffer& buffer, std::uint32_t number)
{
    Request(buffer.request).store(toField(number, eRS_Submitted));
}

bool TakeRequest(SWorkBuffer& buffer)
{
    const std::uint32_t field = Request(buffer.request).load();
    return field == c_Unnumbered || moveRequest(buffer, field >> c_StateBits, eRS_Submitted, eRS_Taken);
}

bool HasRequest(SWorkBuffer& buffer)
{
    constexpr std::uint32_t c_States = (1U << c_StateBits) - 1U;
    return (Request(buffer.request).load() & c_States) == eRS_Submitted;
}

void AnswerRequest(SWorkBuffer& buffer)
{
    moveRequest(buffer, Request(buffer.request).load() >> c_StateBits, eRS_Taken, eRS_Answered);
}

bool WithdrawRequest(SWorkBuffer& buffer, std::uint32_t number)
{
    return moveRequest(buffer, number, eRS_Submitted, eRS_None);
}

bool IsSubmitted(SWorkBuffer& buffer, std::uint32_t number)
{
    return Request(buffer.request).load() == toField(number, eRS_Submitted);
}

bool IsAnswered(SWorkBuffer& buffer, std::uint32_t number)
{
    return Request(buffer.request).load() == toField(number, eRS_Answered);
}

void WriteLeaveRequest(SWorkBuffer& buffer)
{
    buffer.className[0] = buffer.caseName[0] = u'\0';
    buffer.result = c_Leave;
}

bool IsLeaveRequest(const SWorkBuffer& buffer)
{
    return buffer.result == c_Leave && buffer.className[0] == u'\0';
}

SParams LoadParams(const SWorkBuffer& buffer)
{
    // Copies bytes, because reading a bool that is neither 0 nor 1 is undefined behaviour.
    unsigned char bytes[sizeof(SParams)];
    std::memcpy(bytes, &buffer.params, sizeof(bytes));
    const auto normalize = [](unsigned char flag) { return static_cast<unsigned char>(flag == 0 ? 0 : 1); };
    std::transform(bytes, bytes + c_LeadingFlags, bytes, normalize);
    unsigned char& showsTime = bytes[offsetof(SParams, repetitionsGiven)];
    showsTime = normalize(showsTime);
    SParams params;
    std::memcpy(&params, bytes, sizeof(bytes));
    return params;
}

ECaseRunResult LoadResult(const SWorkBuffer& buffer)
{
    const std::uint32_t result = readOnce(buffer.result);
    return result < SStats::SCounts::sc_uiResults ? static_cast<ECaseRunResult>(result) : ECaseRunResult::Unknown;
}

} // namespace LuTestSuiteRun
