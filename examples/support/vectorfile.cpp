#include "examples/support/vectorfile.h"

#include <algorithm>
#include <charconv>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"

namespace
{

constexpr std::string_view c_Mark = ": ";

/// Throws unless all of `digits` is one number.
std::uint32_t readNumber(std::string_view digits, int base)
{
    std::uint32_t number = 0;
    const char* const end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, number, base);
    if (error != std::errc() || stop != end)
    {
        throw LbException(LbFormat(L"'%S' is no number of base %d", std::string(digits), base));
    }
    return number;
}

std::string repeatText(const std::string& text, std::uint32_t count)
{
    std::string result;
    result.reserve(text.size() * count);
    for (std::uint32_t index = 0; index < count; ++index)
    {
        result += text;
    }
    return result;
}

} // namespace

CVectorFile::CVectorFile(const std::wstring& path)
{
    const std::string content = LbFileSystem::ReadFile8Bit(path);
    for (std::size_t start = 0; start < content.size();)
    {
        const std::size_t end = std::min(content.find('\n', start), content.size());
        const std::string line = content.substr(start, end - start);
        start = end + 1;
        if (line.empty() || line.front() == '#')
        {
            continue;
        }
        const std::size_t mark = line.find(c_Mark);
        if (mark == std::string::npos)
        {
            throw LbException(LbFormat(L"%s: no key in the line '%S'", path, line));
        }
        m_lines.emplace_back(line.substr(0, mark), line.substr(mark + c_Mark.size()));
    }
}

bool CVectorFile::Has(std::string_view key) const
{
    return std::ranges::any_of(m_lines, [key](const auto& line) { return line.first == key; });
}

std::string CVectorFile::GetText(std::string_view key) const
{
    if (!Has(key))
    {
        throw LbException(LbFormat(L"the vector has no '%S'", std::string(key)));
    }
    std::string text;
    for (const auto& [name, value] : m_lines)
    {
        if (name == key)
        {
            text += value;
        }
    }
    return text;
}

std::string CVectorFile::GetBytes(std::string_view key) const
{
    constexpr int c_Base = 16;
    constexpr std::size_t c_DigitsPerByte = 2;
    std::string digits = GetText(key);
    std::erase(digits, ' ');
    std::string bytes;
    for (std::size_t index = 0; index < digits.size(); index += c_DigitsPerByte)
    {
        bytes += static_cast<char>(readNumber(std::string_view(digits).substr(index, c_DigitsPerByte), c_Base));
    }
    return bytes;
}

std::uint32_t CVectorFile::GetHexNumber(std::string_view key) const
{
    constexpr int c_Base = 16;
    return readNumber(GetText(key), c_Base);
}

std::string CVectorFile::GetPlainData() const
{
    constexpr int c_Base = 10;
    const std::string once = Has("hex") ? GetBytes("hex") : GetText("text");
    return Has("repeat") ? repeatText(once, readNumber(GetText("repeat"), c_Base)) : once;
}
