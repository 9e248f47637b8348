#include "testing/lutestsuite/selection/expression.h"

#include "base/lbformat.h"
#include "base/os/process.h"

namespace
{

/// Address space, not memory: pages are taken as the recursion reaches them.
constexpr std::size_t c_LargestStack = std::size_t{1} << 30U;

/// What every thread has to spare.
constexpr std::size_t c_SmallStack = std::size_t{512} << 10U;

/// Measured: 300 bytes for a character under a simple repetition, 50 more for each character of the expression inside
/// the repetition. The bound leaves a factor of three, for builds with sanitizers.
constexpr std::size_t c_StackPerStep = 256;
constexpr std::size_t c_StepsPerCharacter = 4;

/// The largest stack when the product is beyond it.
std::size_t getStackSize(std::size_t nameLength, std::size_t sourceLength)
{
    constexpr std::size_t c_Limit = c_LargestStack / c_StackPerStep;
    const std::size_t steps = sourceLength + c_StepsPerCharacter;
    return nameLength + 1 > c_Limit / steps ? c_LargestStack : (nameLength + 1) * steps * c_StackPerStep;
}

} // namespace

void LuTestSuite::RunWithExpressionStack(const SExpressionSizes& sizes, const std::function<void()>& function)
{
    const std::size_t size = getStackSize(sizes.name, sizes.source);
    if (size <= c_SmallStack)
    {
        function();
    }
    else
    {
        LbOs::RunOnStack(size + c_SmallStack, function);
    }
}

bool LuTestSuite::CExpression::Matches(const std::wstring& name) const
{
    checkLength(name);
    return std::regex_match(name, m_expression);
}

bool LuTestSuite::CExpression::IsFoundIn(const std::wstring& name) const
{
    checkLength(name);
    return std::regex_search(name, m_expression);
}

void LuTestSuite::CExpression::checkLength(const std::wstring& name) const
{
    if (getStackSize(name.size(), m_sourceLength) >= c_LargestStack)
    {
        throw LbFormat(L"Name mit %u Zeichen ist zu lang für einen regulären Ausdruck: %s...", name.size(),
                       name.substr(0, 80));
    }
}
