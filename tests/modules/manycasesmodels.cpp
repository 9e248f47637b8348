/// Many cases of every outcome, with names and messages of all kinds of characters: for the readers of reports.

#include "base/lbformat.h"
#include "base/luunittest.h"

namespace
{

/// Repetitions make them many: each case gets an object that makes all of its sub-tests.
constexpr std::uint32_t c_Cases = 77;

constexpr LuUnitTest::EResult c_Results[] = {LuUnitTest::eR_Passed, LuUnitTest::eR_Passed, LuUnitTest::eR_Failed,
                                             LuUnitTest::eR_NoInput, LuUnitTest::eR_Exception, LuUnitTest::eR_Different,
                                             // A number that is no result.
                                             static_cast<LuUnitTest::EResult>(17)};

constexpr const wchar_t* c_Texts[] = {L"schlicht",
                                      L"größer als Maß",
                                      L"<a href=\"x\">'&amp;'</a>",
                                      L"]]> <!-- <![CDATA[ &unbekannt; &#0;",
                                      L"\x01\x02\x1B[31m\x7F\x85\x9F\t\r",
                                      L"€ \U0001F600 \uFFFE",
                                      L""};

const wchar_t* getText(std::uint32_t index)
{
    return c_Texts[index % std::size(c_Texts)];
}

} // namespace

class CManyCases : public LuUnitTest
{
    LB_RTTI(CManyCases)

    void InitSubtests() override
    {
        for (std::uint32_t index = 0; index < c_Cases; ++index)
        {
            AddSubtest(LbFormat(L"%02u %s", index, getText(index)), [this, index] {
                Info(L"%s", getText(index));
                Error(L"%s", getText(index / 7));
                return c_Results[index % 11 % std::size(c_Results)];
            });
        }
    }
};
LB_RTTI_CLASS(CManyCases, LuUnitTest)
