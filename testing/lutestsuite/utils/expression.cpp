#include "testing/lutestsuite/utils/expression.h"

#include "base/lbformat.h"
#include "base/os/process.h"

namespace
{

/// Address space, not memory: pages are taken as the recursion reaches them.
constexpr std::size_t c_StackSize = std::size_t{1} << 30U;

/// Measured: 300 bytes for a character under a simple repetition, 50 more for each character of the expression inside
/// the repetition. The bound leaves a factor of three, for builds with sanitizers.
constexpr std::size_t c_StackPerStep = 256;
constexpr std::size_t c_StepsPerCharacter = 4;

} // namespace

void LuTestSuite::RunWithExpressionStack(const std::function<void()>& function)
{
    LbOs::RunOnStack(c_StackSize, function);
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
    constexpr std::size_t c_Limit = c_StackSize / c_StackPerStep;
    if (name.size() >= c_Limit / (m_sourceLength + c_StepsPerCharacter))
    {
        throw LbFormat(L"Name mit %u Zeichen ist zu lang für einen regulären Ausdruck: %s...", name.size(),
                       name.substr(0, 80));
    }
}
