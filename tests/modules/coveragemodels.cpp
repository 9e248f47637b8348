/// A unit test whose executed lines are counted if the compiler supports that.

#include "base/luunittest.h"

namespace
{

int sumUpTo(int last)
{
    int sum = 0;
    for (int number = 1; number <= last; ++number)
    {
        sum += number;
    }
    return sum;
}

int multiplyUpTo(int last)
{
    int product = 1;
    for (int number = 2; number <= last; ++number)
    {
        product *= number;
    }
    return product;
}

int countBits(unsigned number)
{
    int count = 0;
    while (number != 0)
    {
        count += static_cast<int>(number & 1U);
        number >>= 1U;
    }
    return count;
}

} // namespace

class CCoverageModel : public LuUnitTest
{
    LB_RTTI(CCoverageModel)

    void InitSubtests() override
    {
        AddSubtest(L"Summe", [this] { Check(sumUpTo(4) == 10, L"Summe"); });
        AddSubtest(L"Produkt", [this] { Check(multiplyUpTo(4) == 24, L"Produkt"); });
        AddSubtest(L"Bits", [this] { Check(countBits(7) == 3, L"Bits"); });
    }
};
LB_RTTI_CLASS(CCoverageModel, LuUnitTest)
