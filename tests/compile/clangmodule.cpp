/// A test module that another compiler builds and this build's host runs.
#include <stdexcept>
#include <string>

#include "base/luunittest.h"

class CClangModel : public LuUnitTest
{
    LB_RTTI(CClangModel)

    void InitSubtests() override
    {
        AddSubtest(L"meldet", [this] { Info(L"%s %d", std::wstring(L"Breite"), 12); });
        AddSubtest(L"prüft", [this] { Check(1 + 1 == 3, L"%d statt %d", 2, 3); });
        AddSubtest(L"wirft", [] { throw std::runtime_error("aus dem Modul"); });
    }
};
LB_RTTI_CLASS(CClangModel, LuUnitTest)
