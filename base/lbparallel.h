/// Parallel loops on the process-wide thread pool, and values per thread.
///
/// The calling thread takes part in the work, so loops may be nested and may run on pool threads. The first exception
/// that leaves a body ends the loop early and is rethrown to the caller. Callable from any thread.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <utility>

#include "base/inoncopyable.h"
#include "base/lbexport.h"

namespace LbParallel
{

/// Splits [first, last) into ranges and calls `body(rangeFirst, rangeLast)` for each, on several threads, in
/// unspecified order.
LB_API void ForRanges(std::int64_t first, std::int64_t last,
                      const std::function<void(std::int64_t rangeFirst, std::int64_t rangeLast)>& body);

/// Calls `body(index)` for each index in [first, last).
template<typename F>
void For(std::int64_t first, std::int64_t last, const F& body)
{
    ForRanges(first, last, [&body](std::int64_t rangeFirst, std::int64_t rangeLast) {
        for (std::int64_t index = rangeFirst; index < rangeLast; ++index)
        {
            body(index);
        }
    });
}

/// Calls each of the functions once, on several threads, and waits for all.
LB_API void Invoke(std::initializer_list<std::function<void()>> functions);

/// Sum of first..last (inclusive) in a parallel loop of the OpenMP run-time, or of For if the compiler has no OpenMP.
LB_API std::int64_t SumRange(std::int64_t first, std::int64_t last);

} // namespace LbParallel

/// A value per thread, combined at the end.
///
/// Local() may be called by many threads at once and is cheap enough for the body of a loop. Call the other operations
/// only after those threads have finished.
template<typename T>
class LbCombinable : public INonCopyable
{
public:
    /// Each thread's value starts as a copy of `initial`.
    explicit LbCombinable(T initial = T()) : m_initial(std::move(initial)) {}
    ~LbCombinable();

    /// The calling thread's value, created on first use. A thread may inherit the value of a thread that has ended.
    T& Local();

    /// All threads' values folded by `combine(const T&, const T&) -> T` in unspecified order; the initial value if no
    /// thread has a value.
    template<typename F>
    T Combine(const F& combine) const;

private:
    /// Has its own cache lines, so that threads do not slow each other down.
    struct alignas(64) SValue
    {
        std::uintptr_t threadKey;
        SValue* next;
        T value;
    };

    static constexpr std::size_t sc_uiBucketBits = 6;

    std::atomic<SValue*>& getBucket(std::uintptr_t threadKey)
    {
        // Keys are addresses with equal low bits; the multiplication moves the differing bits to the top.
        return m_buckets[(threadKey * 0x9E3779B97F4A7C15U) >> (64U - sc_uiBucketBits)];
    }
    T& add(std::uintptr_t threadKey);

    T m_initial;
    std::array<std::atomic<SValue*>, std::size_t{1} << sc_uiBucketBits> m_buckets{};
};

template<typename T>
LbCombinable<T>::~LbCombinable()
{
    for (std::atomic<SValue*>& bucket : m_buckets)
    {
        for (SValue* value = bucket.load(); value != nullptr;)
        {
            delete std::exchange(value, value->next);
        }
    }
}

template<typename T>
T& LbCombinable<T>::Local()
{
    const std::uintptr_t threadKey = LbOs::GetThreadKey();
    for (SValue* value = getBucket(threadKey).load(std::memory_order_acquire); value != nullptr; value = value->next)
    {
        if (value->threadKey == threadKey)
        {
            return value->value;
        }
    }
    return add(threadKey);
}

template<typename T>
T& LbCombinable<T>::add(std::uintptr_t threadKey)
{
    std::atomic<SValue*>& bucket = getBucket(threadKey);
    auto* const added = new SValue{threadKey, bucket.load(), m_initial};
    while (!bucket.compare_exchange_weak(added->next, added))
    {
    }
    return added->value;
}

template<typename T>
template<typename F>
T LbCombinable<T>::Combine(const F& combine) const
{
    std::optional<T> result;
    for (const std::atomic<SValue*>& bucket : m_buckets)
    {
        for (const SValue* value = bucket.load(); value != nullptr; value = value->next)
        {
            result = result ? combine(std::as_const(*result), value->value) : value->value;
        }
    }
    return result ? *std::move(result) : m_initial;
}
