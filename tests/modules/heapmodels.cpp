/// Cases that leak memory, and cases that do not.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <future>
#include <iostream>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "base/luunittest.h"

namespace
{

/// Volatile, because the compiler removes allocations that it recognises as unused.
void* (*volatile s_malloc)(std::size_t) = std::malloc;
void* s_kept = nullptr;
std::time_t s_begin = 0;
const char* volatile s_text = nullptr;
std::once_flag s_once;

void writeTime(const std::tm* time)
{
    static char s_buffer[32];
    std::strftime(s_buffer, sizeof(s_buffer), "%H:%M", time);
    s_text = s_buffer;
}

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
        AddSubtest(L"druckt eine Zeile", [] { std::printf("eine Zeile\n"); });
        AddSubtest(L"schreibt in den Strom", [] { std::cout << "eine Zeile" << std::endl; });
        AddSubtest(L"rechnet Ortszeit", [] { writeTime(std::localtime(&s_begin)); });
        AddSubtest(L"rechnet Sekunden", [] {
            std::tm time = {};
            time.tm_year = 100;
            s_begin = std::mktime(&time);
        });
        AddSubtest(L"schreibt Ortszeit", [] { s_text = std::ctime(&s_begin); });
        AddSubtest(L"nennt einen Fehler", [] { s_text = std::strerror(2); });
        AddSubtest(L"ruft einmal", [] { std::call_once(s_once, [] {}); });
        AddSubtest(L"wartet auf Zukunft", [] { std::async(std::launch::async, [] { return 1; }).get(); });
    }
};
LB_RTTI_CLASS(CHeapModel, LuUnitTest)
