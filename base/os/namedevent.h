/// Named auto-reset events shared by processes.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/lbexport.h"
#include "base/os/childprocess.h"

namespace LbOs
{

enum class EEventWait
{
    Signaled,
    TimedOut,
    ChildEnded, ///< the child has ended, and the event was not set before
    Failed
};

/// Each Set releases one Wait, current or future; setting a set event has no effect. Any thread may set an event; one
/// thread at a time may wait. Only processes of the same user can open it. A name consists of letters, digits and "-".
class LB_API CNamedEvent
{
public:
    /// Creates an event. Null on failure, also if the name exists; then `failure`, if not null, receives the reason.
    /// The name is removed with the object, or when the current process ends in any way.
    static std::unique_ptr<CNamedEvent> Create(const std::wstring& name, std::wstring* failure = nullptr);

    /// Opens an event created by another object. Null if no such event exists or access is denied.
    static std::unique_ptr<CNamedEvent> Open(const std::wstring& name);

    ~CNamedEvent();

    /// True if the event still has its name. On Linux a name is a file, which the user's processes can remove.
    bool IsNamed() const;

    CNamedEvent(const CNamedEvent&) = delete;
    CNamedEvent& operator=(const CNamedEvent&) = delete;

    /// False on failure.
    bool Set();

    /// Resets a set event; true if it was set.
    bool Reset();

    /// Waits for at most `milliseconds`, or until `child`, if given, ends.
    EEventWait Wait(std::uint32_t milliseconds, const CChildProcess* child = nullptr);

private:
    struct SState;
    explicit CNamedEvent(std::unique_ptr<SState> state);

    std::unique_ptr<SState> m_state;
};

} // namespace LbOs
