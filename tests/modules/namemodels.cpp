/// Classes and sub-tests for tests of the search by name.

#include <string>

#include "base/luunittest.h"

class CNameModel : public LuUnitTest
{
    LB_RTTI(CNameModel)

    void InitSubtests() override
    {
        AddSubtest(L"doppelt", [this] { Info(L"der erste"); });
        AddSubtest(L"doppelt", [this] { Error(L"der zweite"); });
        AddSubtest(L"Groß", [] {});
    }
};
LB_RTTI_CLASS(CNameModel, LuUnitTest)

/// Can be created by name, but is not a unit test.
class CNoUnitTest : public IObject
{
    LB_RTTI(CNoUnitTest)
};
LB_RTTI_CLASS(CNoUnitTest, IObject)

/// A unit test that cannot be created by name.
class CNotCreatableModel : public LuUnitTest
{
    LB_RTTI(CNotCreatableModel)

    void InitSubtests() override
    {
        AddSubtest(L"Fall", [] {});
    }
};
LB_RTTI_ABSTRACT(CNotCreatableModel, LuUnitTest)

/// The first case has a name of the maximum length for a request to a child. The other two names are longer, and the
/// last one is too long for some regular expressions.
class CLongNameModel : public LuUnitTest
{
    LB_RTTI(CLongNameModel)

    void InitSubtests() override
    {
        for (const std::size_t length : {1023U, 1024U, 50'000U})
        {
            AddSubtest(std::wstring(length, L'n'), [this] { Info(L"gelaufen"); });
        }
    }
};
LB_RTTI_CLASS(CLongNameModel, LuUnitTest)

/// Forms the names of its cases itself; each case reports how many names its process has formed.
class CFormedNameModel : public LuUnitTest
{
    LB_RTTI(CFormedNameModel)

    void InitSubtests() override
    {
        for (int number = 0; number < 50; ++number)
        {
            AddSubtest(std::to_wstring(number), [this] { Info(L"%u", s_uiFormed); });
        }
        AddSubtest(L"10", [this] { Error(L"der zweite"); });
    }

    std::wstring GetSubtestName(std::uint32_t subtest) const override
    {
        ++s_uiFormed;
        return L"Fall " + LuUnitTest::GetSubtestName(subtest);
    }

    static inline std::uint32_t s_uiFormed = 0;
};
LB_RTTI_CLASS(CFormedNameModel, LuUnitTest)
