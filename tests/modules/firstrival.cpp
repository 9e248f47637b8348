/// A class whose name another module also registers. Its case shows which module is used.

#include "base/luunittest.h"

namespace
{

class CRivalModel : public LuUnitTest
{
    LB_RTTI(CRivalModel)

    void InitSubtests() override
    {
        AddSubtest(L"Erster", [] { return eR_Passed; });
    }
};
LB_RTTI_CLASS(CRivalModel, LuUnitTest)

} // namespace
