/// The work buffer: one case's request and answer.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/inoncopyable.h"
#include "testing/lutestsuite/lutestsuiterun.h"

namespace LuTestSuiteRun
{

inline constexpr std::size_t c_NameCapacity = 1024;       ///< units of UTF-16 of a name field, with the terminator
inline constexpr std::size_t c_MessageCapacity = 1048578; ///< units of UTF-16 of the message field
inline constexpr std::size_t c_MessageMax = 1048575;      ///< maximum number of units that are stored in that field

/// A binary format that processes exchange: little-endian, text in UTF-16, the same on all platforms.
struct SWorkBuffer
{
    char16_t className[c_NameCapacity];
    char16_t caseName[c_NameCapacity];
    char16_t dataDirectory[c_NameCapacity];
    SParams params;
    std::uint32_t result;  ///< an ECaseRunResult
    std::uint32_t request; ///< number and state of the request; see SubmitRequest
    std::uint64_t memoryGrowth;
    std::uint64_t allocations;
    std::uint64_t peakMemory;
    std::uint64_t time;
    std::uint32_t messageLength; ///< units of UTF-16, without the terminator
    char16_t messages[c_MessageCapacity];
};

static_assert(std::endian::native == std::endian::little);
static_assert(sizeof(bool) == 1);
static_assert(offsetof(SParams, trackHeap) == 0);
static_assert(offsetof(SParams, dumpHeap) == 1);
static_assert(offsetof(SParams, reportMemLeak) == 2);
static_assert(offsetof(SParams, external) == 3);
static_assert(offsetof(SParams, isolated) == 4);
static_assert(offsetof(SParams, assertDialog) == 5);
static_assert(offsetof(SParams, verbose) == 6);
static_assert(offsetof(SParams, deVerboseOutput) == 7);
static_assert(offsetof(SParams, deDebuggingSerialization) == 8);
static_assert(offsetof(SParams, dePredefinedBreakPoints) == 9);
static_assert(offsetof(SParams, parallel) == 10);
static_assert(offsetof(SParams, workerThreads) == 12);
static_assert(offsetof(SParams, repetitions) == 16);
static_assert(offsetof(SParams, timeOutSec) == 20);
static_assert(offsetof(SParams, testCaseMax) == 24);
static_assert(offsetof(SParams, breakAllocId) == 32);
static_assert(offsetof(SParams, breakAllocSize) == 40);
static_assert(offsetof(SParams, repetitionsGiven) == 48);
static_assert(sizeof(SParams) == 56);
static_assert(offsetof(SWorkBuffer, className) == 0);
static_assert(offsetof(SWorkBuffer, caseName) == 2048);
static_assert(offsetof(SWorkBuffer, dataDirectory) == 4096);
static_assert(offsetof(SWorkBuffer, params) == 6144);
static_assert(offsetof(SWorkBuffer, result) == 6200);
static_assert(offsetof(SWorkBuffer, request) == 6204);
static_assert(offsetof(SWorkBuffer, memoryGrowth) == 6208);
static_assert(offsetof(SWorkBuffer, allocations) == 6216);
static_assert(offsetof(SWorkBuffer, peakMemory) == 6224);
static_assert(offsetof(SWorkBuffer, time) == 6232);
static_assert(offsetof(SWorkBuffer, messageLength) == 6240);
static_assert(offsetof(SWorkBuffer, messages) == 6244);
static_assert(sizeof(SWorkBuffer) == 2103400);

/// Gives access to a buffer while the view exists.
template<typename Buffer>
class CWorkBufferView : public INonCopyable
{
public:
    /// The view keeps `release`, which keeps the buffer alive and may be null.
    CWorkBufferView(Buffer& buffer, std::shared_ptr<void> release) : m_buffer(buffer), m_release(std::move(release)) {}

    Buffer& operator*() const { return m_buffer; }
    Buffer* operator->() const { return &m_buffer; }

private:
    Buffer& m_buffer;
    std::shared_ptr<void> m_release;
};

using CWorkBufferWriteView = CWorkBufferView<SWorkBuffer>;
using CWorkBufferReadView = CWorkBufferView<const SWorkBuffer>;

/// Owns a work buffer and gives access to it. Used by one thread at a time.
class IWorkBuffer
{
public:
    virtual CWorkBufferWriteView GetWriteAccess() = 0;
    virtual CWorkBufferReadView GetReadAccess() = 0;
    virtual ~IWorkBuffer();
};

/// A buffer in local memory, for cases that run in this process; one per executing thread.
class CHeapWorkBuffer : public IWorkBuffer, public INonCopyable
{
public:
    CHeapWorkBuffer();
    CWorkBufferWriteView GetWriteAccess() override;
    CWorkBufferReadView GetReadAccess() override;

private:
    std::unique_ptr<SWorkBuffer> m_buffer;
};

/// Stores a name. If it is longer than the field, stores nothing and returns false.
bool StoreName(char16_t (&field)[c_NameCapacity], const std::wstring& name);
std::wstring LoadName(const char16_t (&field)[c_NameCapacity]);

/// Appends message text. If the text does not fit, stores only whole characters that fit and returns false.
bool AppendMessages(SWorkBuffer& buffer, std::wstring_view text);
std::wstring LoadMessages(const SWorkBuffer& buffer);

/// Submits the request in the buffer to the child; `number` is 1 to c_MostRequests. The parent calls it after writing
/// all other fields of the request.
///
/// This and the next operations read or change the state of a request atomically. An event alone does not prove a
/// change, because a test may have signaled it; so each process reads the state after an event.
void SubmitRequest(SWorkBuffer& buffer, std::uint32_t number);

/// Called by the child: takes a submitted request; false if there is none. If the parent does not number its requests,
/// the number is always 0, and each signal counts as a request.
bool TakeRequest(SWorkBuffer& buffer);

/// True if a numbered request has been submitted and not yet taken.
bool HasRequest(SWorkBuffer& buffer);

/// Called by the child: marks the taken request as answered. The answer must be complete.
void AnswerRequest(SWorkBuffer& buffer);

/// Withdraws a request that no child has taken; no child can take it afterwards. False if it was taken.
bool WithdrawRequest(SWorkBuffer& buffer, std::uint32_t number);

bool IsSubmitted(SWorkBuffer& buffer, std::uint32_t number);
bool IsAnswered(SWorkBuffer& buffer, std::uint32_t number);

/// Initialises the state of a new buffer: no request has been submitted.
void ClearRequest(SWorkBuffer& buffer);

/// Copies everything before the messages. `to` has no messages afterwards.
void CopyRequest(const SWorkBuffer& from, SWorkBuffer& to);

/// Stores or loads the index of the sub-test in its object, as discovery found it. The index is only a hint: it is in
/// reserved bytes, and a parent of another build possibly stores none.
void StoreLikelySubtest(SWorkBuffer& buffer, std::optional<std::uint32_t> subtest);
std::optional<std::uint32_t> LoadLikelySubtest(const SWorkBuffer& buffer);

inline constexpr std::uint32_t c_MostRequests = (1U << 30U) - 1U;

/// Changes the request into one that asks the child to exit. The child does not answer it; a child that does not know
/// this kind of request answers NoMatchingCase.
void WriteLeaveRequest(SWorkBuffer& buffer);
bool IsLeaveRequest(const SWorkBuffer& buffer);

/// LoadParams and LoadResult correct invalid values, because the other process may be broken: any non-zero flag becomes
/// true, and an invalid result becomes Unknown.
SParams LoadParams(const SWorkBuffer& buffer);
ECaseRunResult LoadResult(const SWorkBuffer& buffer);

} // namespace LuTestSuiteRun
