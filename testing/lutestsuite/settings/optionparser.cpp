#include "testing/lutestsuite/settings/optionparser.h"

#include <algorithm>

#include "base/lbformat.h"

namespace
{

std::vector<std::wstring> splitAtBlanks(const std::wstring& text)
{
    std::vector<std::wstring> pieces;
    for (std::size_t start = 0; start < text.size();)
    {
        const std::size_t end = std::min(text.find(L' ', start), text.size());
        pieces.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return pieces;
}

} // namespace

LuTestSuiteUtils::LuOptionParser::SFunctionHandler::SFunctionHandler(const std::wstring& nameList, bool withValue)
    : names(splitAtBlanks(nameList)), takesValue(withValue)
{
}

LuTestSuiteUtils::LuOptionParser::SFunctionHandler::~SFunctionHandler() = default;

void LuTestSuiteUtils::LuOptionParser::SFunctionHandler::Apply() {}

void LuTestSuiteUtils::LuOptionParser::SFunctionHandler::Apply(const std::wstring& /*value*/) {}

/// For an option with a value, looks for the first of its names that is a prefix of the argument. The option matches
/// only if the argument equals that name, so an argument of the form name=value never matches.
bool LuTestSuiteUtils::LuOptionParser::SFunctionHandler::Matches(const std::wstring& argument) const
{
    if (!takesValue)
    {
        return std::ranges::find(names, argument) != names.end();
    }
    const auto name = std::ranges::find_if(names, [&](const std::wstring& each) { return argument.starts_with(each); });
    return name != names.end() && name->size() == argument.size();
}

LuTestSuiteUtils::LuOptionParser::LuOptionParser(int argumentCount, const wchar_t* const* arguments)
{
    if (argumentCount > 1)
    {
        m_arguments.assign(arguments + 1, arguments + argumentCount);
    }
}

void LuTestSuiteUtils::LuOptionParser::Parse() const
{
    for (std::size_t index = 0; index < m_arguments.size(); ++index)
    {
        const std::wstring& argument = m_arguments[index];
        if (argument.empty())
        {
            continue;
        }
        if (!isOption(argument))
        {
            if (m_strayArguments != nullptr)
            {
                m_strayArguments->push_back(argument);
            }
            continue;
        }
        SFunctionHandler& option = findOption(argument);
        if (!option.takesValue)
        {
            option.Apply();
            continue;
        }
        const std::wstring value = getValueAfter(index);
        if (value.empty())
        {
            throw LbFormat(L"Fehler: Option %s erwartet zusätzlichen Wert\n", argument);
        }
        option.Apply(value);
        ++index;
    }
}

bool LuTestSuiteUtils::LuOptionParser::isOption(const std::wstring& argument) const
{
    return !argument.empty() && m_prefixes.find(argument.front()) != std::wstring::npos;
}

LuTestSuiteUtils::LuOptionParser::SFunctionHandler&
LuTestSuiteUtils::LuOptionParser::findOption(const std::wstring& argument) const
{
    const auto option = std::ranges::find_if(m_options, [&](const auto& each) { return each->Matches(argument); });
    if (option == m_options.end())
    {
        throw LbFormat(L"Fehler: Unbekannte Option %s\n", argument);
    }
    return **option;
}

/// The argument after `index`; empty if it is missing or is an option.
std::wstring LuTestSuiteUtils::LuOptionParser::getValueAfter(std::size_t index) const
{
    const bool hasValue = index + 1 < m_arguments.size() && !isOption(m_arguments[index + 1]);
    return hasValue ? m_arguments[index + 1] : std::wstring();
}
