/// A class of a name that another module has, too. Its case tells the modules apart.

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
