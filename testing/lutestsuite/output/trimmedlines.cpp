#include "testing/lutestsuite/lutestsuiteutils.h"

std::wstring LuTestSuiteUtils::GetTrimmedLines(const std::wstring& text, std::uint32_t maxLines)
{
    std::size_t end = 0;
    for (std::uint32_t line = 0; line < maxLines; ++line)
    {
        const std::size_t lineFeed = text.find(L'\n', end);
        if (lineFeed == std::wstring::npos)
        {
            return text;
        }
        end = lineFeed + 1;
    }
    return text.substr(0, end);
}
