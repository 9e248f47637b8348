/// Lines of a text.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

namespace Runner
{

/// The lines of the text without their line feeds.
inline std::vector<std::wstring> SplitLines(const std::wstring& text)
{
    std::vector<std::wstring> lines;
    for (std::size_t start = 0; start < text.size();)
    {
        const std::size_t end = std::min(text.find(L'\n', start), text.size());
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

} // namespace Runner
