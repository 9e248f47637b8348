#include "base/luunittest.h"

#include <algorithm>

#include "base/givenstream.h"
#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbpath.h"
#include "base/lbreceivedfile.h"
#include "base/lbtemporaryname.h"
#include "base/os/directories.h"
#include "base/os/files.h"
#include "base/subtestsearch.h"

LB_RTTI_ABSTRACT(LuUnitTest, IObject)

namespace
{

[[noreturn]] void throwNoSuchSubtest(std::uint32_t subtest, std::uint32_t count)
{
    throw LbException(LbFormat(L"Untertest %u gibt es nicht, es sind %u", subtest, count));
}

/// True if an object has stored the stream and the directory that the runner gave to it, so that a second object can
/// get the same ones. False if the class has replaced one of them, because it might do so again in a second object.
bool canGiveAgain(const LuStreamWriteText* messages, const std::wstring& directory)
{
    const auto* const given = dynamic_cast<const LbGivenStream*>(messages);
    return given != nullptr && given->GetDataDirectory() == directory;
}

/// The name of the sub-test's file. The sub-test may have another name if the class overrides GetSubtestName.
template<typename Entry>
std::wstring getFileName(const Entry& entry, std::uint32_t subtest)
{
    return std::wstring(entry.files->listing->GetName(entry.files->ranks[subtest - entry.first]));
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
    m_dataFileNames = {};
}

const LbFileNames& LuUnitTest::GetDataFileNames() const
{
    if (!m_dataFileNames.GetListing())
    {
        m_dataFileNames = LbFileNames(LbFileListing::Get(m_dataDirectory));
    }
    return m_dataFileNames;
}

void LuUnitTest::PrepareSubtest() {}

std::uint32_t LuUnitTest::GetSubtestCount() const
{
    if (!m_isForOne)
    {
        return m_count;
    }
    if (!m_hasFiles)
    {
        return m_calls;
    }
    // The number of sub-tests so far, because InitSubtests may still be running.
    const LuUnitTest& complete = getComplete();
    return m_calls < complete.m_entries.size() ? complete.m_entries[m_calls].first : complete.m_count;
}

std::wstring LuUnitTest::GetSubtestName(std::uint32_t subtest) const
{
    if (m_isForOne)
    {
        return getComplete().GetSubtestName(subtest);
    }
    const SEntry& entry = getEntry(subtest);
    return entry.files ? getFileName(entry, subtest) : entry.name;
}

LuUnitTest::EResult LuUnitTest::RunUnitTest(std::uint32_t subtest)
{
    if (!m_isForOne)
    {
        return runHere(subtest);
    }
    LuUnitTest& complete = getComplete();
    if (m_selectedFunction && complete.findPlain(m_selected) == subtest)
    {
        return RunSelectedSubtest();
    }
    const EResult result = complete.RunUnitTest(subtest);
    m_hasErrors = complete.m_hasErrors;
    m_hasDifferences = complete.m_hasDifferences;
    return result;
}

bool LuUnitTest::IsSubtestDisabled(std::uint32_t /*subtest*/) const
{
    return false;
}

/// Runs a sub-test and handles its exceptions.
template<typename F>
LuUnitTest::EResult LuUnitTest::guard(const F& run)
{
    m_hasErrors = false;
    m_hasDifferences = false;
    try
    {
        return run();
    }
    catch (...)
    {
        m_hasErrors = true;
        writeMessageLine(true, LbDescribeCurrentException());
    }
    return eR_Exception;
}

LuUnitTest::EResult LuUnitTest::runHere(std::uint32_t subtest)
{
    const SEntry& entry = getEntry(subtest);
    return guard([&] {
        return entry.files ? entry.files->function(m_dataDirectory + getFileName(entry, subtest)) : entry.function();
    });
}

std::optional<std::uint32_t> LuUnitTest::FindSubtest(std::wstring_view name) const
{
    return find(name, std::nullopt);
}

std::optional<std::uint32_t> LuUnitTest::find(std::wstring_view name, std::optional<std::uint32_t> likely) const
{
    if (m_isForOne)
    {
        return getComplete().FindSubtest(name);
    }
    if (getFacts().hasPlainList)
    {
        return findPlain(name);
    }
    const std::uint32_t count = GetSubtestCount();
    return LbSubtestSearch::Find({typeid(*this), m_dataDirectory, m_dataFileNames.GetListing(), count,
                                  [this](std::uint32_t subtest) { return GetSubtestName(subtest); }, likely},
                                 name);
}

void LuUnitTest::SelectSubtest(std::wstring_view name, std::optional<std::uint32_t> likely)
{
    m_selected = name;
    m_likely = likely;
    const LbClassFacts facts = getFacts();
    m_isForOne = facts.hasPlainList && facts.hasPlainRun && GetRTTI().GetCreate() != nullptr &&
                 canGiveAgain(m_messages, m_dataDirectory);
}

bool LuUnitTest::HasSelectedSubtest()
{
    if (m_isForOne)
    {
        return static_cast<bool>(m_selectedFunction);
    }
    m_selectedSubtest = find(m_selected, m_likely);
    return m_selectedSubtest.has_value();
}

LuUnitTest::EResult LuUnitTest::RunSelectedSubtest()
{
    return m_isForOne ? guard(m_selectedFunction) : RunUnitTest(m_selectedSubtest.value());
}

bool LuUnitTest::countFiles(const LbFilePattern& pattern)
{
    ++m_calls;
    m_hasFiles = true;
    if (!m_isForOne)
    {
        return true;
    }
    if (m_selectedFunction || m_selected == sc_DescriptionFile || LbReceivedFile::IsLeft(m_selected) ||
        LbTemporaryName::IsTemporary(m_selected) || !pattern.Matches(m_selected))
    {
        return false;
    }
    const LbFileListing* const listing = m_dataFileNames.GetListing().get();
    return listing != nullptr ? listing->Find(m_selected).has_value() : LbOs::HoldsFile(m_dataDirectory, m_selected);
}

void LuUnitTest::addSubtest(std::wstring_view name, Function function)
{
    if (m_isForOne)
    {
        m_selectedFunction = std::move(function);
        return;
    }
    m_entries.push_back({m_count, std::wstring(name), std::move(function), nullptr});
    ++m_count;
}

void LuUnitTest::addFileSubtests(const LbFilePattern& pattern, FileFunction function)
{
    if (m_isForOne)
    {
        m_selectedFunction = [this, function = std::move(function)] { return function(m_dataDirectory + m_selected); };
        return;
    }
    std::vector<std::wstring_view> excluded(pattern.excluded.begin(), pattern.excluded.end());
    excluded.emplace_back(sc_DescriptionFile);
    excluded.insert(excluded.end(), {LbReceivedFile::c_Pattern, LbReceivedFile::c_RunsPattern,
                                     LbTemporaryName::c_Pattern, LbTemporaryName::c_ReviewPattern});
    const std::shared_ptr<const LbFileListing>& listing = GetDataFileNames().GetListing();
    const std::span<const std::uint32_t> ranks = listing->GetMatches({pattern.wildcards, excluded});
    m_entries.push_back({m_count, {}, {}, std::make_unique<SFiles>(SFiles{listing, ranks, std::move(function)})});
    m_count += static_cast<std::uint32_t>(ranks.size());
}

const LuUnitTest::SEntry& LuUnitTest::getEntry(std::uint32_t subtest) const
{
    if (subtest >= m_count)
    {
        throwNoSuchSubtest(subtest, m_count);
    }
    // If several entries start at one index, the last one has the sub-test: the others matched no files.
    return *std::prev(std::ranges::upper_bound(m_entries, subtest, {}, &SEntry::first));
}

std::optional<std::uint32_t> LuUnitTest::findPlain(std::wstring_view name) const
{
    for (const SEntry& entry : m_entries)
    {
        if (!entry.files)
        {
            if (entry.name == name)
            {
                return entry.first;
            }
            continue;
        }
        const std::span<const std::uint32_t> ranks = entry.files->ranks;
        const std::optional<std::uint32_t> rank = entry.files->listing->Find(name);
        const auto match = rank ? std::ranges::lower_bound(ranks, *rank) : ranks.end();
        if (match != ranks.end() && *match == *rank)
        {
            return entry.first + static_cast<std::uint32_t>(match - ranks.begin());
        }
    }
    return std::nullopt;
}

/// Empty if the object's class has no record of its own: then it is unknown what the class overrides.
LbClassFacts LuUnitTest::getFacts() const
{
    const LbClassFacts& facts = GetRTTI().GetFacts();
    return facts.type != nullptr && *facts.type == typeid(*this) ? facts : LbClassFacts();
}

/// An object of the same class that keeps all sub-tests.
LuUnitTest& LuUnitTest::getComplete() const
{
    if (!m_complete)
    {
        std::unique_ptr<IObject> object = GetRTTI().GetCreate()();
        std::unique_ptr<LuUnitTest> complete(&dynamic_cast<LuUnitTest&>(*object));
        static_cast<void>(object.release());
        complete->SetMessageStream(m_messages);
        complete->SetDataDirectory(m_dataDirectory);
        complete->InitSubtests();
        m_complete = std::move(complete);
    }
    return *m_complete;
}

void LuUnitTest::writeMessage(bool isError, const LbFormatSource& format, std::span<const LbFormatArgument> arguments)
{
    m_hasErrors = m_hasErrors || isError;
    if (!writeFormatMistake(format, arguments))
    {
        writeMessageLine(isError, LbFormatArguments(format, arguments));
    }
}

/// Does not count as an error of the test: a mistake in a message changes no result.
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
        // Ends the text with exactly one line feed; find_last_not_of always succeeds because the line begins with other
        // characters.
        line.resize(line.find_last_not_of(L'\n') + 1);
        line += L'\n';
        m_messages->Write(line);
    }
}

LuUnitTest::EResult LuUnitTest::CompareWithReference(std::string_view received, const std::wstring& path)
{
    return compareWithReference(received, path, true);
}

LuUnitTest::EResult LuUnitTest::CompareWithReference(std::wstring_view received, const std::wstring& path)
{
    return compareWithReference(LbEncoding::ToUtf8(received), path, true);
}

LuUnitTest::EResult LuUnitTest::CompareWithReference(std::span<const std::byte> received, const std::wstring& path)
{
    return compareWithReference({reinterpret_cast<const char*>(received.data()), received.size()}, path, false);
}

LuUnitTest::EResult LuUnitTest::compareWithReference(std::string_view received, const std::wstring& path, bool isText)
{
    const std::wstring place = LbOs::IsAbsolutePath(path) ? path : m_dataDirectory + path;
    const std::wstring difference = LbReceivedFile::Compare(received, place, isText);
    if (difference.empty())
    {
        return GetResultByErrors();
    }
    m_hasDifferences = true;
    writeMessageLine(true, difference);
    return eR_Different;
}
