#include "testing/lutestsuite/report/rundata.h"

#include <cmath>
#include <limits>

#include "testing/lutestsuite/report/page.h"

namespace LuTestSuite
{

namespace
{

using SData = LuTestSuiteReport::SReportData;
using SvnInfo = LuTestSuiteUtils::SSvnInfo;
using PscmInfo = LuTestSuiteUtils::SPscmInfo;

constexpr float c_Epsilon = std::numeric_limits<float>::epsilon();

template<std::wstring SData::*Member>
std::wstring getText(const SData& data)
{
    return data.*Member;
}

template<auto Member>
std::wstring getNumber(const SData& data)
{
    return LbFormat(L"%I64u", data.*Member);
}

template<float SData::*Member>
std::wstring getTime(const SData& data)
{
    return LbFormat(L"%f", data.*Member);
}

std::wstring getTimeOut(const SData& data)
{
    return data.TimeOut < LuTestSuiteRun::c_NoLimit ? LbFormat(L"%d", data.TimeOut) : L"-";
}

template<std::uint32_t SData::*Successful, std::uint32_t SData::*Total>
std::wstring getRate(const SData& data)
{
    const std::uint32_t successful = data.*Successful;
    const std::uint32_t total = data.*Total;
    return LbFormat(L"%d/%d = %4.2f%%", successful, total, GetPercentage(successful, total));
}

template<std::wstring SvnInfo::*Member>
std::wstring getSvn(const SData& data)
{
    return *data.SvnInfo.*Member;
}

template<std::wstring PscmInfo::*Member>
std::wstring getPscm(const SData& data)
{
    return *data.PscmInfo.*Member;
}

bool hasSvn(const SData& data)
{
    return data.SvnInfo != nullptr;
}

bool hasPscm(const SData& data)
{
    return data.PscmInfo != nullptr;
}

template<std::uint32_t SData::*Successful, std::uint32_t SData::*Total>
EDiffState compareRate(const SData& a, const SData& b)
{
    const float gain = GetPercentage(b.*Successful, b.*Total) - GetPercentage(a.*Successful, a.*Total);
    if (gain > c_Epsilon)
    {
        return EDiffState::Better;
    }
    return -gain > c_Epsilon ? EDiffState::Worse : EDiffState::Plain;
}

template<float SData::*Member>
EDiffState compareTime(const SData& a, const SData& b)
{
    return std::fabs(a.*Member - b.*Member) >= c_Epsilon ? EDiffState::Different : EDiffState::Plain;
}

constexpr SRunDataRow c_Build[] = {
    {L"Build Configuration:", getText<&SData::BuildConfiguration>},
    {L"SVN URL:", getSvn<&SvnInfo::URL>, hasSvn},
    {L"SVN Revision", getSvn<&SvnInfo::Revision>, hasSvn},
    {L"SVN Working Copy:", getSvn<&SvnInfo::WorkingCopyRootPath>, hasSvn},
    {L"SVN Last Changed Author:", getSvn<&SvnInfo::LastChangedAuthor>, hasSvn},
    {L"SVN Last Changed Rev:", getSvn<&SvnInfo::LastChangedRev>, hasSvn},
    {L"SVN Last Changed Date:", getSvn<&SvnInfo::LastChangedDate>, hasSvn},
    {L"PSCM Server:", getPscm<&PscmInfo::Server>, hasPscm},
    {L"PSCM Repository:", getPscm<&PscmInfo::Repository>, hasPscm},
    {L"PSCM Branch:", getPscm<&PscmInfo::Branch>, hasPscm},
    {L"PSCM Changeset:", getPscm<&PscmInfo::Changeset>, hasPscm},
    {L"PSCM Changeset Author:", getPscm<&PscmInfo::ChangesetAuthor>, hasPscm},
    {L"PSCM Workspace Path:", getPscm<&PscmInfo::WorkspacePath>, hasPscm},
};

constexpr SRunDataRow c_Setup[] = {
    {L"CPU:", getText<&SData::Processor>},
    {L"GPU:", getText<&SData::GPU>},
    {L"Machine Name:", getText<&SData::MachineName>},
    {L"Data Directory:", getText<&SData::DataDirectory>},
    {L"Execution Mode:", getText<&SData::ExecutionMode>},
    {L"Thread Count:", getNumber<&SData::ThreadCount>},
    {L"Testcase Time Out (sec.):", getTimeOut},
};

constexpr SRunDataRow c_Result[] = {
    {L"Successful Classes / Total Classes:", getRate<&SData::ClassesSuccessful, &SData::ClassesTotal>, nullptr,
     compareRate<&SData::ClassesSuccessful, &SData::ClassesTotal>},
    {L"Successful Cases / Total Cases:", getRate<&SData::Successful, &SData::CasesTotal>, nullptr,
     compareRate<&SData::Successful, &SData::CasesTotal>},
    {L"Case Errors:", getNumber<&SData::Errors>},
    {L"Case Failures:", getNumber<&SData::Failures>},
    {L"Cases Warnings:", getNumber<&SData::Warnings>},
    {L"Begin Date:", getText<&SData::DateBegin>},
    {L"End Date:", getText<&SData::DateEnd>},
    {L"Time total (sec):", getTime<&SData::TimeTotal>, nullptr, compareTime<&SData::TimeTotal>},
    {L"Time per case avg (sec):", getTime<&SData::TimeAvg>, nullptr, compareTime<&SData::TimeAvg>},
    {L"Time per case max (sec):", getTime<&SData::TimeMax>, nullptr, compareTime<&SData::TimeMax>},
    {L"Time per case min (sec):", getTime<&SData::TimeMin>, nullptr, compareTime<&SData::TimeMin>},
    {L"Memory per case avg (Bytes):", getNumber<&SData::MemoryAvg>},
    {L"Memory per case max (Bytes):", getNumber<&SData::MemoryMax>},
    {L"Memory per case min (Bytes):", getNumber<&SData::MemoryMin>},
};

constexpr SRunDataTable c_Tables[] = {
    {L"Build Version", L"<table id=\"build\">", c_Build},
    {L"Test Setup", L"<table id=\"setup\">", c_Setup},
    {L"Result", L"<table id=\"result\">", c_Result},
};

} // namespace

std::span<const SRunDataTable> GetRunDataTables()
{
    return c_Tables;
}

bool IsPresent(const SRunDataRow& row, const LuTestSuiteReport::SReportData& data)
{
    return row.isPresent == nullptr || row.isPresent(data);
}

} // namespace LuTestSuite
