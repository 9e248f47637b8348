/// Unit tests that change things that do not belong to them: settings of the process, and events and files of other
/// code.

#include <algorithm>
#include <atomic>
#include <cfenv>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "base/luunittest.h"
#include "base/os/namedevent.h"
#include "base/os/process.h"
#include "tests/support/os/testaids.h"

namespace
{

/// Opens an event of the run. This process is a child of the run and got the event's name as the value of `option`.
std::unique_ptr<LbOs::CNamedEvent> openRunEvent(const std::wstring& option)
{
    const std::vector<std::wstring> arguments = LbOs::GetOwnArguments();
    return LbOs::CNamedEvent::Open(std::ranges::find(arguments, option)[1]);
}

/// Sets both events of the run every millisecond until the process ends.
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

/// True if the case can have `count` forks of its process at the same time.
bool canFork(std::size_t count)
{
    std::vector<long> copies;
    for (std::optional<long> copy = 1; copy > 0 && copies.size() < count;)
    {
        copy = LbOs::Fork();
        if (copy == 0)
        {
            // Lets the other forks start.
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            std::_Exit(EXIT_SUCCESS);
        }
        copies.insert(copies.end(), copy > 0 ? 1 : 0, copy.value_or(0));
    }
    std::ranges::for_each(copies, LbOs::WaitForFork);
    return copies.size() == count;
}

int s_count = 0;

std::atomic<bool> s_areTimersHeld = false;
std::atomic<bool> s_isOtherDone = false;

} // namespace

class CIntrusiveModel : public LuUnitTest
{
    LB_RTTI(CIntrusiveModel)

    void InitSubtests() override
    {
        AddSubtest(L"setzt fremde Ereignisse", [] { setRunEvents(); });
        AddSubtest(L"nimmt fremde Anfragen", [] { takeSignals(L"--request-event-id"); });
        AddSubtest(L"nimmt fremde Antworten", [] { takeSignals(L"--response-event-id"); });
        AddSubtest(L"entfernt fremde Namen", [] {
            return LbOs::RemoveObjectNames(LbOs::GetProcessId()) ? LuUnitTest::eR_Passed : LuUnitTest::eR_NoInput;
        });
        AddSubtest(L"stört Signale",
                   [] { return LbOs::SetSignalsDisturbed(true) ? LuUnitTest::eR_Passed : LuUnitTest::eR_NoInput; });
        AddSubtest(L"nennt Signale", [this] { Info(L"%s", LbOs::DescribeSignals()); });
        addStates();
        AddSubtest(L"braucht vier Prozesse", [] { return canFork(4) ? LuUnitTest::eR_Passed : LuUnitTest::eR_Failed; });
        AddSubtest(L"endet", [] { LbOs::EndProcess(EXIT_SUCCESS); });
        AddSubtest(L"zählt", [this] { Info(L"%d", ++s_count); });
        AddSubtest(L"dauert", [this] {
            // Long enough for the other cases to interfere.
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            Info(L"zu Ende");
        });
    }

    /// Adds cases that change or show what the run restores.
    void addStates()
    {
        AddSubtest(L"wartet auf ein Kind", [] { return std::system("exit 0") == 0 ? eR_Passed : eR_Failed; });
        AddSubtest(L"stellt Wecker", [] { return LbOs::SetTimersArmed(true) ? eR_Passed : eR_NoInput; });
        AddSubtest(L"stellt einen Wecker", [] { LbOs::SetAlarm(); });
        AddSubtest(L"nennt Wecker", [this] { Info(L"%d", LbOs::CountArmedTimers()); });
        AddSubtest(L"hält Wecker", [this] {
            LbOs::SetTimersArmed(true);
            s_areTimersHeld = true;
            while (!s_isOtherDone)
            {
                std::this_thread::yield();
            }
            Info(L"%d", LbOs::CountArmedTimers());
        });
        AddSubtest(L"läuft neben einem Wecker", [] {
            while (!s_areTimersHeld)
            {
                std::this_thread::yield();
            }
        });
        AddSubtest(L"läuft danach", [] { s_isOtherDone = true; });
        AddSubtest(L"rundet auf", [] { return std::fesetround(FE_UPWARD) == 0 ? eR_Passed : eR_Failed; });
        AddSubtest(L"teilt durch null", [this] {
            volatile double zero = 0;
            volatile long double longZero = 0;
            Info(L"%f %f", 1 / zero, 1 / longZero);
        });
        AddSubtest(L"benutzt MMX", [] {
            // Uses all registers, as code without the final "emms" does.
            __asm__ volatile("movd %%eax, %%mm0" : : : "mm0");
        });
        AddSubtest(L"rechnet lang", [this] {
            volatile long double half = 0.5L;
            Info(L"%.1f", static_cast<double>(half + 1));
        });
        AddSubtest(L"nennt Rundung", [this] { Info(L"%d %d", std::fegetround(), std::fetestexcept(FE_DIVBYZERO)); });
    }
};
LB_RTTI_CLASS(CIntrusiveModel, LuUnitTest)
