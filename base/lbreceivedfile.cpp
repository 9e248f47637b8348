#include "base/lbreceivedfile.h"

#include <algorithm>
#include <cstddef>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lbuniqueid.h"
#include "base/lbvariant.h"
#include "base/lbvisibletext.h"
#include "base/lumurmurhash3.h"
#include "base/lustream.h"
#include "base/os/console.h"

namespace
{

/// Splits a text into lines without their ends. If the text ends with a line end, the last line is empty, so that a
/// missing line end at the end is a difference.
class CLines
{
public:
    explicit CLines(std::string_view text) : m_rest(text) {}

    bool Next(std::string_view& line)
    {
        if (m_isAtEnd)
        {
            return false;
        }
        const std::size_t end = m_rest.find('\n');
        line = m_rest.substr(0, end);
        m_isAtEnd = end == std::string_view::npos;
        m_rest.remove_prefix(m_isAtEnd ? m_rest.size() : end + 1);
        if (!m_isAtEnd && line.ends_with('\r'))
        {
            line.remove_suffix(1);
        }
        return true;
    }

private:
    std::string_view m_rest;
    bool m_isAtEnd = false;
};

/// A part of a line that is short enough for a message and contains the first differing character.
std::wstring quote(std::string_view line, std::size_t difference)
{
    constexpr std::size_t c_Before = 40;
    constexpr std::size_t c_Length = 160;
    const auto isInside = [line](std::size_t place) {
        return place > 0 && place < line.size() && (static_cast<unsigned char>(line[place]) & 0xC0U) == 0x80;
    };
    std::size_t begin = difference > c_Length - c_Before ? difference - c_Before : 0;
    std::size_t end = std::min(begin + c_Length, line.size());
    // Extends the part so that it does not split a UTF-8 character.
    while (isInside(begin))
    {
        --begin;
    }
    while (isInside(end))
    {
        ++end;
    }
    const std::wstring text = LbVisibleText::ShowBytes(line.substr(begin, end - begin));
    return (begin > 0 ? L"\"..." : L"\"") + text + (end < line.size() ? L"...\"" : L"\"");
}

std::wstring describeTexts(std::string_view received, std::string_view reference)
{
    CLines receivedLines(received);
    CLines referenceLines(reference);
    for (std::uint32_t number = 1;; ++number)
    {
        std::string_view line;
        std::string_view expected;
        const bool isLine = receivedLines.Next(line);
        const bool isExpected = referenceLines.Next(expected);
        if (!isLine && !isExpected)
        {
            return L"";
        }
        if (!isLine)
        {
            return LbFormat(L"Zeile %u fehlt: %s", number, quote(expected, 0));
        }
        if (!isExpected)
        {
            return LbFormat(L"Zeile %u ist zu viel: %s", number, quote(line, 0));
        }
        if (line != expected)
        {
            const auto place = static_cast<std::size_t>(std::ranges::mismatch(line, expected).in1 - line.begin());
            return LbFormat(L"Zeile %u ist %s statt %s", number, quote(line, place), quote(expected, place));
        }
    }
}

std::wstring describeBytes(std::string_view received, std::string_view reference)
{
    if (received == reference)
    {
        return L"";
    }
    const auto place = static_cast<std::size_t>(std::ranges::mismatch(received, reference).in1 - received.begin());
    if (place == std::min(received.size(), reference.size()))
    {
        return LbFormat(L"%u Bytes statt %u", received.size(), reference.size());
    }
    const auto toByte = [place](std::string_view bytes) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[place]));
    };
    return LbFormat(L"Byte %u ist 0x%02X statt 0x%02X", place + 1, toByte(received), toByte(reference));
}

void write(const std::wstring& path, std::string_view bytes)
{
    LbFileSystem::WriteWhole(path, [bytes](const std::wstring& place) {
        LuStreamWriteBinaryFile file(place);
        file.Write(bytes.data(), bytes.size());
        file.Close();
    });
}

