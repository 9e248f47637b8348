#include "base/lbcommandline.h"

#include <algorithm>

namespace
{

constexpr bool isBlank(wchar_t character)
{
    return character == L' ' || character == L'\t';
}

std::size_t countBackslashes(std::wstring_view text)
{
    return std::min(text.find_first_not_of(L'\\'), text.size());
}

/// Removes the first word from the text and returns it. Precondition: the text does not begin with a blank.
std::wstring takeWord(std::wstring_view& text)
{
    std::wstring word;
    bool isQuoted = false;
    while (!text.empty() && (isQuoted || !isBlank(text.front())))
    {
        const std::size_t backslashes = countBackslashes(text);
        text.remove_prefix(backslashes);
        const bool isBeforeMark = !text.empty() && text.front() == L'"';
        // Before a quotation mark, two backslashes mean one, and a remaining single backslash escapes the mark.
        word.append(isBeforeMark ? backslashes / 2 : backslashes, L'\\');
        if (isBeforeMark && backslashes % 2 == 0)
        {
            const bool isDoubled = isQuoted && text.starts_with(L"\"\"");
            word.append(isDoubled ? L"\"" : L"");
            isQuoted = isDoubled || !isQuoted;
            text.remove_prefix(isDoubled ? 2 : 1);
        }
        else if (isBeforeMark || (backslashes == 0 && !text.empty()))
        {
            word += text.front();
            text.remove_prefix(1);
        }
    }
    return word;
}

} // namespace

std::wstring LbCommandLine::Quote(std::wstring_view argument)
{
    std::wstring quoted = L"\"";
    while (!argument.empty())
    {
        const std::size_t backslashes = countBackslashes(argument);
        argument.remove_prefix(backslashes);
        const bool isBeforeMark = argument.empty() || argument.front() == L'"';
        quoted.append(isBeforeMark ? backslashes * 2 : backslashes, L'\\');
        if (!argument.empty())
        {
            quoted.append(argument.front() == L'"' ? L"\\" : L"").append(1, argument.front());
            argument.remove_prefix(1);
        }
    }
    return quoted + L"\"";
}

std::vector<std::wstring> LbCommandLine::Split(std::wstring_view text)
{
    std::vector<std::wstring> words;
    while (true)
    {
        const std::size_t begin = std::min(text.find_first_not_of(L" \t"), text.size());
        text.remove_prefix(begin);
        if (text.empty())
        {
            return words;
        }
        words.push_back(takeWord(text));
    }
}
