/// Unit tests that end their process, or never end.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "base/lbcommandline.h"
#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbmessagedispatcher.h"
#include "base/lbpath.h"
#include "base/lbthreadpool.h"
#include "base/luunittest.h"
#include "base/os/namedevent.h"
#include "tests/support/os/testaids.h"

// Declared here, because the header of this function differs between platforms.
extern "C" int close(int file);

namespace
{

constexpr std::uint32_t c_Long = 30000; // in milliseconds

// Volatile, so that the compiler cannot predict the crash.
volatile int s_zero = 0;
int* volatile s_nothing = nullptr;
void (*volatile s_noFunction)() = nullptr;

/// Must not be inlined into itself. Otherwise a frame would have several pages, so the overflow would occur earlier and
/// leave more stack for its report.
[[gnu::noinline, gnu::noclone]] int overflowStack(int depth)
{
    volatile char used[4096];
    used[0] = static_cast<char>(depth);
    return s_zero == 0 ? overflowStack(depth + 1) + used[0] : depth;
}

/// Shifts the frames, so that the stack overflows at another offset within a page.
template<std::size_t Shift>
[[gnu::noinline]] int overflowShiftedStack()
{
    volatile char shift[Shift];
    shift[0] = 0;
    return overflowStack(0) + shift[0];
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

/// Requests a block larger than the address space, which the system refuses. Some systems would grant half of that size
/// and spend a minute on the page tables.
void useTooMuchMemory()
{
    constexpr std::size_t c_Block = std::size_t{1} << 47U;
    // Volatile, because compilers may omit an allocation that is released at once.
    void* volatile const block = ::operator new(c_Block);
    ::operator delete(block);
}

/// Limits the memory of the process, uses all of it and throws std::bad_alloc. Returns NoInput if the system enforces
/// no limit.
LuUnitTest::EResult useAllMemory()
{
    constexpr std::size_t c_Limit = std::size_t{64} << 20U;
    constexpr std::size_t c_LargestBlock = std::size_t{1} << 20U;
    if (!LbOs::LimitMemory(c_Limit))
    {
        return LuUnitTest::eR_NoInput;
    }
    void* blocks = nullptr;
    for (std::size_t size = c_LargestBlock; size >= sizeof(void*); size = size > 2048 ? size / 2 : size - sizeof(void*))
    {
        while (void* const block = std::malloc(size))
        {
            *static_cast<void**>(block) = blocks;
            blocks = block;
        }
    }
    throw std::bad_alloc();
}

void sleepLong()
{
    std::this_thread::sleep_for(std::chrono::seconds(60));
}

/// Starts a background process that the run must kill.
void startGrandchild(const std::string& how)
{
    const char* const name = std::getenv("LUTESTSUITE_TEST_LINE");
    const std::string command =
        LbEncoding::ToUtf8(LbCommandLine::Quote(LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable) +
                                                L"processprobe" + LbOs::c_ExecutableSuffix)) +
        " " + how + " " + (name == nullptr ? "" : name);
    const int status =
        std::system((LbPath::c_Separator == L'\\' ? "start \"\" /b " + command : command + " &").c_str());
    static_cast<void>(status);
}

/// Opens an event of the test that runs the case. The test has passed the beginning of the event's name; `suffix` is
/// the rest.
std::unique_ptr<LbOs::CNamedEvent> openEvent(const std::wstring& suffix)
{
    const char* const name = std::getenv("LUTESTSUITE_TEST_LINE");
    return LbOs::CNamedEvent::Open(LbEncoding::FromUtf8(name == nullptr ? "" : name) + suffix);
}

/// If the test has passed the name of its events, tells it that the process has begun to exit.
void announceExit()
{
    if (std::getenv("LUTESTSUITE_TEST_LINE") != nullptr)
    {
        openEvent(L"-r")->Set();
    }
}

/// Waits until the started process runs. If the case ended earlier, the test could not tell whether the process was
/// ended or never ran.
void awaitGrandchild()
{
    const auto ready = openEvent(L"-r");
    ready->Wait(c_Long);
    ready->Set();
}

/// Signals a second answer, which the run has not requested, as soon as the test asks for it.
void answerLater()
{
    const std::vector<std::wstring> arguments = LbOs::GetOwnArguments();
    const auto option = std::ranges::find(arguments, L"--response-event-id");
    std::thread([response = LbOs::CNamedEvent::Open(option[1]), question = openEvent(L"-q"), done = openEvent(L"-a")] {
        question->Wait(c_Long);
        response->Set();
        done->Set();
    }).detach();
}

std::atomic<bool> s_isOtherUnderWay = false;

void awaitOther()
{
    while (!s_isOtherUnderWay)
    {
        std::this_thread::yield();
    }
}

/// Crashes; a signal handler of the module then ends the process.
void crashIntoOwnHandler()
{
    constexpr int c_Own = 7;
    std::signal(SIGSEGV, [](int) { std::_Exit(c_Own); });
    *s_nothing = 1;
}

void throwOutOfThread()
{
    std::thread([] { throw std::runtime_error("aus einem Thread"); }).join();
}

/// Leaves a thread running. It crashes as soon as a file exists at the path that the test has passed.
void crashLater()
{
    const char* const name = std::getenv("LUTESTSUITE_TEST_LINE");
    std::thread([file = LbEncoding::FromUtf8(name == nullptr ? "" : name)] {
        while (!LbFileSystem::Exists(file))
        {
            std::this_thread::yield();
        }
        *s_nothing = 1;
    }).detach();
}

std::optional<long> s_copy;

/// Forks; the fork crashes, and the case continues.
void crashInCopy()
{
    const std::optional<long> copy = LbOs::Fork();
    if (copy == 0)
    {
        *s_nothing = 1;
    }
    LbOs::WaitForFork(copy.value_or(0));
}

/// Forks. Returns false at once in the original process; returns true in the fork when the next case runs.
bool isCopyInNextCase()
{
    s_copy = LbOs::Fork();
    return s_copy == 0 && openEvent(L"-q")->Wait(c_Long) == LbOs::EEventWait::Signaled;
}

void awaitCopy()
{
    openEvent(L"-q")->Set();
    LbOs::WaitForFork(s_copy.value_or(0));
}

} // namespace

