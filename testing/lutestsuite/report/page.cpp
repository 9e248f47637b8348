#include "testing/lutestsuite/report/page.h"

#include <algorithm>
#include <charconv>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "testing/lutestsuite/report/reportfailure.h"

namespace
{

constexpr std::wstring_view c_DocumentType = L"<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Strict//EN\" "
                                             L"\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-strict.dtd\">";

void writeInlineStylesheet(LuTestSuite::MarkupWriter& writer)
{
    constexpr std::wstring_view c_LineEnd = L"\r\n";
    const std::wstring text = LbEncoding::FromLatin1(LuTestSuiteUtils::GetDefaultStylesheet());
    std::size_t start = 0;
    for (std::size_t end = text.find(c_LineEnd); end != std::wstring::npos; end = text.find(c_LineEnd, start))
    {
        writer.WriteLine(std::wstring_view(text).substr(start, end - start));
        start = end + c_LineEnd.size();
    }
    writer.WriteLine(std::wstring_view(text).substr(start));
}

/// True for characters that XML allows.
bool isCharacter(std::uint32_t number)
{
    constexpr std::uint32_t c_FirstSurrogate = 0xD800;
    constexpr std::uint32_t c_LastSurrogate = 0xDFFF;
    constexpr std::uint32_t c_Last = 0x10FFFF;
    const bool isLayout = number == '\t' || number == '\n' || number == '\r';
    const bool isNone = (number >= c_FirstSurrogate && number <= c_LastSurrogate) || number == 0xFFFE ||
                        number == 0xFFFF || number > c_Last;
    return isLayout || (number >= ' ' && !isNone);
}

/// True if the name is the number of a character, as in "#65" or "#x41".
bool isCharacterNumber(std::wstring_view name)
{
    const bool isHexadecimal = name.starts_with(L"#x");
    const std::string digits =
        LbEncoding::ToLatin1(name.substr(std::min<std::size_t>(isHexadecimal ? 2 : 1, name.size())));
    std::uint32_t number = 0;
    const char* const end = digits.data() + digits.size();
    const std::from_chars_result result = std::from_chars(digits.data(), end, number, isHexadecimal ? 16 : 10);
    return name.starts_with(L'#') && result.ec == std::errc() && result.ptr == end && isCharacter(number);
}

/// Length of the character reference at the start of the text; 0 if the text does not start with one.
std::size_t getReferenceLength(std::wstring_view text)
{
    constexpr std::size_t c_Longest = 12;
    const std::size_t end = text.substr(0, c_Longest).find(L';');
    if (!text.starts_with(L'&') || end == std::wstring_view::npos)
    {
        return 0;
    }
    const bool isEntity = LuTestSuite::MarkupWriter::Unescape(text.substr(0, end + 1)).size() == 1;
    return isEntity || isCharacterNumber(text.substr(1, end - 1)) ? end + 1 : 0;
}

} // namespace

void LuTestSuiteReport::writeHTMLHeader(LuTestSuiteUtils::LuMarkupWriter& writer, bool inlineStylesheet)
{
    writer.WriteLine(c_DocumentType);
    writer.WriteLineOpen(L"<html xmlns=\"http://www.w3.org/1999/xhtml\">");
    writer.WriteLineOpen(L"<head>");
    writer.WriteLine(L"<meta http-equiv=\"Content-Type\" content=\"text/html; charset=iso-8859-1\"/>");
    writer.WriteElement(L"title", L"LuTestSuite Report");
    writer.WriteLineOpen(L"<style type=\"text/css\">");
    if (inlineStylesheet)
    {
        writeInlineStylesheet(writer);
    }
    writer.WriteLineClose(L"</style>");
    writer.WriteLine(L"<link rel=\"stylesheet\" type=\"text/css\" href=\"LuTestSuite.css\"/>");
    writer.WriteLine(L"<script src=\"LuTestSuite.js\" type=\"text/javascript\"></script>");
    writer.WriteLineClose(L"</head>");
}

bool LuTestSuite::WorkOrReport(LbFormatString<std::wstring> format, const std::wstring& path,
                               const std::function<void()>& work)
{
    try
    {
        work();
        return true;
    }
    catch (...)
    {
        WriteReportFailure(format, path);
        return false;
    }
}

void LuTestSuite::WritePage(const std::wstring& path, const std::wstring& title,
                            const std::function<void(MarkupWriter& writer)>& writeBody)
{
    LbFileSystem::WriteWhole(path, [&](const std::wstring& place) {
        LuStreamWriteASCIIFile file(place);
        MarkupWriter writer(file);
        LuTestSuiteReport::writeHTMLHeader(writer, true);
        writer.WriteLineOpen(L"<body>");
        writer.WriteElement(L"h1", title);
        writeBody(writer);
        writer.WriteLineClose(L"</body>");
        writer.WriteLineClose(L"</html>");
        file.Close();
    });
}

void LuTestSuite::WriteRow(MarkupWriter& writer, std::wstring_view start, std::wstring_view element,
                           std::initializer_list<std::wstring_view> cells)
{
    writer.WriteLineOpen(start);
    for (const std::wstring_view cell : cells)
    {
        writer.WriteElement(element, cell);
    }
    writer.WriteLineClose(L"</tr>");
}

std::wstring LuTestSuite::ToMarkup(std::wstring_view text)
{
    std::wstring markup;
    while (!text.empty())
    {
        const std::size_t reference = getReferenceLength(text);
        const std::wstring_view piece = text.substr(0, reference > 0 ? reference : text.find(L'&', 1));
        markup += reference > 0 ? std::wstring(piece) : MarkupWriter::Escape(piece);
        text.remove_prefix(piece.size());
    }
    return markup;
}

float LuTestSuite::GetPercentage(std::uint32_t successful, std::uint32_t total)
{
    return total == 0 ? 0.0F : static_cast<float>(successful) / static_cast<float>(total) * 100.0F;
}

std::wstring LuTestSuite::GetContactLink(const LuTestSuiteReport::SReportClass& testClass)
{
    const std::wstring& email = testClass.ContactEMail;
    return email.empty() ? std::wstring()
                         : LbFormat(L"<a href=\"mailto:%s\">%s</a>", ToMarkup(email),
                                    ToMarkup(testClass.ContactName.empty() ? email : testClass.ContactName));
}
