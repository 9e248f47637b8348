#include "testing/lutestsuite/environment/buildrecord.h"

#include <algorithm>
#include <span>

#include "base/lbdiagnostics.h"
#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"

namespace
{

using SSvnInfo = LuTestSuiteUtils::SSvnInfo;
using SPscmInfo = LuTestSuiteUtils::SPscmInfo;

template<typename Record>
struct SField
{
    std::wstring_view key;
    std::wstring Record::*member;
};

constexpr SField<SSvnInfo> c_SvnFields[] = {
    {L"Path", &SSvnInfo::Path},
    {L"Working Copy Root Path", &SSvnInfo::WorkingCopyRootPath},
    {L"URL", &SSvnInfo::URL},
    {L"Repository Root", &SSvnInfo::RepositoryRoot},
    {L"Revision", &SSvnInfo::Revision},
    {L"Last Changed Author", &SSvnInfo::LastChangedAuthor},
    {L"Last Changed Rev", &SSvnInfo::LastChangedRev},
    {L"Last Changed Date", &SSvnInfo::LastChangedDate},
};

constexpr SField<SPscmInfo> c_PscmFields[] = {
    {L"Server", &SPscmInfo::Server},
    {L"Repository", &SPscmInfo::Repository},
    {L"Branch", &SPscmInfo::Branch},
    {L"Changeset", &SPscmInfo::Changeset},
    {L"ChangesetAuthor", &SPscmInfo::ChangesetAuthor},
    {L"WorkspacePath", &SPscmInfo::WorkspacePath},
};

std::wstring_view trim(std::wstring_view text)
{
    constexpr std::wstring_view c_WhiteSpace = L" \t\n\v\f\r";
    const std::size_t first = text.find_first_not_of(c_WhiteSpace);
    return first == std::wstring_view::npos ? std::wstring_view()
                                            : text.substr(first, text.find_last_not_of(c_WhiteSpace) - first + 1);
}

template<typename Record>
void readLine(std::wstring_view line, std::span<const SField<Record>> fields, Record& record)
{
    const std::size_t colon = line.find(L':');
    if (colon == std::wstring_view::npos)
    {
        return;
    }
    const auto field = std::ranges::find(fields, line.substr(0, colon), &SField<Record>::key);
    if (field != fields.end())
    {
        record.*field->member = trim(line.substr(colon + 1));
    }
}

template<typename Record>
std::unique_ptr<Record> readRecord(std::string_view bytes, std::span<const SField<Record>> fields)
{
    if (bytes.empty())
    {
        return nullptr;
    }
    const std::wstring text = LbEncoding::IsUtf8(bytes) ? LbEncoding::FromUtf8(bytes) : LbEncoding::FromLatin1(bytes);
    auto record = std::make_unique<Record>();
    for (std::size_t start = 0; start < text.size();)
    {
        const std::size_t end = std::min(text.find(L'\n', start), text.size());
        readLine<Record>(std::wstring_view(text).substr(start, end - start), fields, *record);
        start = end + 1;
    }
    return record;
}

} // namespace

std::unique_ptr<SSvnInfo> LuTestSuite::ReadSvnRecord(std::string_view bytes)
{
    return readRecord<SSvnInfo>(bytes, c_SvnFields);
}

std::unique_ptr<SPscmInfo> LuTestSuite::ReadPscmRecord(std::string_view bytes)
{
    return readRecord<SPscmInfo>(bytes, c_PscmFields);
}

std::unique_ptr<SPscmInfo> LuTestSuite::FindPscmRecord(const std::wstring& directory, std::string_view own)
try
{
    const std::wstring file = directory + c_BuildRecordFile;
    return ReadPscmRecord(LbFileSystem::IsFile(file) ? LbFileSystem::ReadFile8Bit(file) : std::string(own));
}
catch (const LbException& exception)
{
    // Does not use the library's own record here, because the file belongs to another build.
    LbDiagnostics::Trace(L"LuTestSuite: " + exception.GetMessageText());
    return nullptr;
}