namespace
{

/// Ends processes that load the module if a test sets one of two variables. LUTESTSUITE_TEST_LEAVES names a file: the
/// first process creates the file and exits with 0. LUTESTSUITE_TEST_DIES: each process exits with a failure.
bool comesToLife()
{
    const char* const leaves = std::getenv("LUTESTSUITE_TEST_LEAVES");
    if (leaves != nullptr && *leaves != '\0')
    {
        const bool isFirst = !std::ifstream(leaves).good();
        if (isFirst)
        {
            std::ofstream(leaves).close();
            std::_Exit(EXIT_SUCCESS);
        }
    }
    const char* const dies = std::getenv("LUTESTSUITE_TEST_DIES");
    if (dies != nullptr && *dies != '\0')
    {
        std::_Exit(EXIT_FAILURE);
    }
    return true;
}

const bool s_lives = comesToLife();

} // namespace

class CCrashModel : public LuUnitTest
{
    LB_RTTI(CCrashModel)

    void InitSubtests() override
    {
        AddSubtest(L"vorher", [] { return s_lives ? eR_Passed : eR_Failed; });
        AddSubtest(L"Zugriffsverletzung", [this] {
            Info(L"vor dem Absturz");
            *s_nothing = 1;
        });
        AddSubtest(L"Stapelüberlauf", [this] { Info(L"%d", overflowStack(0)); });
        AddSubtest(L"abort", [] { std::abort(); });
        AddSubtest(L"terminate", [] { std::terminate(); });
        AddSubtest(L"exit", [] { std::exit(0); });
        AddSubtest(L"quick_exit", [] { LbOs::ExitQuickly(); });
        AddSubtest(L"Division durch null", [this] { Info(L"%d", 100 / s_zero); });
        AddSubtest(L"Aufruf von null", [this] {
            s_noFunction();
            Info(L"zurück");
        });
        AddSubtest(L"Endlosschleife", [] { hang(); });
        AddSubtest(L"Verklemmung", [] { deadLock(); });
        AddSubtest(L"geschlossene Dateien", [] { closeAllFiles(); });
        AddSubtest(L"kein Speicher", [] { useTooMuchMemory(); });
        AddSubtest(L"aller Speicher", [] { return useAllMemory(); });
        AddSubtest(L"zählt Prozessoren", [this] { Info(L"%u", LbOs::CountOwnProcessors()); });
        AddSubtest(L"nachher", [] { return eR_Passed; });
        AddSubtest(L"schläft", [this] {
            Info(L"vor dem Schlaf");
            sleepLong();
        });
        AddSubtest(L"Kopie kehrt zurück", [this] {
            if (isCopyInNextCase())
            {
                Info(L"aus der Kopie");
            }
        });
        AddSubtest(L"Kopie wirft", [] {
            if (isCopyInNextCase())
            {
                throw std::runtime_error("aus der Kopie");
            }
        });
        AddSubtest(L"erwartet Kopie", [this] {
            awaitCopy();
            Info(L"Ende der Kopie");
        });
        AddSubtest(L"fremde Prozessgruppe", [] {
            LbOs::JoinGroupOfParent();
            sleepLong();
        });
        AddSubtest(L"schläft kurz", [] { std::this_thread::sleep_for(std::chrono::milliseconds(600)); });
        addLeaving();
        AddSubtest(L"offene Dateien", [this] { Info(L"%I64u", LbOs::GetOpenFileLimit().value_or(0)); });
        addStarting();
        addCrashing();
        addWriting();
    }

