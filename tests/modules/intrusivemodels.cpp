/// Unit tests that change what is not theirs: the process's settings, other parties' events and files.

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "base/luunittest.h"
#include "base/os/namedevent.h"
#include "tests/support/os/testaids.h"

namespace
{

/// An event of the run, by the option that names it to the child process that this is.
std::unique_ptr<LbOs::CNamedEvent> openRunEvent(const std::wstring& option)
{
    const std::vector<std::wstring> arguments = LbOs::GetOwnArguments();
    return LbOs::CNamedEvent::Open(std::ranges::find(arguments, option)[1]);
}

/// Sets both events of the run from now on.
void setRunEvents()
{
    std::thread([request = openRunEvent(L"--request-event-id"), response = openRunEvent(L"--response-event-id")] {
        while (true)
        {
            request->Set();
            response->Set();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }).detach();
}

/// Takes a few of the signals that are meant for the run and its child process.
void takeSignals(const std::wstring& option)
{
    std::thread([event = openRunEvent(option)] {
        constexpr std::uint32_t c_Long = 30000;
        constexpr int c_Signals = 2;
        for (int signal = 0; signal < c_Signals; ++signal)
        {
            event->Wait(c_Long);
        }
    }).detach();
}

int s_count = 0;

} // namespace

class CIntrusiveModel : public LuUnitTest
{
    LB_RTTI(CIntrusiveModel)

    void InitSubtests() override
    {
        AddSubtest(L"setzt fremde Ereignisse", [] { setRunEvents(); });
        AddSubtest(L"nimmt fremde Anfragen", [] { takeSignals(L"--request-event-id"); });
        AddSubtest(L"nimmt fremde Antworten", [] { takeSignals(L"--response-event-id"); });
        AddSubtest(L"zählt", [this] { Info(L"%d", ++s_count); });
        AddSubtest(L"dauert", [this] {
            // Longer than it takes the others to get in its way.
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            Info(L"zu Ende");
        });
    }
};
LB_RTTI_CLASS(CIntrusiveModel, LuUnitTest)
