#include "base/lbparallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <vector>

#ifdef _OPENMP
#include <omp.h>
#endif

#include "base/lbthreadpool.h"
#include "base/os/processes.h"

namespace
{

using RangeFunction = std::function<void(std::int64_t, std::int64_t)>;

/// A running loop; lives on the caller's stack.
class CLoop
{
public:
    CLoop(std::int64_t first, std::int64_t last, const RangeFunction& body, unsigned threadCount)
        : m_body(body), m_first(first), m_count(static_cast<std::uint64_t>(last) - static_cast<std::uint64_t>(first)),
          // Several ranges per thread, so that a delayed thread does not delay the loop for long.
          m_rangeSize(std::max<std::uint64_t>(1U, m_count / (std::uint64_t{threadCount} * sc_uiRangesPerThread))),
          m_rangeCount((m_count - 1U) / m_rangeSize + 1U)
    {
    }

    std::uint64_t GetRangeCount() const noexcept { return m_rangeCount; }

    /// Runs ranges until no range is left. Never throws.
    void Work() noexcept;

    void RethrowFailure() const
    {
        if (m_failure)
        {
            std::rethrow_exception(m_failure);
        }
    }

private:
    static constexpr unsigned sc_uiRangesPerThread = 8;

    void runRange(std::uint64_t range) const;
    void endEarly(std::exception_ptr failure) noexcept;

    const RangeFunction& m_body;
    const std::int64_t m_first;
    const std::uint64_t m_count;
    const std::uint64_t m_rangeSize;
    const std::uint64_t m_rangeCount;
    std::atomic<std::uint64_t> m_nextRange = 0;
    std::mutex m_failureMutex;
    std::exception_ptr m_failure;
};

void CLoop::Work() noexcept
{
    for (std::uint64_t range = m_nextRange++; range < m_rangeCount; range = m_nextRange++)
    {
        try
        {
            runRange(range);
        }
        catch (...)
        {
            endEarly(std::current_exception());
        }
    }
}

void CLoop::runRange(std::uint64_t range) const
{
    // Unsigned, because the length of a loop may exceed the largest signed number.
    const std::uint64_t offset = range * m_rangeSize;
    const std::uint64_t size = std::min(m_rangeSize, m_count - offset);
    const std::uint64_t begin = static_cast<std::uint64_t>(m_first) + offset;
    m_body(static_cast<std::int64_t>(begin), static_cast<std::int64_t>(begin + size));
}

void CLoop::endEarly(std::exception_ptr failure) noexcept
{
    m_nextRange = m_rangeCount;
    const std::lock_guard lock(m_failureMutex);
    if (!m_failure)
    {
        m_failure = std::move(failure);
    }
}

/// The pool tasks of a loop. The destructor cancels them or waits for them; it must run before the loop is destroyed.
class CHelpers : public INonCopyable
{
public:
    CHelpers() = default;
    ~CHelpers();

    void Start(CLoop& loop, std::uint64_t count);

private:
    std::vector<LbThreadPool::CTask> m_tasks;
};

CHelpers::~CHelpers()
{
    for (const LbThreadPool::CTask& task : m_tasks)
    {
        // A task that has not started is no longer needed, and on a busy pool it might never start.
        if (!task.Cancel())
        {
            task.Wait();
        }
    }
}

void CHelpers::Start(CLoop& loop, std::uint64_t count)
{
    m_tasks.reserve(count);
    try
    {
        while (m_tasks.size() < count)
        {
            m_tasks.push_back(LbThreadPool::GetInstance().Run([&loop] { loop.Work(); }));
        }
    }
    catch (const std::system_error&)
    {
        // The system cannot start a pool thread, so the calling thread does all the work.
    }
}

#ifdef _OPENMP
/// Number of threads, at least 1, that the OpenMP run-time can use for a loop, including the calling thread.
int getTeamSize()
{
    // One thread more than processors, because otherwise idle threads of the run-time spin for milliseconds and block
    // processors. At most 8, because each calling thread gets its own team.
    const auto wanted = static_cast<unsigned>(std::min(omp_get_num_procs() + 1, 8));
    return LbOs::HasFewProcesses() ? 1 : static_cast<int>(1U + LbOs::CountStartableThreads(wanted - 1U));
}
#endif

} // namespace

void LbParallel::ForRanges(std::int64_t first, std::int64_t last, const RangeFunction& body)
{
    if (first >= last)
    {
        return;
    }
    const unsigned threadCount = LbThreadPool::GetInstance().GetThreadCount();
    CLoop loop(first, last, body, threadCount);

    {
        CHelpers helpers;
        helpers.Start(loop, std::min<std::uint64_t>(threadCount, loop.GetRangeCount()) - 1U);
        loop.Work();
    }
    loop.RethrowFailure();
}

void LbParallel::Invoke(std::initializer_list<std::function<void()>> functions)
{
    const std::function<void()>* const begin = functions.begin();
    For(0, static_cast<std::int64_t>(functions.size()), [begin](std::int64_t index) { begin[index](); });
}

std::int64_t LbParallel::SumRange(std::int64_t first, std::int64_t last)
{
#ifdef _OPENMP
    // One caller at a time: OpenMP ends the process if a thread cannot start, so no other caller may use up threads
    // between getTeamSize and the loop.
    static std::mutex s_mutex;
    const std::lock_guard lock(s_mutex);
    const int threadCount = getTeamSize();
    std::int64_t sum = 0;
#pragma omp parallel for reduction(+ : sum) num_threads(threadCount)
    for (std::int64_t index = first; index <= last; ++index)
    {
        sum += index;
    }
    return sum;
#else
    LbCombinable<std::int64_t> sums;
    For(first, last + 1, [&sums](std::int64_t index) { sums.Local() += index; });
    return sums.Combine([](std::int64_t left, std::int64_t right) { return left + right; });
#endif
}
