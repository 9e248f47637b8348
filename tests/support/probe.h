/// The probe program of tests about processes.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "base/lbuniqueid.h"
#include "base/os/childprocess.h"
#include "base/os/namedevent.h"
#include "base/os/platform.h"
#include "tests/support/binaryfolder.h"

/// Options to start the probe with these arguments, given as one text.
inline LbOs::SChildOptions GetProbeOptions(const std::wstring& arguments)
{
    LbOs::SChildOptions options;
    options.program = GetBinaryFolder() + L"processprobe" + LbOs::c_ExecutableSuffix;
    options.commandLine = L"processprobe " + arguments;
    return options;
}

inline std::unique_ptr<LbOs::CChildProcess> StartProbe(const std::wstring& arguments)
{
    return LbOs::CChildProcess::Start(GetProbeOptions(arguments));
}

/// Asks a probe whether it is alive. The probe answers through named events.
class CProbeLine
{
public:
    const std::wstring& GetName() const { return m_name; }

    /// Waits until the probe has set its ready event. False after 30 s.
    bool WaitReady() { return m_ready->Wait(sc_uiLong) == LbOs::EEventWait::Signaled; }

    /// True if the probe has set its ready event since the last check.
    bool IsReady() { return m_ready->Wait(0) == LbOs::EEventWait::Signaled; }

    void Ask() { m_question->Set(); }

    /// Asks the probe and waits for its answer. A running probe answers within microseconds, so only a dead one needs
    /// the time-out.
    bool IsAnswered(std::uint32_t milliseconds)
    {
        Ask();
        return m_answer->Wait(milliseconds) == LbOs::EEventWait::Signaled;
    }

    bool IsAlive() { return IsAnswered(sc_uiLong); }
    bool IsGone() { return !IsAnswered(sc_uiShort); }

    /// Asks until there is no answer, because a probe may take a moment to end. False if it still answers after 30 s.
    bool WaitGone()
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(sc_uiLong);
        while (!IsGone())
        {
            if (std::chrono::steady_clock::now() > end)
            {
                return false;
            }
        }
        return true;
    }

    /// Ends a probe that answers.
    void End()
    {
        m_enough->Set();
        Ask();
    }

private:
    static constexpr std::uint32_t sc_uiLong = 30000;
    static constexpr std::uint32_t sc_uiShort = 500;

    std::wstring m_name = LbUniqueId::Generate();
    std::unique_ptr<LbOs::CNamedEvent> m_question = LbOs::CNamedEvent::Create(m_name + L"-q");
    std::unique_ptr<LbOs::CNamedEvent> m_answer = LbOs::CNamedEvent::Create(m_name + L"-a");
    std::unique_ptr<LbOs::CNamedEvent> m_enough = LbOs::CNamedEvent::Create(m_name + L"-e");
    std::unique_ptr<LbOs::CNamedEvent> m_ready = LbOs::CNamedEvent::Create(m_name + L"-r");
};
