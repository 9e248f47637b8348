#include "base/lbdiagnostics.h"

#include <mutex>
#include <utility>

#include "base/lbcriticalsection.h"
#include "base/os/process.h"

namespace
{

/// Created on first use and never destroyed, because static objects of other modules may trace in their constructors
/// and destructors.
struct SListening
{
    LbCriticalSection section;
    std::function<void(const std::wstring&)> listener;
    bool isBusy = false;
};

SListening& getListening()
{
    static SListening& listening = *new SListening;
    return listening;
}

/// Marks the listener as busy, so that a trace made by the listener does not call it again.
class CBusyScope
{
public:
    explicit CBusyScope(bool& isBusy) : m_isBusy(isBusy) { m_isBusy = true; }
    ~CBusyScope() { m_isBusy = false; }
    CBusyScope(const CBusyScope&) = delete;
    CBusyScope& operator=(const CBusyScope&) = delete;

private:
    bool& m_isBusy;
};

} // namespace

void LbDiagnostics::Trace(const std::wstring& text)
{
    LbOs::TraceToSystem(text);
    SListening& listening = getListening();
    const LbCriticalSectionLock lock(listening.section);
    if (listening.listener && !listening.isBusy)
    {
        const CBusyScope busy(listening.isBusy);
        // A copy, because the listener may replace itself.
        const auto listener = listening.listener;
        listener(text);
    }
}

std::function<void(const std::wstring&)> LbDiagnostics::SetListener(std::function<void(const std::wstring&)> listener)
{
    SListening& listening = getListening();
    const LbCriticalSectionLock lock(listening.section);
    return std::exchange(listening.listener, std::move(listener));
}
