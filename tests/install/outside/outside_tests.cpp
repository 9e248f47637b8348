#include <string>

#include "base/luunittest.h"

class COutsideTest : public LuUnitTest
{
    LB_RTTI(COutsideTest)
    void InitSubtests() override
    {
        AddSubtest(L"adds", [this] { Check(1 + 1 == 2, L"%d", 1 + 1); });
        AddFileSubtests(L"*.txt", [this](const std::wstring& path) { Check(!path.empty(), L"no path"); });
    }
};
LB_RTTI_CLASS(COutsideTest, LuUnitTest)
