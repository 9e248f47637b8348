#include "testing/lutestsuite/lutestsuitemarkupwriter.h"

#include <algorithm>
#include <iterator>

#include "base/lbformat.h"

namespace
{

constexpr std::wstring_view c_LineEnd = L"\n";

struct SEntity
{
    wchar_t character;
    std::wstring_view text;
};

constexpr SEntity c_Entities[] = {
    {L'"', L"&quot;"}, {L'&', L"&amp;"}, {L'\'', L"&apos;"}, {L'<', L"&lt;"}, {L'>', L"&gt;"},
};

} // namespace

void LuTestSuiteUtils::LuMarkupWriter::Indent()
{
    for (std::uint32_t level = 0; level < m_level; ++level)
    {
        m_file.Write(L"\t");
    }
}

void LuTestSuiteUtils::LuMarkupWriter::Write(std::wstring_view text)
{
    m_file.Write(text);
}

void LuTestSuiteUtils::LuMarkupWriter::WriteOpen(std::wstring_view text)
{
    Indent();
    Write(text);
    ++m_level;
}

void LuTestSuiteUtils::LuMarkupWriter::WriteLineOpen(std::wstring_view text)
{
    WriteLine(text);
    ++m_level;
}

void LuTestSuiteUtils::LuMarkupWriter::WriteClose(std::wstring_view text)
{
    --m_level;
    Indent();
    Write(text);
}

void LuTestSuiteUtils::LuMarkupWriter::WriteLineClose(std::wstring_view text)
{
    --m_level;
    WriteLine(text);
}

void LuTestSuiteUtils::LuMarkupWriter::WriteLine(std::wstring_view text)
{
    Indent();
    Write(text);
    Write(c_LineEnd);
}

void LuTestSuiteUtils::LuMarkupWriter::WriteElement(std::wstring_view name, std::wstring_view value)
{
    // Writes piece by piece without building a string: reports have hundreds of thousands of these lines.
    Indent();
    for (const std::wstring_view piece : {std::wstring_view(L"<"), name, std::wstring_view(L">"), value,
                                          std::wstring_view(L"</"), name, std::wstring_view(L">\n")})
    {
        Write(piece);
    }
}

void LuTestSuiteUtils::LuMarkupWriter::WriteElement(std::wstring_view name, std::int32_t value)
{
    WriteElement(name, LbFormat(L"%d", value));
}

void LuTestSuiteUtils::LuMarkupWriter::WriteElement(std::wstring_view name, std::uint32_t value)
{
    WriteElement(name, LbFormat(L"%u", value));
}

void LuTestSuiteUtils::LuMarkupWriter::WriteElement(std::wstring_view name, float value)
{
    WriteElement(name, static_cast<double>(value));
}

void LuTestSuiteUtils::LuMarkupWriter::WriteElement(std::wstring_view name, double value)
{
    WriteElement(name, LbFormat(L"%f", value));
}

void LuTestSuiteUtils::LuMarkupWriter::WriteElement(std::wstring_view name, std::int64_t value)
{
    WriteElement(name, LbFormat(L"%I64i", value));
}

void LuTestSuiteUtils::LuMarkupWriter::WriteElement(std::wstring_view name, std::uint64_t value)
{
    WriteElement(name, LbFormat(L"%I64u", value));
}

void LuTestSuiteUtils::LuMarkupWriter::WriteElement(std::wstring_view name, std::wstring_view attributes,
                                                    std::wstring_view value)
{
    Indent();
    Write(LbFormat(L"<%s %s>%s</%s>\n", name, attributes, value, name));
}

void LuTestSuiteUtils::LuMarkupWriter::WriteElement(std::wstring_view name, std::wstring_view attributes,
                                                    std::int32_t value)
{
    WriteElement(name, attributes, LbFormat(L"%d", value));
}

void LuTestSuiteUtils::LuMarkupWriter::WriteElement(std::wstring_view name, std::wstring_view attributes,
                                                    std::uint32_t value)
{
    WriteElement(name, attributes, LbFormat(L"%d", value));
}

void LuTestSuiteUtils::LuMarkupWriter::WriteElement(std::wstring_view name, std::wstring_view attributes, double value)
{
    WriteElement(name, attributes, LbFormat(L"%f", value));
}

std::wstring LuTestSuiteUtils::LuMarkupWriter::Escape(std::wstring_view text)
{
    std::wstring result;
    result.reserve(text.size());
    for (const wchar_t character : text)
    {
        const auto* const entity = std::ranges::find(c_Entities, character, &SEntity::character);
        if (entity == std::end(c_Entities))
        {
            result.push_back(character);
        }
        else
        {
            result.append(entity->text);
        }
    }
    return result;
}

std::wstring LuTestSuiteUtils::LuMarkupWriter::Unescape(std::wstring_view text)
{
    std::wstring result;
    result.reserve(text.size());
    // Copies the text before each '&' in one piece, because most texts contain no entity.
    for (std::size_t start = text.find(L'&'); start != std::wstring_view::npos; start = text.find(L'&'))
    {
        result.append(text.substr(0, start));
        text.remove_prefix(start);
        const auto* const entity =
            std::ranges::find_if(c_Entities, [text](const SEntity& one) { return text.starts_with(one.text); });
        const bool isEntity = entity != std::end(c_Entities);
        result.push_back(isEntity ? entity->character : text.front());
        text.remove_prefix(isEntity ? entity->text.size() : 1);
    }
    result.append(text);
    return result;
}
