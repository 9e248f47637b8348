/// The lines that a process prints if test code crashes in it.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include "base/inoncopyable.h"
#include "base/os/crash.h"
#include "testing/lutestsuite/lutestsuiteexport.h"

namespace LuTestSuite
{

/// Is informed of crashes, in addition to the lines on standard error.
class ICrashReporter
{
public:
    /// Called on the crashed thread; must neither allocate memory nor take a lock.
    virtual void Report(const LbOs::SCrash& crash) noexcept = 0;

protected:
    ~ICrashReporter() = default;
};

/// While an object of this class exists, a crash of the process prints one or two lines on standard error: the kind of
/// crash, its location, and the activities of threads with a CCrashThread. One object at a time.
class CCrashNotes : public INonCopyable
{
public:
    /// `reporter` informs the run that started this process, and must outlive the object. It is null if no run has
    /// started this process.
    explicit CCrashNotes(ICrashReporter* reporter = nullptr);
    ~CCrashNotes();

private:
    LbOs::CCrashHandler m_handler;
};

/// The activity of a thread.
enum class EActivity : std::uint32_t
{
    RunCase,
    RecreateCase,
    FindCases
};

/// Registers the calling thread as one that runs test code in this process. The same thread must destroy the object. A
/// second object of a thread shares the place of the first in the table.
///
/// The table has places for 512 threads, twice the largest number of workers. If it is full, the crash of a further
/// thread is reported without its activity.
class CCrashThread : public INonCopyable
{
public:
    CCrashThread();
    ~CCrashThread();

    /// A place in the table of threads. The texts are UTF-16 and end with a null.
    struct SPlace
    {
        std::atomic<std::uintptr_t> thread; ///< 0 while free
        std::atomic<EActivity> activity;
        std::atomic<const char16_t*> className; ///< null: no activity
        std::atomic<const char16_t*> detail;    ///< a case or a folder
    };

private:
    friend class CUnderWay;

    LbOs::CCrashStack m_stack;
    bool m_isOuter = false; ///< true if this object frees the place
    SPlace* m_place;        ///< null if all places are taken
};

/// Sets the activity of the thread while the object exists; the destructor restores the former activity.
class CUnderWay : public INonCopyable
{
public:
    /// Maximum number of characters that are read of a text, including its terminator.
    static constexpr std::size_t sc_uiCapacity = 1024;

    /// The caller owns the texts, which must outlive the object.
    CUnderWay(CCrashThread& thread, EActivity activity, const char16_t* className, const char16_t* detail) noexcept;
    ~CUnderWay();

private:
    void set(EActivity activity, const char16_t* className, const char16_t* detail) noexcept;

    CCrashThread::SPlace* m_place;
    EActivity m_formerActivity = EActivity::RunCase;
    const char16_t* m_formerClass = nullptr;
    const char16_t* m_formerDetail = nullptr;
};

/// Like CUnderWay, but copies the texts and registers the thread itself.
class CNamedUnderWay : public INonCopyable
{
public:
    CNamedUnderWay(EActivity activity, const std::wstring& className, const std::wstring& detail);

private:
    std::u16string m_className;
    std::u16string m_detail;
    CCrashThread m_thread;
    CUnderWay m_underWay;
};

/// Prints that the process ends although its work is not finished, with the activity of the calling thread and, in a
/// second line, those of others. For handlers of exit(): neither allocates memory nor takes a lock.
LUTESTSUITE_API void WriteUnfinishedEnd() noexcept;

} // namespace LuTestSuite
