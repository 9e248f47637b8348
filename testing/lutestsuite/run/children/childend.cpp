#include "testing/lutestsuite/run/children/childend.h"

#include <algorithm>
#include <string_view>

#include "base/lbencoding.h"
#include "base/lbformat.h"
#include "base/lbuniqueid.h"
#include "base/os/crash.h"
#include "testing/lutestsuite/report/messagelines.h"
#include "testing/lutestsuite/run/children/memorykills.h"

namespace LuTestSuiteRun
{

namespace
{

constexpr std::size_t c_MostLines = 64;
constexpr std::size_t c_LongestLine = 1000; ///< characters
constexpr std::size_t c_MostBytes = 4 * c_MostLines * c_LongestLine;

CMemoryKills s_memoryKills(LbOs::CountMemoryKills);

bool isLackOfMemory(std::optional<std::int64_t> exitStatus, const std::vector<std::wstring>& lastLines)
{
    const bool isKilled = exitStatus && LbOs::MayBeMemoryKill(*exitStatus) && s_memoryKills.Take();
    // Looks for the line that std::terminate prints for an uncaught exception.
    const bool isTerminated =
        exitStatus && LbOs::MayBeAbort(*exitStatus) && std::ranges::any_of(lastLines, [](const std::wstring& line) {
            return line.find(L"std::bad_alloc") != std::wstring::npos;
        });
    return isKilled || isTerminated;
}

std::wstring toText(std::string_view line)
{
    std::wstring text = LbEncoding::IsUtf8(line) ? LbEncoding::FromUtf8(line) : LbEncoding::FromLatin1(line);
    if (text.size() > c_LongestLine)
    {
        text.resize(c_LongestLine);
        text += L"...";
    }
    for (wchar_t& character : text)
    {
        // Replaces control characters, which terminal colours contain, for example.
        const bool isControl = character < 0x20 || (character >= 0x7F && character < 0xA0);
        character = isControl && character != L'\t' ? L' ' : character;
    }
    return text;
}

std::wstring toInfoLine(const std::wstring& line)
{
    return LbFormat(L"\t\tINFO:  %s\n", line);
}

std::wstring describeFrame(const LbOs::SStackFrame& frame)
{
    std::wstring text = frame.module.empty() ? LbFormat(L"0x%I64x", frame.address)
                                             : LbFormat(L"%s+0x%I64x", frame.module, frame.offset);
    if (!frame.function.empty())
    {
        text += L" " + frame.function;
    }
    if (!frame.file.empty())
    {
        text += LbFormat(L" (%s:%u)", frame.file, frame.line);
    }
    return text;
}

void describeStack(const LbOs::SThreadStack& stack, std::vector<std::wstring>& lines)
{
    lines.push_back(LbFormat(L"Stapel von Thread %I64u%s:", stack.thread, stack.isAtFault ? L" (Ursache)" : L""));
    std::size_t number = 0;
    for (const LbOs::SStackFrame& frame : stack.frames)
    {
        lines.push_back(LbFormat(L"  #%u %s", static_cast<unsigned>(number++), describeFrame(frame)));
    }
}

} // namespace

std::vector<std::wstring> ReadLastLines(const LbOs::CChildOutput* file, std::uint64_t begin)
{
    const std::string all = file == nullptr ? std::string() : file->ReadEnd(begin, c_MostBytes);
    std::string_view bytes = all;
    std::vector<std::wstring> lines;
    while (!bytes.empty() && lines.size() < c_MostLines)
    {
        bytes.remove_suffix(bytes.back() == '\n' ? 1 : 0);
        const std::size_t start = bytes.rfind('\n') + 1;
        std::string_view line = bytes.substr(start);
        bytes = bytes.substr(0, start);
        line.remove_suffix(line.ends_with('\r') ? 1 : 0);
        lines.insert(lines.begin(), toText(line));
    }
    return lines;
}

void CChildErrors::Renew()
{
    m_file = LbOs::CChildOutput::Create(L"LuTestSuite-" + LbUniqueId::Generate() + L".txt");
    m_begin = 0;
}

void CChildErrors::BeginCase()
{
    // Clears the file at a lower limit than Bound, because Bound also drops lines of the running case.
    constexpr std::uint64_t c_Most = std::uint64_t{1} << 20U;
    m_begin = m_file ? m_file->GetSize() : 0;
    if (m_begin > c_Most)
    {
        m_file->Clear();
        m_begin = 0;
    }
}

void CChildErrors::Bound()
{
    constexpr std::uint64_t c_Most = std::uint64_t{16} << 20U;
    if (m_file && m_file->GetSize() > c_Most)
    {
        m_file->Clear();
        m_begin = 0;
    }
}

std::vector<std::wstring> CChildErrors::ReadLastLines() const
{
    return LuTestSuiteRun::ReadLastLines(m_file.get(), m_begin);
}

void FindReason(SCaseEnd& end)
{
    end.reason = std::wstring(LuTestSuite::c_ProcessEnd) + L"endete mit ";
    end.reason += end.exitStatus ? LbOs::DescribeExitStatus(*end.exitStatus) : L"unbekanntem Status";
    end.reason += isLackOfMemory(end.exitStatus, end.lastLines) ? L", wohl aus Speichermangel" : L"";
}

SCaseEnd MakeMissingChild(const std::wstring& failure)
{
    SCaseEnd end;
    end.kind = ECaseEnd::ChildMissing;
    end.reason = std::wstring(LuTestSuite::c_ProcessEnd) + L"konnte nicht gestartet werden";
    end.reason += failure.empty() ? L"" : L": " + failure;
    return end;
}

std::wstring DescribeCaseEnd(const SCaseEnd& end)
{
    std::wstring text;
    if (!end.reason.empty())
    {
        text += LbFormat(L"\t\tERROR: %s\n", end.reason);
    }
    for (const std::wstring& line : end.lastLines)
    {
        text += toInfoLine(line);
    }
    if (!end.dumpFile.empty())
    {
        text += toInfoLine(L"Speicherabbild: " + end.dumpFile);
    }
    if (!end.dumpFailure.empty())
    {
        text += LbFormat(L"\t\tWARNUNG: Das Speicherabbild konnte nicht geschrieben werden: %s\n", end.dumpFailure);
    }
    for (const std::wstring& line : DescribeStacks(end.stacks))
    {
        text += toInfoLine(line);
    }
    return text;
}

std::vector<std::wstring> DescribeStacks(const std::vector<LbOs::SThreadStack>& stacks)
{
    std::vector<std::wstring> lines;
    for (const LbOs::SThreadStack& stack : stacks)
    {
        describeStack(stack, lines);
    }
    return lines;
}

void PrepareChildEnds()
{
    static const bool s_isPrepared = [] {
        s_memoryKills.Forget();
        return true;
    }();
    static_cast<void>(s_isPrepared);
}

} // namespace LuTestSuiteRun
