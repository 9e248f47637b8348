#include "examples/host/logpage.h"

#include "base/lbencoding.h"
#include "base/lustream.h"
#include "testing/lutestsuite/lutestsuitemarkupwriter.h"

namespace
{

std::wstring getStyle(const LuTestSuiteOut& line)
{
    std::wstring style;
    if (line.IsBold())
    {
        style += L"font-weight:bold;";
    }
    if (line.IsUnderlined())
    {
        style += L"text-decoration:underline;";
    }
    if (line.HasColor())
    {
        constexpr std::uint32_t c_WithoutOpacity = 0xFFFFFF;
        style += LbFormat(L"color:#%06x;", line.GetColor().GetValue() & c_WithoutOpacity);
    }
    return style;
}

} // namespace

void CLogPage::Output(const LuTestSuiteOut& line)
{
    const std::wstring text = LuTestSuiteUtils::LuMarkupWriter::Escape(line.GetText());
    const std::wstring style = getStyle(line);
    m_body += style.empty() ? text : LbFormat(L"<span style=\"%s\">%s</span>", style, text);
}

void CLogPage::Save(const std::wstring& path) const
{
    const std::string page = LbEncoding::ToUtf8(
        L"<!DOCTYPE html>\n<meta charset=\"utf-8\">\n<title>LuTestSuite</title>\n<pre>\n" + m_body + L"</pre>\n");
    LuStreamWriteBinaryFile file(path);
    file.Write(page.data(), page.size());
    file.Close();
}
