/// A unit test that prints wide text itself.

#include <cwchar>

#include "base/luunittest.h"

class CWideOutputModel : public LuUnitTest
{
    LB_RTTI(CWideOutputModel)

    void InitSubtests() override
    {
        std::wprintf(L"[Anfang]");
        AddSubtest(L"Fall", [] { std::wprintf(L"[Fall]"); });
    }
};
LB_RTTI_CLASS(CWideOutputModel, LuUnitTest)
