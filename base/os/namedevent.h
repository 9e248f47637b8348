/// Auto-reset events between processes, known by name.
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
    ChildEnded, ///< and the event had not been set before that
    Failed
};

/// One Set releases one wait, now or later; setting a set event changes nothing. Only processes of the same user can
/// open one. Names are letters, digits and "-". Set by any thread, waited for by one at a time.
class LB_API CNamedEvent
{
public:
    /// A new event. Null when there is one of that name, or on any other failure; `failure` then says what the system
    /// has refused. The name goes with the object, or with the present process, however that ends.
    static std::unique_ptr<CNamedEvent> Create(const std::wstring& name, std::wstring* failure = nullptr);

    /// An event that another object has created. Null when there is none that may be opened.
    static std::unique_ptr<CNamedEvent> Open(const std::wstring& name);

    ~CNamedEvent();

    CNamedEvent(const CNamedEvent&) = delete;
    CNamedEvent& operator=(const CNamedEvent&) = delete;

    /// False on failure.
    bool Set();

    /// Takes a set event back; true when it was set.
    bool Reset();

    /// Waits for up to `milliseconds`, and not beyond the end of `child` when there is one.
    EEventWait Wait(std::uint32_t milliseconds, const CChildProcess* child = nullptr);

private:
    struct SState;
    explicit CNamedEvent(std::unique_ptr<SState> state);

    std::unique_ptr<SState> m_state;
};

} // namespace LbOs
