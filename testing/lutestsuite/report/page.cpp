#include "testing/lutestsuite/report/page.h"

#include "base/lbencoding.h"
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

void LuTestSuite::WorkOrReport(const wchar_t* format, const std::wstring& path, const std::function<void()>& work)
{
    try
    {
        work();
    }
    catch (...)
    {
        WriteReportFailure(format, path);
    }
}

void LuTestSuite::WritePage(const std::wstring& path, const std::wstring& title,
                            const std::function<void(MarkupWriter& writer)>& writeBody)
{
    LuStreamWriteASCIIFile file(path);
    MarkupWriter writer(file);
    LuTestSuiteReport::writeHTMLHeader(writer, true);
    writer.WriteLineOpen(L"<body>");
    writer.WriteElement(L"h1", title);
    writeBody(writer);
    writer.WriteLineClose(L"</body>");
    writer.WriteLineClose(L"</html>");
    file.Close();
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

float LuTestSuite::GetPercentage(std::uint32_t successful, std::uint32_t total)
{
    return total == 0 ? 0.0F : static_cast<float>(successful) / static_cast<float>(total) * 100.0F;
}

std::wstring LuTestSuite::GetContactLink(const LuTestSuiteReport::SReportClass& testClass)
{
    const std::wstring& email = testClass.ContactEMail;
    return email.empty() ? std::wstring()
                         : LbFormat(L"<a href=\"mailto:%s\">%s</a>", email,
                                    testClass.ContactName.empty() ? email : testClass.ContactName);
}
