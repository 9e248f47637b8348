#include "base/luunittest.h"

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"

LB_RTTI_ABSTRACT(LuUnitTest, IObject)

namespace
{

/// True when `name` matches `wildcard` ("*" and "?"). On a mismatch only the last "*" takes one character more, which
/// is enough: what stands before it has matched as early as possible.
bool matchesWildcard(std::wstring_view name, std::wstring_view wildcard)
{
    std::size_t position = 0;
    std::size_t inWildcard = 0;
    std::size_t afterStar = std::wstring_view::npos;
    std::size_t takenByStar = 0;
    while (position < name.size())
    {
        if (inWildcard < wildcard.size() && wildcard[inWildcard] == L'*')
        {
            afterStar = ++inWildcard;
            takenByStar = position;
        }
        else if (inWildcard < wildcard.size() &&
                 (wildcard[inWildcard] == L'?' || wildcard[inWildcard] == name[position]))
        {
            ++inWildcard;
            ++position;
        }
        else if (afterStar != std::wstring_view::npos)
        {
            inWildcard = afterStar;
            position = ++takenByStar;
        }
        else
        {
            return false;
        }
    }
    return wildcard.find_first_not_of(L'*', inWildcard) == std::wstring_view::npos;
}

[[noreturn]] void throwNoSuchSubtest(std::uint32_t subtest, std::size_t count)
{
    throw LbException(LbFormat(L"Untertest %u gibt es nicht, es sind %u", subtest, count));
}

} // namespace

LuUnitTest::LuUnitTest() = default;
LuUnitTest::~LuUnitTest() = default;

void LuUnitTest::SetMessageStream(LuStreamWriteText* stream)
{
    m_messages = stream;
}

void LuUnitTest::SetDataDirectory(const std::wstring& directory)
{
    m_dataDirectory = directory;
    m_dataFileNames.reset();
}

void LuUnitTest::PrepareSubtest() {}

std::uint32_t LuUnitTest::GetSubtestCount() const
{
    return static_cast<std::uint32_t>(m_subtests.size());
}

std::wstring LuUnitTest::GetSubtestName(std::uint32_t subtest) const
{
    if (subtest >= m_subtests.size())
    {
        throwNoSuchSubtest(subtest, m_subtests.size());
    }
    return m_subtests[subtest].name;
}

LuUnitTest::EResult LuUnitTest::RunUnitTest(std::uint32_t subtest)
{
    if (subtest >= m_subtests.size())
    {
        throwNoSuchSubtest(subtest, m_subtests.size());
    }
    m_hasErrors = false;
    try
    {
        return m_subtests[subtest].function();
    }
    catch (...)
    {
        m_hasErrors = true;
        writeMessageLine(true, LbDescribeCurrentException());
    }
    return eR_Exception;
}

void LuUnitTest::addSubtest(std::wstring name, std::function<EResult()> function)
{
    m_subtests.push_back({std::move(name), std::move(function)});
}

const std::vector<std::wstring>& LuUnitTest::GetDataFileNames() const
{
    if (!m_dataFileNames)
    {
        m_dataFileNames = LbFileSystem::GetFileNames(m_dataDirectory);
    }
    return *m_dataFileNames;
}

bool LuUnitTest::isDataSet(std::wstring_view fileName, std::wstring_view wildcard)
{
    return fileName != sc_DescriptionFile && matchesWildcard(fileName, wildcard);
}

void LuUnitTest::writeMessage(bool isError, const LbFormatSource& format, std::span<const LbFormatArgument> arguments)
{
    m_hasErrors = m_hasErrors || isError;
    if (!writeFormatMistake(format, arguments))
    {
        writeMessageLine(isError, LbFormatArguments(format, arguments));
    }
}

/// The line does not count as an error of the test: a mistake in a message changes no result.
bool LuUnitTest::writeFormatMistake(const LbFormatSource& format, std::span<const LbFormatArgument> arguments)
{
    const std::wstring mistake = LbDescribeFormatMistake(format, arguments);
    if (!mistake.empty())
    {
        writeMessageLine(true, mistake);
    }
    return !mistake.empty();
}

void LuUnitTest::writeMessageLine(bool isError, std::wstring_view text)
{
    if (m_messages != nullptr)
    {
        std::wstring line = isError ? L"\t\tERROR: " : L"\t\tINFO:  ";
        line += text;
        // Exactly one line end; find_last_not_of finds the tag at the latest.
        line.resize(line.find_last_not_of(L'\n') + 1);
        line += L'\n';
        m_messages->Write(line);
    }
}