    /// Adds cases that do something when their process exits.
    void addLeaving()
    {
        AddSubtest(L"schläft am Ende des Prozesses", [] {
            std::atexit([] {
                announceExit();
                sleepLong();
            });
        });
        AddSubtest(L"stürzt am Ende des Prozesses ab", [] {
            std::atexit([] {
                announceExit();
                std::abort();
            });
        });
        AddSubtest(L"meldet das Ende des Prozesses", [] { std::atexit(announceExit); });
    }

    /// Adds cases for tests of the texts that describe a crash.
    void addCrashing()
    {
        AddSubtest(L"wartet auf den Absturz", [] {
            s_isOtherUnderWay = true;
            sleepLong();
        });
        AddSubtest(L"Absturz auf Verlangen", [] {
            openEvent(L"-q")->Wait(c_Long);
            std::abort();
        });
        AddSubtest(L"Absturz neben einem anderen", [] {
            awaitOther();
            *s_nothing = 1;
        });
        AddSubtest(L"eigene Behandlung", [] { crashIntoOwnHandler(); });
        AddSubtest(L"Exception im Thread", [] { throwOutOfThread(); });
        AddSubtest(L"Zugriffsverletzung im Thread", [] { std::thread([] { *s_nothing = 1; }).join(); });
        AddSubtest(L"Zugriffsverletzung nach dem Lauf", [] { crashLater(); });
        AddSubtest(L"Stapelüberlauf im Thread", [] { std::thread([] { overflowStack(0); }).join(); });
        AddSubtest(L"Stapelüberlauf im Vorrat",
                   [] { LbThreadPool::GetInstance().Run([] { overflowStack(0); }).Wait(); });
        AddSubtest(L"Stapelüberlauf in einer Nachricht", [] {
            LbMessageDispatcher::GetInstance().Start();
            LbMessageDispatcher::GetInstance().Post([] { overflowStack(0); });
            LbMessageDispatcher::GetInstance().Flush();
        });
        AddSubtest(L"Ende neben einem anderen", [] {
            awaitOther();
            std::exit(0);
        });
        AddSubtest(L"Stapelüberlauf ab 1024", [this] { Info(L"%d", overflowShiftedStack<1024>()); });
        AddSubtest(L"Stapelüberlauf ab 2048", [this] { Info(L"%d", overflowShiftedStack<2048>()); });
        AddSubtest(L"Stapelüberlauf ab 3072", [this] { Info(L"%d", overflowShiftedStack<3072>()); });
        AddSubtest(L"kein Speicher im Thread", [] { std::thread([] { throw std::bad_alloc(); }).join(); });
        AddSubtest(L"spricht von Speicher und endet", [] {
            std::fputs("std::bad_alloc\n", stderr);
            std::_Exit(4);
        });
        AddSubtest(L"Absturz der Kopie", [] { crashInCopy(); });
        for (const wchar_t* const signal : {L"SIGPIPE", L"SIGALRM", L"SIGVTALRM", L"SIGPROF", L"SIGXCPU", L"SIGXFSZ",
                                            L"SIGUSR1", L"SIGUSR2", L"SIGTERM"})
        {
            AddSubtest(signal, [signal] { return LbOs::CauseSignal(signal) ? eR_Passed : eR_NoInput; });
        }
        AddSubtest(L"SIGUSR1 von außen", [] {
            static_cast<void>(std::system("kill -s USR1 $PPID"));
            sleepLong();
        });
    }

