#include "tests/support/golden.h"

#include <algorithm>
#include <regex>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lustream.h"

namespace
{

std::wstring getPath(const wchar_t* root, const std::string& name)
{
    return LbPath::WithSeparator(LbPath::ToNative(root)) + LbPath::ToNative(LbEncoding::FromUtf8(name));
}

/// Leaves the bytes for approval.
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

/// Where the two part.
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
    // A clock of the platform may be too coarse to see a short case at all.
    static const std::regex s_time(R"(\[(\d+\.\d\d(ns|µs|ms|s)|0 s)\])");
    return std::regex_replace(text, s_time, "[#.##s]");
}
