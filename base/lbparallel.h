/// Parallel loops on the process-wide thread pool, and values per thread.
///
/// The calling thread takes part in the work, so loops may be nested and may run on pool threads. The first exception
/// that leaves a body ends the loop early and is rethrown to the caller. Callable from any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <mutex>
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

/// The sum of all integers from `first` to `last` (inclusive), computed by a parallel OpenMP loop, or by For if the
/// compiler has no OpenMP.
LB_API std::int64_t SumRange(std::int64_t first, std::int64_t last);

} // namespace LbParallel

/// A value per thread, combined at the end.
///
/// Local() may be called by many threads at once. Each call takes a lock, so call Local once per range instead of once
/// per iteration if iterations are short. Call Combine only after those threads have finished.
template<typename T>
class LbCombinable : public INonCopyable
{
public:
    /// Each thread's value starts as a copy of `initial`.
    explicit LbCombinable(T initial = T()) : m_initial(std::move(initial)) {}

    /// The calling thread's value, created on first use. A thread may inherit the value of a thread that has ended. The
    /// reference stays valid as long as the object exists.
    T& Local();

    /// All threads' values folded by `combine(const T&, const T&) -> T` in unspecified order; the initial value if no
    /// thread has a value.
    template<typename F>
    T Combine(const F& combine) const;

private:
    T m_initial;
    std::mutex m_mutex;                   ///< guards the map, not the values in it
    std::map<std::uintptr_t, T> m_values; ///< by thread key
};

template<typename T>
T& LbCombinable<T>::Local()
{
    const std::lock_guard lock(m_mutex);
    return m_values.try_emplace(LbOs::GetThreadKey(), m_initial).first->second;
}

template<typename T>
template<typename F>
T LbCombinable<T>::Combine(const F& combine) const
{
    std::optional<T> result;
    for (const auto& [threadKey, value] : m_values)
    {
        result = result ? combine(std::as_const(*result), value) : value;
    }
    return result ? *std::move(result) : m_initial;
}
