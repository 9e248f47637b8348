#include "base/os/namedevent.h"

#include <utility>

#include "base/os/windows/namedobject.h"

namespace LbOs
{

struct CNamedEvent::SState
{
    Windows::Handle event;
};

CNamedEvent::CNamedEvent(std::unique_ptr<SState> state) : m_state(std::move(state)) {}

CNamedEvent::~CNamedEvent() = default;

std::unique_ptr<CNamedEvent> CNamedEvent::Create(const std::wstring& name, std::wstring* failure)
{
    const std::wstring objectName = Windows::ToObjectName(name);
    auto state = std::make_unique<SState>();
    if (!objectName.empty())
    {
        state->event = Windows::CreateNew([&objectName](SECURITY_ATTRIBUTES* access) {
            return CreateEventW(access, FALSE, FALSE, objectName.c_str());
        });
    }
    if (!state->event)
    {
        Windows::DescribeFailure(failure);
    }
    return state->event ? std::unique_ptr<CNamedEvent>(new CNamedEvent(std::move(state))) : nullptr;
}

std::unique_ptr<CNamedEvent> CNamedEvent::Open(const std::wstring& name)
{
    const std::wstring objectName = Windows::ToObjectName(name);
    auto state = std::make_unique<SState>();
    if (!objectName.empty())
    {
        state->event.reset(OpenEventW(SYNCHRONIZE | EVENT_MODIFY_STATE, FALSE, objectName.c_str()));
    }
    return state->event ? std::unique_ptr<CNamedEvent>(new CNamedEvent(std::move(state))) : nullptr;
}

bool CNamedEvent::IsNamed() const
{
    // The system keeps the name as long as there is a handle.
    return true;
}

bool CNamedEvent::Set()
{
    return SetEvent(m_state->event.get()) != FALSE;
}

bool CNamedEvent::Reset()
{
    return WaitForSingleObject(m_state->event.get(), 0) == WAIT_OBJECT_0;
}

EEventWait CNamedEvent::Wait(std::uint32_t milliseconds, const CChildProcess* child)
{
    HANDLE handles[2] = {m_state->event.get(), nullptr};
    DWORD count = 1;
    if (child != nullptr)
    {
        handles[count++] = reinterpret_cast<HANDLE>(child->GetWaitHandle());
    }
    switch (WaitForMultipleObjects(count, handles, FALSE, milliseconds))
    {
    case WAIT_OBJECT_0:
        return EEventWait::Signaled;
    case WAIT_OBJECT_0 + 1:
        // The child may have set the event just before its end, but after this wait had checked the event.
        return Reset() ? EEventWait::Signaled : EEventWait::ChildEnded;
    case WAIT_TIMEOUT:
        return EEventWait::TimedOut;
    default:
        return EEventWait::Failed;
    }
}

} // namespace LbOs
