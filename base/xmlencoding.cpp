#include "base/xmlencoding.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/lbencoding.h"

namespace
{

using namespace std::string_view_literals;

enum class EEncoding
{
    Utf8,
    Utf16LittleEndian,
    Utf16BigEndian,
    Latin1
};

struct SSignature
{
    std::string_view bytes;
    EEncoding encoding;
    std::size_t skip; ///< length of the byte order mark, which is not text
};

constexpr SSignature c_Signatures[] = {
    {"\xEF\xBB\xBF"sv, EEncoding::Utf8, 3},          // byte order marks
    {"\xFF\xFE"sv, EEncoding::Utf16LittleEndian, 2}, //
    {"\xFE\xFF"sv, EEncoding::Utf16BigEndian, 2},    //
    {"<\0"sv, EEncoding::Utf16LittleEndian, 0},      // no mark: recognised by the first character
    {"\0<"sv, EEncoding::Utf16BigEndian, 0},         //
};

constexpr std::string_view c_WhiteSpace = " \t\r\n";

char toLower(char character)
{
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

/// The encoding that the declaration names, in lower case; empty if it names none.
std::string findDeclaredEncoding(std::string_view bytes)
{
    if (!bytes.starts_with("<?xml"))
    {
        return {};
    }
    const std::string_view declaration = bytes.substr(0, bytes.find("?>"));
    constexpr std::string_view name = "encoding";
    const std::size_t at = declaration.find(name);
    if (at == std::string_view::npos)
    {
        return {};
    }
    const std::size_t equals = declaration.find_first_not_of(c_WhiteSpace, at + name.size());
    if (equals == std::string_view::npos || declaration[equals] != '=')
    {
        return {};
    }
    const std::size_t open = declaration.find_first_not_of(c_WhiteSpace, equals + 1);
    if (open == std::string_view::npos || (declaration[open] != '"' && declaration[open] != '\''))
    {
        return {};
    }
    std::string value(declaration.substr(open + 1, declaration.find(declaration[open], open + 1) - open - 1));
    std::ranges::transform(value, value.begin(), toLower);
    return value;
}

EEncoding chooseByDeclaration(std::string_view bytes)
{
    const std::string declared = findDeclaredEncoding(bytes);
    if (declared == "iso-8859-1")
    {
        return EEncoding::Latin1;
    }
    return declared == "utf-8" || LbEncoding::IsUtf8(bytes) ? EEncoding::Utf8 : EEncoding::Latin1;
}

std::string fromUtf16(std::string_view bytes, bool isBigEndian)
{
    std::u16string units;
    units.reserve(bytes.size() / 2 + 1);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
    {
        const auto low = static_cast<unsigned char>(bytes[isBigEndian ? i + 1 : i]);
        const auto high = static_cast<unsigned char>(bytes[isBigEndian ? i : i + 1]);
        units.push_back(static_cast<char16_t>(high << 8U | low));
    }
    if (bytes.size() % 2 != 0)
    {
        units.push_back(u'\uFFFD');
    }
    return LbEncoding::ToUtf8(LbEncoding::FromUtf16(units));
}

} // namespace

std::string XMLEncoding::ToUtf8(std::string bytes)
{
    const auto* const signature =
        std::ranges::find_if(c_Signatures, [&bytes](const SSignature& one) { return bytes.starts_with(one.bytes); });
    const bool isSigned = signature != std::end(c_Signatures);
    if (isSigned)
    {
        bytes.erase(0, signature->skip);
    }
    switch (isSigned ? signature->encoding : chooseByDeclaration(bytes))
    {
    case EEncoding::Latin1:
        return LbEncoding::Latin1ToUtf8(std::move(bytes));
    case EEncoding::Utf16LittleEndian:
        return fromUtf16(bytes, false);
    case EEncoding::Utf16BigEndian:
        return fromUtf16(bytes, true);
    default:
        return bytes;
    }
}
