#include "testing/lutestsuite/run/workerthreads.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>

#include "base/lbcriticalsection.h"
#include "base/lbexception.h"
#include "base/ludebugserialization.h"
#include "base/os/process.h"
#include "base/os/processes.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/run/caserunner.h"
#include "testing/lutestsuite/run/consolelines.h"
#include "testing/lutestsuite/run/debugfolders.h"

namespace LuTestSuiteRun
{

namespace
{

/// The data that the workers and the calling thread share.
class CWork : public INonCopyable
{
public:
    CWork(PlannedCases planned, CRunEvents& events) : m_planned(planned), m_events(events) {}

    /// Returns the next case; null if no case is left at present, or if the run is canceled or has failed.
    const SPlannedCase* Take();

    /// Gives the case back, so that another worker takes it, and retires this worker: it takes no more cases. If there
    /// is no other worker, only returns false; after Stop, only returns true.
    bool LeaveToOthers(const SPlannedCase& planned);

    /// Retires a worker to which Take has returned null. If other workers have given cases back meanwhile, only returns
    /// false.
    bool Leave();

    /// Unregisters a worker whose thread failed to start. False if cases remain and no worker is left.
    bool Abandon();

    /// The cases that Take has not returned yet; empty after Stop.
    PlannedCases GetToCome();

    /// Take returns null from now on.
    void Stop();

    void AddWorker();
    void RemoveWorker(std::exception_ptr failure);

    struct SProgress
    {
        bool hasEnded = false;  ///< no worker is left
        bool hasFailed = false; ///< a worker has ended by an exception
    };

    SProgress GetProgress();

    /// Number of all cases except those that were left out so far.
    std::size_t GetCount();

    const CDebugFolders& GetDebugFolders() const noexcept { return m_debugFolders; }
    void RethrowFailure() const;

private:
    void leaveOut();
    bool hasCase() const { return !m_leftOver.empty() || m_next < m_planned.size(); }

    const PlannedCases m_planned;
    CRunEvents& m_events;
    const CDebugFolders m_debugFolders;

    LbCriticalSection m_workLock; ///< protects the members up to m_isStopped
    std::size_t m_next = 0;
    std::size_t m_leftOut = 0;                   ///< number of cases that were left out
    std::vector<const SPlannedCase*> m_leftOver; ///< given back by workers that could not run them
    std::size_t m_takers = 0;                    ///< number of workers that may still take cases
    bool m_isStopped = false;                    ///< true if Take returns no more cases

