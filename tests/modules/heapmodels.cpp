/// Unit tests that leave memory behind, or do not.

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "base/luunittest.h"

namespace
{

/// The compiler does not see through it: it leaves out allocations that nobody needs.
void* (*volatile s_malloc)(std::size_t) = std::malloc;
void* s_kept = nullptr;

} // namespace

class CHeapModel : public LuUnitTest
{
    LB_RTTI(CHeapModel)

    void InitSubtests() override
    {
        AddSubtest(L"wächst um 16 Bytes", [] { s_kept = s_malloc(16); });
        AddSubtest(L"gibt 16 Bytes zurück", [] { std::free(s_kept); });
        AddSubtest(L"gibt alles zurück", [] { std::free(s_malloc(100'000)); });
        AddSubtest(L"holt 54321 Bytes", [] { std::free(s_malloc(54'321)); });
        AddSubtest(L"fängt eine Ausnahme", [] {
            try
            {
                throw std::runtime_error("lang genug für einen Block auf dem Heap");
            }
            catch (const std::exception&)
            {
            }
        });
        AddSubtest(L"wirft eine Ausnahme", [] { throw std::wstring(L"lang genug für einen Block auf dem Heap"); });
        AddSubtest(L"meldet viel", [this] {
            for (int line = 0; line < 100; ++line)
            {
                Info(L"eine Zeile, die mit anderen zusammen wächst");
            }
        });
        AddSubtest(L"startet einen Thread", [] { std::thread([] { std::vector<int> values(1000); }).join(); });
    }
};
LB_RTTI_CLASS(CHeapModel, LuUnitTest)
