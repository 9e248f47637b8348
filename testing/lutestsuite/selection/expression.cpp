#include "testing/lutestsuite/selection/expression.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/os/process.h"
#include "testing/lutestsuite/selection/wideregex.h"

namespace
{

using LuTestSuite::CStackExhausted;
using LuTestSuite::CStackLimit;

/// Sizes of address space, not of memory: the system provides pages when the recursion reaches them. If the address
/// space is limited, the largest size that fits is used.
constexpr std::size_t c_StackSizes[] = {std::size_t{1} << 28U, std::size_t{1} << 27U, std::size_t{1} << 26U,
                                        std::size_t{1} << 25U};

/// Stack reserved for the recursion between two checks: the engine may pass through 100,000 states of an expression
/// without reading the text. Not more than half of the stack is reserved.
constexpr std::size_t c_Spare = std::size_t{1} << 25U;

constexpr std::size_t c_MostShownCharacters = 80;

/// A position in a text. Comparing two positions checks the stack: the engine compares before it reads a character.
class CCheckedPlace
{
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = wchar_t;
    using difference_type = std::ptrdiff_t;
    using pointer = const wchar_t*;
    using reference = const wchar_t&;

    CCheckedPlace() = default;
    CCheckedPlace(const wchar_t* place, const CStackLimit& limit) : m_place(place), m_limit(&limit) {}

    reference operator*() const { return *m_place; }

    CCheckedPlace& operator++()
    {
        ++m_place;
        return *this;
    }

    CCheckedPlace operator++(int) { return std::exchange(*this, {m_place + 1, *m_limit}); }

    CCheckedPlace& operator--()
    {
        --m_place;
        return *this;
    }

    CCheckedPlace operator--(int) { return std::exchange(*this, {m_place - 1, *m_limit}); }

    bool operator==(const CCheckedPlace& other) const
    {
        if (m_limit != nullptr)
        {
            m_limit->Check();
        }
        return m_place == other.m_place;
    }

private:
    const wchar_t* m_place = nullptr;
    const CStackLimit* m_limit = nullptr;
};

/// A message quotes only the beginning of a long text.
std::wstring shorten(const std::wstring& text)
{
    return text.size() > c_MostShownCharacters ? text.substr(0, c_MostShownCharacters) + L"..." : text;
}

/// Runs `operation`; if the stack is exhausted, throws a message that names the expression.
template<typename T>
auto watchStack(const std::wstring& text, const T& operation)
{
    try
    {
        return operation();
    }
    catch (const CStackExhausted&)
    {
        throw LbFormat(L"Regulärer Ausdruck '%s' braucht mehr Stack, als es gibt", shorten(text));
    }
}

} // namespace

std::wstring LuTestSuite::DescribeRefusal(const std::regex_error& error, std::wstring_view invalid,
                                          const std::wstring& text)
{
    switch (error.code())
    {
    case std::regex_constants::error_space:
    case std::regex_constants::error_complexity:
    case std::regex_constants::error_stack:
        return LbFormat(L"Regulärer Ausdruck '%s' ist zu groß", shorten(text));
    default:
        return LbFormat(L"%s '%s'", invalid, shorten(text));
    }
}

void LuTestSuite::RunOnExpressionStack(const std::function<void(const CStackLimit&)>& function)
{
    bool hasBegun = false;
    for (const std::size_t size : c_StackSizes)
    {
        try
        {
            LbOs::RunOnStack(size, [&] {
                hasBegun = true;
                function({size, std::min(size / 2, c_Spare)});
            });
            return;
        }
        catch (const LbException&)
        {
            if (hasBegun || size == std::end(c_StackSizes)[-1])
            {
                throw;
            }
        }
    }
}

LuTestSuite::CExpression::CExpression(const std::wstring& source, std::wstring text, const CStackLimit& limit)
    : m_text(std::move(text)), m_limit(&limit),
      m_expression(watchStack(m_text, [&] { return MakeWideRegex(source, &limit); }))
{
}

bool LuTestSuite::CExpression::Matches(const std::wstring& name) const
{
    return watchStack(m_text, [&] {
        return std::regex_match(CCheckedPlace(name.data(), *m_limit),
                                CCheckedPlace(name.data() + name.size(), *m_limit), m_expression);
    });
}

bool LuTestSuite::CExpression::IsFoundIn(const std::wstring& name) const
{
    return watchStack(m_text, [&] {
        return std::regex_search(CCheckedPlace(name.data(), *m_limit),
                                 CCheckedPlace(name.data() + name.size(), *m_limit), m_expression);
    });
}
