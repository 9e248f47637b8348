/// Unit tests that return every result of a sub-test.

#include "base/luunittest.h"

class CResultModel : public LuUnitTest
{
    LB_RTTI(CResultModel)

    void InitSubtests() override
    {
        AddSubtest(L"keine Eingabe", [] { return eR_NoInput; });
        AddSubtest(L"bestanden", [] { return eR_Passed; });
        AddSubtest(L"fehlgeschlagen", [] { return eR_Failed; });
        AddSubtest(L"eigene Ausnahme", [] { return eR_Exception; });
        AddSubtest(L"abweichend", [] { return eR_Different; });
        AddSubtest(L"unbekannter Wert", [] { return static_cast<EResult>(99); });
        AddSubtest(L"ohne Antwort", [] {});
    }
};
LB_RTTI_CLASS(CResultModel, LuUnitTest)

class CPassedModel : public LuUnitTest
{
    LB_RTTI(CPassedModel)

    void InitSubtests() override
    {
        AddSubtest(L"eins", [] { return eR_Passed; });
        AddSubtest(L"zwei mit Lücke", [] { return eR_Passed; });
    }
};
LB_RTTI_CLASS(CPassedModel, LuUnitTest)

class CFailedModel : public LuUnitTest
{
    LB_RTTI(CFailedModel)

    void InitSubtests() override
    {
        AddSubtest(L"allein", [] { return eR_Failed; });
    }
};
LB_RTTI_CLASS(CFailedModel, LuUnitTest)