struct SRuns
{
    std::uint32_t count = 0;
    std::wstring last;
};

/// Returns no runs if the file is missing, is damaged, or belongs to other bytes.
SRuns readRuns(std::string_view received, const std::wstring& reference)
{
    const std::wstring path = reference + LbReceivedFile::c_RunsSuffix;
    if (!LbFileSystem::IsFile(path))
    {
        return {};
    }
    const std::wstring text = LbEncoding::FromUtf8(LbFileSystem::ReadFile8Bit(path));
    const std::wstring middle = L" " + LbReceivedFile::GetChecksum(received) + L" ";
    const std::size_t place = text.find(middle);
    const std::size_t last = place + middle.size();
    if (place == std::wstring::npos || text.size() != last + middle.size() - 1 || !text.ends_with(L'\n'))
    {
        return {};
    }
    return {LbVariant(text.substr(0, place)).ToUInt32().value_or(0), text.substr(last, middle.size() - 2)};
}

std::wstring getRun()
{
    std::wstring name = LbOs::GetEnvironmentText(LbReceivedFile::c_RunVariable);
    if (name.empty())
    {
        static const std::wstring& s_process = *new std::wstring(LbUniqueId::Generate());
        name = s_process;
    }
    return LbReceivedFile::GetChecksum(LbEncoding::ToUtf8(name));
}

void keep(std::string_view received, const std::wstring& reference)
{
    const std::wstring path = reference + LbReceivedFile::c_Suffix;
    const bool isSame = LbFileSystem::IsFile(path) && LbFileSystem::ReadFile8Bit(path) == received;
    if (!isSame)
    {
        // Written before the number of runs: if the process is killed in between, the old number belongs to other bytes
        // and does not count.
        write(path, received);
    }
    const SRuns runs = isSame ? readRuns(received, reference) : SRuns{};
    const std::wstring run = getRun();
    if (runs.count < LbReceivedFile::c_EnoughRuns && runs.last != run)
    {
        const std::wstring text = LbFormat(L"%u %s %s\n", runs.count + 1, LbReceivedFile::GetChecksum(received), run);
        write(reference + LbReceivedFile::c_RunsSuffix, LbEncoding::ToUtf8(text));
    }
}

} // namespace

void LbReceivedFile::NameRun()
{
    if (LbOs::GetEnvironmentText(c_RunVariable).empty())
    {
        LbOs::SetEnvironmentText(c_RunVariable, LbUniqueId::Generate());
    }
}

bool LbReceivedFile::IsLeft(std::wstring_view name) noexcept
{
    return name.ends_with(c_Suffix) || name.ends_with(c_RunsSuffix);
}

std::wstring LbReceivedFile::Compare(std::string_view received, const std::wstring& reference, bool isText)
{
    std::wstring difference;
    if (LbOs::IsMissing(reference))
    {
        difference = LbFormat(L"Die Referenz %s fehlt", reference);
    }
    else
    {
        const std::string expected = LbFileSystem::ReadFile8Bit(reference);
        difference = isText ? describeTexts(received, expected) : describeBytes(received, expected);
        if (difference.empty())
        {
            LbOs::RemoveFile(reference + c_Suffix);
            LbOs::RemoveFile(reference + c_RunsSuffix);
            return difference;
        }
        difference = LbPath::GetLastComponent(reference) + L": " + difference;
    }
    keep(received, reference);
    return difference;
}

std::wstring LbReceivedFile::GetChecksum(std::string_view bytes)
{
    const auto sum = LuMurmurHash3::GetOptimizedChecksum128(bytes.data(), static_cast<std::uint32_t>(bytes.size()), 0);
    return LbFormat(L"%016X%016X", sum.high, sum.low);
}

std::uint32_t LbReceivedFile::CountRuns(std::string_view received, const std::wstring& reference)
{
    return readRuns(received, reference).count;
}
