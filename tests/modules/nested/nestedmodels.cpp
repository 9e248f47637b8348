/// A unit test in a module that is in a folder beside the host.

#include "base/luunittest.h"

class CNestedModel : public LuUnitTest
{
    LB_RTTI(CNestedModel)

    void InitSubtests() override
    {
        AddSubtest(L"Fall", [] { return eR_Passed; });
    }
};
LB_RTTI_CLASS(CNestedModel, LuUnitTest)
