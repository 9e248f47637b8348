#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "base/luunittest.h"

/// Its cases end the process, are skipped, or pass only at the second try.
class CMoods : public LuUnitTest
{
    LB_RTTI(CMoods)
    void InitSubtests() override
    {
        AddSubtest(L"leaves", [] { std::_Exit(0); });
        AddSubtest(L"skips", [this] { Info(L"Übersprungen: no mood"); });
        AddSubtest(L"passes at the second try", [this] {
            const std::filesystem::path mark = std::filesystem::path(GetDataDirectory()) / "mark";
            Check(std::filesystem::exists(mark), L"the first try");
            std::ofstream(mark).put('x');
        });
    }
};
LB_RTTI_CLASS(CMoods, LuUnitTest)
