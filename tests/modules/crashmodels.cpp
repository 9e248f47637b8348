/// Unit tests that take their process down, or never end.

#include <chrono>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "base/lbcommandline.h"
#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/luunittest.h"

// By the run-time's own name, since its header differs between platforms.
extern "C" int close(int file);

namespace
{

// Volatile, so that the compiler does not see what is coming.
volatile int s_zero = 0;
int* volatile s_nothing = nullptr;

int overflowStack(int depth)
{
    volatile char used[4096];
    used[0] = static_cast<char>(depth);
    return s_zero == 0 ? overflowStack(depth + 1) + used[0] : depth;
}

[[noreturn]] void hang()
{
    while (true)
    {
        [[maybe_unused]] const int looked = s_zero;
    }
}

void deadLock()
{
    std::mutex mutex;
    const std::lock_guard lock(mutex);
    std::thread([&mutex] { const std::lock_guard second(mutex); }).join();
}

void closeAllFiles()
{
    constexpr int c_Files = 256;
    for (int file = 0; file < c_Files; ++file)
    {
        close(file);
    }
}

void useAllMemory()
{
    constexpr std::size_t c_Block = std::size_t{1} << 46U;
    std::vector<void*> blocks;
    while (true)
    {
        blocks.push_back(::operator new(c_Block));
    }
}

void sleepLong()
{
    std::this_thread::sleep_for(std::chrono::seconds(60));
}

/// Starts a process that outlives nobody's patience, unless somebody ends it.
void startGrandchild()
{
    const char* const name = std::getenv("LUTESTSUITE_TEST_LINE");
    const std::string command =
        LbEncoding::ToUtf8(LbCommandLine::Quote(LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable) +
                                                L"processprobe" + LbOs::c_ExecutableSuffix)) +
        " parent " + (name == nullptr ? "" : name);
    const int status =
        std::system((LbPath::c_Separator == L'\\' ? "start \"\" /b " + command : command + " &").c_str());
    static_cast<void>(status);
}

} // namespace

class CCrashModel : public LuUnitTest
{
    LB_RTTI(CCrashModel)

    void InitSubtests() override
    {
        AddSubtest(L"vorher", [] { return eR_Passed; });
        AddSubtest(L"Zugriffsverletzung", [this] {
            Info(L"vor dem Absturz");
            *s_nothing = 1;
        });
        AddSubtest(L"Stapelüberlauf", [this] { Info(L"%d", overflowStack(0)); });
        AddSubtest(L"abort", [] { std::abort(); });
        AddSubtest(L"terminate", [] { std::terminate(); });
        AddSubtest(L"exit", [] { std::exit(0); });
        AddSubtest(L"Division durch null", [this] { Info(L"%d", 100 / s_zero); });
        AddSubtest(L"Endlosschleife", [] { hang(); });
        AddSubtest(L"Verklemmung", [] { deadLock(); });
        AddSubtest(L"geschlossene Dateien", [] { closeAllFiles(); });
        AddSubtest(L"kein Speicher", [] { useAllMemory(); });
        AddSubtest(L"nachher", [] { return eR_Passed; });
        AddSubtest(L"schläft", [this] {
            Info(L"vor dem Schlaf");
            sleepLong();
        });
        AddSubtest(L"startet Prozesse", [] {
            startGrandchild();
            sleepLong();
        });
        AddSubtest(L"startet Prozesse und endet", [] { startGrandchild(); });
    }
};
LB_RTTI_CLASS(CCrashModel, LuUnitTest)