    LbCriticalSection m_workersLock; ///< protects the members below
    std::size_t m_workers = 0;
    std::exception_ptr m_failure;
};

const SPlannedCase* CWork::Take()
{
    const LbCriticalSectionLock lock(m_workLock);
    if (!hasCase() || m_isStopped)
    {
        return nullptr;
    }
    if (m_events.IsCanceled())
    {
        m_isStopped = true;
        return nullptr;
    }
    if (m_leftOver.empty())
    {
        leaveOut();
        return hasCase() ? &m_planned[m_next++] : nullptr;
    }
    const SPlannedCase* const planned = m_leftOver.back();
    m_leftOver.pop_back();
    return planned;
}

/// Skips cases that SRunOptions::isNeeded leaves out, up to the next needed case.
void CWork::leaveOut()
{
    for (; m_next < m_planned.size() && !m_events.IsNeeded(m_planned[m_next]); ++m_next)
    {
        ++m_leftOut;
    }
}

std::size_t CWork::GetCount()
{
    const LbCriticalSectionLock lock(m_workLock);
    return m_planned.size() - m_leftOut;
}

bool CWork::LeaveToOthers(const SPlannedCase& planned)
{
    const LbCriticalSectionLock lock(m_workLock);
    if (m_isStopped)
    {
        return true;
    }
    if (m_takers <= 1)
    {
        return false;
    }
    m_leftOver.push_back(&planned);
    --m_takers;
    return true;
}

bool CWork::Leave()
{
    const LbCriticalSectionLock lock(m_workLock);
    const bool mayLeave = m_isStopped || m_leftOver.empty();
    m_takers -= mayLeave ? 1 : 0;
    return mayLeave;
}

bool CWork::Abandon()
{
    const LbCriticalSectionLock lock(m_workLock);
    --m_takers;
    return m_takers > 0 || m_isStopped || !hasCase();
}

PlannedCases CWork::GetToCome()
{
    const LbCriticalSectionLock lock(m_workLock);
    return m_planned.subspan(m_isStopped ? m_planned.size() : m_next);
}

void CWork::Stop()
{
    const LbCriticalSectionLock lock(m_workLock);
    m_isStopped = true;
}

void CWork::AddWorker()
{
    {
        const LbCriticalSectionLock lock(m_workLock);
        ++m_takers;
    }
    const LbCriticalSectionLock lock(m_workersLock);
    ++m_workers;
}

void CWork::RemoveWorker(std::exception_ptr failure)
{
    if (failure)
    {
        Stop();
        m_events.Fail();
    }
    const LbCriticalSectionLock lock(m_workersLock);
    --m_workers;
    if (!m_failure)
    {
        m_failure = std::move(failure);
    }
}

CWork::SProgress CWork::GetProgress()
{
    const LbCriticalSectionLock lock(m_workersLock);
    return {m_workers == 0, m_failure != nullptr};
}

void CWork::RethrowFailure() const
{
    if (m_failure)
    {
        std::rethrow_exception(m_failure);
    }
}

/// A thread that runs cases until no case is left. The destructor waits for the thread.
class CWorkerThread : public INonCopyable
{
public:
    /// Throws std::system_error if the system cannot start the thread.
    CWorkerThread(std::int32_t index, CWork& work, CSpareChildren& spares, CRunEvents& events);
    ~CWorkerThread() { m_thread.join(); }

private:
    void run() noexcept;
    void runCases();
    void runTaken(CCaseRunner& runner);
    bool getReady(CCaseRunner& runner, const SPlannedCase& planned);

