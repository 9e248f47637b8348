/// The XML report's elements that hold one field each. Writer and reader use the same tables.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "testing/lutestsuite/lutestsuitereport.h"

namespace LuTestSuite
{

/// An element that contains only a field's value.
template<typename Record>
struct SXmlField
{
    const char* element;
    std::variant<std::wstring Record::*, std::uint32_t Record::*, std::uint64_t Record::*, float Record::*> member;
};

using ReportData = LuTestSuiteReport::SReportData;
using ReportClass = LuTestSuiteReport::SReportClass;
using SvnInfo = LuTestSuiteUtils::SSvnInfo;
using PscmInfo = LuTestSuiteUtils::SPscmInfo;

// All tables are in file order.

inline constexpr SXmlField<ReportData> c_SystemInfoFields[] = {
    {"Processor", &ReportData::Processor},
    {"GPU", &ReportData::GPU},
    {"MachineName", &ReportData::MachineName},
};

inline constexpr SXmlField<ReportData> c_BuildInfoFields[] = {
    {"BuildConfiguration", &ReportData::BuildConfiguration},
};

inline constexpr SXmlField<SvnInfo> c_SvnInfoFields[] = {
    {"SvnURL", &SvnInfo::URL},
    {"SvnRevision", &SvnInfo::Revision},
    {"SvnWorkingCopyRootPath", &SvnInfo::WorkingCopyRootPath},
    {"SvnLastChangedAuthor", &SvnInfo::LastChangedAuthor},
    {"SvnLastChangedRev", &SvnInfo::LastChangedRev},
    {"SvnLastChangedDate", &SvnInfo::LastChangedDate},
};

inline constexpr SXmlField<PscmInfo> c_PscmInfoFields[] = {
    {"PscmServer", &PscmInfo::Server},
    {"PscmRepository", &PscmInfo::Repository},
    {"PscmBranch", &PscmInfo::Branch},
    {"PscmChangeset", &PscmInfo::Changeset},
    {"PscmChangesetAuthor", &PscmInfo::ChangesetAuthor},
    {"PscmWorkspacePath", &PscmInfo::WorkspacePath},
};

inline constexpr SXmlField<ReportData> c_RunInfoFields[] = {
    {"DataDirectory", &ReportData::DataDirectory},
    {"ExecutionMode", &ReportData::ExecutionMode},
    {"ThreadCount", &ReportData::ThreadCount},
};

inline constexpr SXmlField<ReportData> c_StatisticsFields[] = {
    {"CasesTotal", &ReportData::CasesTotal}, {"Errors", &ReportData::Errors},
    {"Failures", &ReportData::Failures},     {"Successful", &ReportData::Successful},
    {"Warnings", &ReportData::Warnings},     {"MemoryMax", &ReportData::MemoryMax},
    {"MemoryMin", &ReportData::MemoryMin},   {"MemoryAvg", &ReportData::MemoryAvg},
    {"TimeTotal", &ReportData::TimeTotal},   {"TimeMax", &ReportData::TimeMax},
    {"TimeMin", &ReportData::TimeMin},       {"TimeAvg", &ReportData::TimeAvg},
    {"DateBegin", &ReportData::DateBegin},   {"DateEnd", &ReportData::DateEnd},
};

inline constexpr SXmlField<ReportData> c_ClassStatisticsFields[] = {
    {"ClassesTotal", &ReportData::ClassesTotal},
    {"Successful", &ReportData::ClassesSuccessful},
};

inline constexpr SXmlField<ReportClass> c_ClassFields[] = {
    {"CasesTotal", &ReportClass::CasesTotal},   {"Errors", &ReportClass::Errors},
    {"Failures", &ReportClass::Failures},       {"Warnings", &ReportClass::Warnings},
    {"ContactName", &ReportClass::ContactName}, {"ContactEMail", &ReportClass::ContactEMail},
};

} // namespace LuTestSuite
