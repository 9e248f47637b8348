#include "base/lbformat.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

struct SUnit
{
    double limit; ///< the unit is used for times below this, in seconds
    double factor;
    const wchar_t* name;
};

constexpr SUnit c_Units[] = {{1e-6, 1e9, L"ns"}, {0.001, 1e6, L"\u00B5s"}, {1.0, 1000.0, L"ms"}};

} // namespace

std::wstring LuTestSuiteUtils::FormatTime(double seconds, std::uint32_t decimals)
{
    if (seconds == 0.0)
    {
        return L"0 s";
    }
    for (const SUnit& unit : c_Units)
    {
        if (seconds < unit.limit)
        {
            return LbFormat(L"%.*f", decimals, seconds * unit.factor) + unit.name;
        }
    }
    return LbFormat(L"%.*f", decimals, seconds) + L"s";
}
