#include "tests/support/golden.h"

#include <algorithm>
#include <regex>
#include <string_view>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lustream.h"
#include "tests/support/places.h"

namespace
{

std::wstring getPath(const wchar_t* root, const std::string& name)
{
    return LbPath::WithSeparator(LbPath::ToNative(root)) + LbPath::ToNative(LbEncoding::FromUtf8(name));
}

/// Keeps the received bytes for approval.
void writeReceived(const std::wstring& path, const std::string& received)
{
    LbFileSystem::AssertDirectory(LbPath::GetParent(path));
    LuStreamWriteBinaryFile file(path);
    file.Write(received.data(), received.size());
    file.Close();
}

std::string getLine(const std::string& text, std::size_t position)
{
    const std::size_t before = text.substr(0, position).rfind('\n');
    const std::size_t start = before == std::string::npos ? 0 : before + 1;
    return text.substr(start, text.find('\n', start) - start);
}

/// The line of the first difference, as stored and as received.
std::string describeDifference(const std::string& expected, const std::string& received)
{
    const auto [in, out] = std::ranges::mismatch(expected, received);
    const auto position = static_cast<std::size_t>(in - expected.begin());
    const auto line = 1 + std::count(expected.begin(), in, '\n');
    return "line " + std::to_string(line) + "\n  stored:   " + testing::PrintToString(getLine(expected, position)) +
           "\n  received: " + testing::PrintToString(getLine(received, position));
}

} // namespace

std::string ReadGolden(const std::string& name)
{
    const std::wstring path = getPath(L"" LUTESTSUITE_GOLDEN_DIR, name);
    return LbFileSystem::IsFile(path) ? LbFileSystem::ReadFile8Bit(path) : std::string();
}

void ExpectGolden(const std::string& name, const std::string& received)
{
    const std::string expected = ReadGolden(name);
    const std::wstring receivedPath = getPath(L"" LUTESTSUITE_RECEIVED_DIR, name + ".received");
    if (expected == received)
    {
        LbFileSystem::RemoveTree(receivedPath);
        return;
    }
    writeReceived(receivedPath, received);
    ADD_FAILURE() << "differs from tests/golden/" << name << " in " << describeDifference(expected, received);
}

std::string NormalizeTimes(const std::string& text)
{
    // "0 s" occurs if the system's clock is too coarse to measure a short case.
    static const std::regex s_time(R"(\[(\d+\.\d\d(ns|µs|ms|s)|0 s)\])");
    return std::regex_replace(text, s_time, "[#.##s]");
}

std::string NormalizeXmlReport(const std::string& text)
{
    static const std::regex s_element(
        R"(<(Processor|GPU|MachineName|BuildConfiguration|Pscm\w+|DataDirectory|Date\w+|Time(?:Total|Max|Min|Avg))"
        R"(|Memory\w+|time|memory|memorydelta)>[^<]*</)");
    return std::regex_replace(text, s_element, "<$1>#</");
}

std::string NormalizeHtmlReport(const std::string& page)
{
    constexpr std::string_view c_StyleStart = "<style type=\"text/css\">";
    std::string text = page;
    const std::size_t style = text.find(c_StyleStart);
    if (style != std::string::npos)
    {
        const std::size_t content = style + c_StyleStart.size();
        text.erase(content, text.find("</style>") - content);
    }
    // One expression for rows with a label and a value, and one for the cells with a case's time and memory.
    static const std::regex s_row(
        R"(<td>(Build Configuration|PSCM [\w ]+|CPU|GPU|Machine Name|Data Directory|Begin Date|End Date|Time [\w ]+\(sec\))"
        R"(|Memory [\w ]+\(Bytes\)):</td>(\s*)<td>[^<]*</td>)");
    static const std::regex s_figures(R"(<td>\d+\.\d{6}</td>(\s*)<td>\d+</td>)");
    return std::regex_replace(std::regex_replace(text, s_row, "<td>$1:</td>$2<td>#</td>"), s_figures,
                              "<td>#</td>$1<td>#</td>");
}
