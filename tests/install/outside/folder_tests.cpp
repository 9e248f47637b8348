#include "base/luunittest.h"

class CFolderTest : public LuUnitTest
{
    LB_RTTI(CFolderTest)
    void InitSubtests() override
    {
        AddSubtest(L"stands in a folder", [] { return eR_Passed; });
    }
};
LB_RTTI_CLASS(CFolderTest, LuUnitTest)