    bool m_hasLeft = false; ///< true if this worker leaves all cases to other workers
    std::int32_t m_index;
    CWork& m_work;
    CSpareChildren& m_spares;
    CRunEvents& m_events;
    std::thread m_thread;
};

CWorkerThread::CWorkerThread(std::int32_t index, CWork& work, CSpareChildren& spares, CRunEvents& events)
    : m_index(index), m_work(work), m_spares(spares), m_events(events)
{
    m_work.AddWorker();
    try
    {
        m_thread = std::thread([this] { run(); });
    }
    catch (...)
    {
        m_work.RemoveWorker(m_work.Abandon() ? nullptr : std::current_exception());
        throw;
    }
}

void CWorkerThread::run() noexcept
{
    std::exception_ptr failure;
    try
    {
        runCases();
    }
    catch (...)
    {
        failure = std::current_exception();
    }
    m_work.RemoveWorker(std::move(failure));
}

void CWorkerThread::runCases()
{
    LbOs::SetCurrentThreadName(L"LuTestSuiteRun::CWorkerThread");
    if (m_work.GetToCome().empty() && m_work.Leave())
    {
        // Other workers have run all cases. Warming up this thread would only delay the end of the run.
        return;
    }
    LuTestSuiteEnvironment::PreallocateStaticData();
    CCaseRunner runner(m_events, m_spares);
    do
    {
        runTaken(runner);
        // Releases the children before Leave, so that the last worker can use their resources.
        runner.ReleaseChildren();
    }
    while (!m_hasLeft && !m_work.Leave());
}

/// Runs cases until Take returns null, or until this worker leaves the remaining cases to other workers.
void CWorkerThread::runTaken(CCaseRunner& runner)
{
    const CCaseRunner::ToCome toCome = [this] { return m_work.GetToCome(); };
    for (const SPlannedCase* planned = m_work.Take(); planned != nullptr && getReady(runner, *planned);
         planned = m_work.Take())
    {
        planned->info.threadIndex = m_index;
        const LuDebugSerializationGeneric::CThreadDirectory directory(
            m_work.GetDebugFolders().GetFolder(planned->testCase.name));
        runner.Run(*planned, toCome);
    }
}

/// False if the system lacks resources for the case and another worker can run it.
bool CWorkerThread::getReady(CCaseRunner& runner, const SPlannedCase& planned)
{
    try
    {
        if (runner.MakeReadyFor(planned))
        {
            return true;
        }
    }
    catch (const LbException&)
    {
        // Ignores the exception: if this is the last worker, the second attempt below throws again.
    }
    runner.ReleaseChildren();
    m_hasLeft = m_work.LeaveToOthers(planned);
    if (!m_hasLeft)
    {
        // This is the last worker, so the others have released their children. If a child still cannot be started, the
        // case reports that.
        runner.MakeReadyFor(planned);
    }
    return !m_hasLeft;
}

/// The workers of a run. The destructor waits for the cases that they are running.
class CWorkers : public INonCopyable
{
public:
    CWorkers(std::uint32_t count, CWork& work, CSpareChildren& spares, CRunEvents& events);
    ~CWorkers() { m_work.Stop(); }

private:
    CWork& m_work;
    std::vector<std::unique_ptr<CWorkerThread>> m_threads;
};

CWorkers::CWorkers(std::uint32_t count, CWork& work, CSpareChildren& spares, CRunEvents& events) : m_work(work)
{
    try
    {
        // Allocates before the first thread starts, because a later allocation would count as growth of a running case.
        m_threads.reserve(count);
        while (m_threads.size() < count)
        {
            const auto index = static_cast<std::int32_t>(m_threads.size());
            m_threads.push_back(std::make_unique<CWorkerThread>(index, work, spares, events));
        }
    }
    catch (const std::system_error&)
    {
        // If the system cannot start all threads, the started workers run all cases.
        if (m_threads.empty())
        {
            throw;
        }
    }
    catch (...)
    {
        // Stops the started workers, because this thread cannot print their cases any more.
        m_work.Stop();
        throw;
    }
}

/// Prints cases in the order in which they finish, until all are printed or the run is canceled.
void printFinished(CWork& work, CRunEvents& events, CRunConsole& console)
{
    constexpr std::chrono::milliseconds c_PollInterval(250);
    std::size_t printed = 0;
    while (printed < work.GetCount())
    {
        std::this_thread::sleep_for(c_PollInterval);
        const CWork::SProgress progress = work.GetProgress();
        for (std::size_t waiting = console.CountWaiting(); waiting > 0; --waiting)
        {
            if (events.AskState() == CRunEvents::EState::Canceled)
            {
                WriteCanceled();
                return;
            }
            console.PrintWaiting();
            ++printed;
        }
        if (progress.hasEnded && printed < work.GetCount())
        {
            // If no worker has failed, a worker has noticed the cancellation before this thread.
            if (!progress.hasFailed)
            {
                WriteCanceled();
            }
            return;
        }
    }
}

/// Prints cases until the end of the run. An exception fails the run; workers that wait for a child then stop waiting.
void printOrStop(CWork& work, CRunEvents& events, CRunConsole& console)
{
    try
    {
        printFinished(work, events, console);
    }
    catch (...)
    {
        events.Fail();
        throw;
    }
}

} // namespace

std::uint32_t GetWorkerCount(std::uint32_t wanted)
{
    constexpr std::uint32_t c_Most = 256;
    // The system's limit counts processes and threads: the worker itself, its child process with the child's threads,
    // and what a case starts.
    constexpr std::uint64_t c_ProcessesPerWorker = 8;
    const std::uint64_t possible = std::max<std::uint64_t>(1U, LbOs::GetProcessLimit() / c_ProcessesPerWorker);
    return std::clamp(wanted, 1U, static_cast<std::uint32_t>(std::min<std::uint64_t>(possible, c_Most)));
}

void ExecuteInParallel(const SParams& params, const SChildSettings& childSettings, PlannedCases planned,
                       CRunEvents& events, CRunConsole& console)
{
    if (planned.empty())
    {
        return;
    }
    CWork work(planned, events);
    // Threads that a case starts use the root folder, because they cannot be assigned to a case.
    LuDebugSerializationGeneric::SetDefaultOutputDirectory(work.GetDebugFolders().GetRoot());
    CSpareChildren spares(childSettings);
    {
        const CWorkers workers(GetWorkerCount(params.workerThreads), work, spares, events);
        printOrStop(work, events, console);
    }
    work.RethrowFailure();
}

} // namespace LuTestSuiteRun
