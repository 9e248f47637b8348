/// What the process says when a case that runs in it crashes.
#pragma once

#include <atomic>

#include "base/inoncopyable.h"
#include "base/os/crash.h"
#include "testing/lutestsuite/run/children/crashbox.h"
#include "testing/lutestsuite/run/children/workbuffer.h"

namespace LuTestSuiteRun
{

/// While it lives, a crash of the process names on standard error what has happened and where, and the cases that are
/// under way, in one or two lines.
class CCrashNotes : public INonCopyable
{
public:
    /// `reporter` tells the run that started this process; it is the caller's and outlives the object; null without
    /// one.
    explicit CCrashNotes(CCrashReporter* reporter = nullptr);
    ~CCrashNotes();

private:
    LbOs::CCrashHandler m_handler;
};

/// A thread that runs cases in this process. Destroyed by the same thread.
class CCrashThread : public INonCopyable
{
public:
    CCrashThread();
    ~CCrashThread();

    /// The case in the buffer is under way from now on; null: no case is. Only the pointer is kept.
    void SetCase(const SWorkBuffer* request) noexcept;

    /// A place in the table of the threads that run cases.
    struct SPlace
    {
        std::atomic<std::uintptr_t> thread; ///< 0 while free
        std::atomic<const SWorkBuffer*> request;
    };

private:
    LbOs::CCrashStack m_stack;
    SPlace* m_place; ///< null when all are taken
};

/// The case in the buffer is under way as long as the object lives.
class CCaseUnderWay : public INonCopyable
{
public:
    CCaseUnderWay(CCrashThread& thread, const SWorkBuffer& request) : m_thread(thread) { m_thread.SetCase(&request); }
    ~CCaseUnderWay() { m_thread.SetCase(nullptr); }

private:
    CCrashThread& m_thread;
};

} // namespace LuTestSuiteRun
