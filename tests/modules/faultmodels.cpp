/// One case for each kind of fault that ends or stops a process, and cases that pass.

#undef NDEBUG // Keeps assert() in optimized builds.
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <new>
#include <stdexcept>
#include <thread>

#include "base/luunittest.h"
#include "base/os/pages.h"
#include "tests/support/os/testaids.h"

// Each fault has its own function, whose name the stack of the crash must show.
#define FAULT [[gnu::noinline, gnu::noclone]]

// Exported, so that stacks name these functions even if the module has no symbols.
namespace Faults
{

// Volatile, so that the compiler cannot predict the crash.
volatile int s_zero = 0;
int* volatile s_nothing = nullptr;

LB_OS_EXPORT FAULT void WriteToNull()
{
    *s_nothing = 1;
}

LB_OS_EXPORT FAULT int OverflowStack(int depth)
{
    volatile char used[4096];
    used[0] = static_cast<char>(depth);
    return s_zero == 0 ? OverflowStack(depth + 1) + used[0] : depth;
}

LB_OS_EXPORT FAULT void CallAbort()
{
    std::abort();
}

LB_OS_EXPORT FAULT void ThrowInThread()
{
    throw std::runtime_error("aus einem Thread");
}

LB_OS_EXPORT FAULT void FreeTwice()
{
    // Larger than the blocks that the C library caches without checking them.
    constexpr std::size_t c_Size = 100000;
    void* volatile const block = std::malloc(c_Size);
    void* volatile const fence = std::malloc(c_Size);
    std::free(block);
    std::free(block);
    std::free(fence);
}

LB_OS_EXPORT FAULT void LockTwice()
{
    static std::mutex s_mutex;
    s_mutex.lock();
    std::thread([] { s_mutex.lock(); }).join();
}

LB_OS_EXPORT FAULT void LoopForever()
{
    while (s_zero == 0)
    {
    }
}

LB_OS_EXPORT FAULT void LeaveAtOnce()
{
    std::_Exit(EXIT_SUCCESS);
}

LB_OS_EXPORT FAULT void UseAllMemory() noexcept
{
    constexpr std::size_t c_Limit = std::size_t{64} << 20U;
    static_cast<void>(LbOs::LimitMemory(c_Limit));
    // Each block is twice as large as the one before, so that memory ends soon even if the system sets no limit.
    for (std::size_t block = std::size_t{1} << 20U; true; block *= 2)
    {
        *static_cast<volatile char*>(::operator new(block)) = 1;
    }
}

class CIncomplete
{
public:
    CIncomplete() { CallMissing(); }
    virtual ~CIncomplete() = default;

    FAULT void CallMissing() { Missing(); }

protected:
    virtual void Missing() = 0;
};

class CComplete : public CIncomplete
{
    void Missing() override {}
};

LB_OS_EXPORT FAULT void CallPureVirtual()
{
    const CComplete object;
}

LB_OS_EXPORT FAULT void BreakAssertion()
{
    assert(s_zero == 1);
}

LB_OS_EXPORT FAULT void WriteBehindPage()
{
    constexpr std::size_t c_Page = 4096;
    auto* const pages = static_cast<volatile char*>(LbOs::AllocatePages(2 * c_Page));
    LbOs::ProtectPages(const_cast<char*>(pages) + c_Page, c_Page, LbOs::c_ProtectionReadExecute);
    for (std::size_t index = 0; index < 2 * c_Page; ++index)
    {
        pages[index] = 1;
    }
}

} // namespace Faults

class CFaultModel : public LuUnitTest
{
    LB_RTTI(CFaultModel)

    void InitSubtests() override
    {
        AddSubtest(L"gesund davor", [] { return eR_Passed; });
        addFault(L"WriteToNull", Faults::WriteToNull);
        addFault(L"OverflowStack", [] { Faults::OverflowStack(0); });
        addFault(L"CallAbort", Faults::CallAbort);
        addFault(L"ThrowInThread", [] { std::thread(Faults::ThrowInThread).join(); });
        addFault(L"FreeTwice", Faults::FreeTwice);
        addFault(L"LockTwice", Faults::LockTwice);
        addFault(L"LoopForever", Faults::LoopForever);
        addFault(L"LeaveAtOnce", Faults::LeaveAtOnce);
        addFault(L"UseAllMemory", Faults::UseAllMemory);
        addFault(L"CallPureVirtual", Faults::CallPureVirtual);
        addFault(L"BreakAssertion", Faults::BreakAssertion);
        addFault(L"WriteBehindPage", Faults::WriteBehindPage);
        AddSubtest(L"gesund danach", [] { return eR_Passed; });
    }

    template<class F>
    void addFault(const wchar_t* name, F fault)
    {
        AddSubtest(name, [fault] {
            fault();
            return eR_Passed;
        });
    }
};
LB_RTTI_CLASS(CFaultModel, LuUnitTest)
