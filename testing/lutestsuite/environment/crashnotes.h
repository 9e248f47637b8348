/// What the process says when test code that runs in it crashes.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include "base/inoncopyable.h"
#include "base/os/crash.h"

namespace LuTestSuite
{

/// Learns of crashes beside standard error.
class ICrashReporter
{
public:
    /// On the crashed thread: must neither allocate nor lock.
    virtual void Report(const LbOs::SCrash& crash) noexcept = 0;

protected:
    ~ICrashReporter() = default;
};

/// While it lives, a crash of the process names on standard error what has happened and where, and what threads with a
/// CCrashThread do, in one or two lines. One object at a time.
class CCrashNotes : public INonCopyable
{
public:
    /// `reporter` tells the run that started this process; it is the caller's and outlives the object; null without
    /// one.
    explicit CCrashNotes(ICrashReporter* reporter = nullptr);
    ~CCrashNotes();

private:
    LbOs::CCrashHandler m_handler;
};

/// What a thread does.
enum class EActivity : std::uint32_t
{
    RunCase,
    RecreateCase,
    FindCases
};

/// A thread that runs test code in this process. Destroyed by the same thread. An object within the lifetime of another
/// one of its thread shares that one's place.
///
/// There are places for 512 threads, twice the most workers of a run. The crash of a further thread is reported without
/// what it does.
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
        std::atomic<const char16_t*> className; ///< null: nothing
        std::atomic<const char16_t*> detail;    ///< a case or a folder
    };

private:
    friend class CUnderWay;

    LbOs::CCrashStack m_stack;
    bool m_isOuter = false; ///< gives the place back
    SPlace* m_place;        ///< null if there is none left
};

/// The thread does this as long as the object lives; then it does what it did before.
class CUnderWay : public INonCopyable
{
public:
    /// Characters of a text that are read, with its terminator.
    static constexpr std::size_t sc_uiCapacity = 1024;

    /// The texts are the caller's and outlive the object.
    CUnderWay(CCrashThread& thread, EActivity activity, const char16_t* className, const char16_t* detail) noexcept;
    ~CUnderWay();

private:
    void set(EActivity activity, const char16_t* className, const char16_t* detail) noexcept;

    CCrashThread::SPlace* m_place;
    EActivity m_formerActivity = EActivity::RunCase;
    const char16_t* m_formerClass = nullptr;
    const char16_t* m_formerDetail = nullptr;
};

/// The same with texts of its own, on a thread that need not have a CCrashThread.
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

} // namespace LuTestSuite