    /// Adds cases that write to standard error. Most of these cases then end their process.
    void addWriting()
    {
        AddSubtest(L"schreibt Fehlerzeilen", [] { std::fputs("aus dem Fall davor\n", stderr); });
        AddSubtest(L"schreibt und hängt", [] {
            std::fputs("vor der Endlosschleife\n", stderr);
            hang();
        });
        AddSubtest(L"schreibt viel und endet", [] {
            for (int line = 1; line <= 200; ++line)
            {
                std::fprintf(stderr, "Zeile %d\n", line);
            }
            std::_Exit(3);
        });
        AddSubtest(L"schreibt lange Zeilen und endet", [] {
            std::fputs((std::string(5000, 'x') + "\n").c_str(), stderr);
            std::_Exit(3);
        });
        AddSubtest(L"schreibt Steuerzeichen und endet", [] {
            std::fputs("\x1b[31mrot \xff\n", stderr);
            std::_Exit(3);
        });
    }

    /// Adds cases that start processes.
    void addStarting()
    {
        AddSubtest(L"startet Prozesse", [] {
            startGrandchild("parent");
            sleepLong();
        });
        AddSubtest(L"startet Ausreißer", [] {
            startGrandchild("runaway");
            sleepLong();
        });
        AddSubtest(L"startet kopflose Prozesse", [] {
            startGrandchild("headless");
            sleepLong();
        });
        AddSubtest(L"hinterlässt Prozesse", [] {
            startGrandchild("daemon");
            awaitGrandchild();
        });
        AddSubtest(L"hinterlässt Prozesse und endet", [] {
            startGrandchild("daemon");
            awaitGrandchild();
            std::_Exit(0);
        });
        AddSubtest(L"hinterlässt Prozesse und endet nicht", [] {
            startGrandchild("daemon");
            awaitGrandchild();
            std::atexit(sleepLong);
        });
        AddSubtest(L"antwortet noch einmal", [] { answerLater(); });
        AddSubtest(L"startet Prozesse und endet", [] {
            startGrandchild("parent");
            awaitGrandchild();
        });
    }
};
LB_RTTI_CLASS(CCrashModel, LuUnitTest)

/// Crashes in InitSubtests.
class CSearchCrashModel : public LuUnitTest
{
    LB_RTTI(CSearchCrashModel)

    void InitSubtests() override { *s_nothing = 1; }
};
LB_RTTI_CLASS(CSearchCrashModel, LuUnitTest)

/// Its cases pass; its destructor then ends the process.
class CDyingModel : public LuUnitTest
{
    LB_RTTI(CDyingModel)

public:
    ~CDyingModel() override
    {
        if (m_end)
        {
            m_end();
        }
    }

private:
    void InitSubtests() override
    {
        addEnd(L"Zugriffsverletzung danach", [] { *s_nothing = 1; });
        addEnd(L"Exception danach", [] { throw std::runtime_error("aus dem Destruktor"); });
        addEnd(L"exit danach", [] { std::_Exit(EXIT_SUCCESS); });
    }

    void addEnd(const wchar_t* name, void (*end)())
    {
        AddSubtest(name, [this, end] {
            Info(L"bestanden");
            m_end = end;
        });
    }

    void (*m_end)() = nullptr;
};
LB_RTTI_CLASS(CDyingModel, LuUnitTest)
