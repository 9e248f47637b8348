/// The fields of a plan that are written and read in the same way: names in the file, and members.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "testing/lutestsuiterunner/model/plan.h"

namespace Runner
{

template<typename R>
struct STextField
{
    std::string_view name;
    std::wstring R::*member;
};

inline constexpr STextField<SOrigin> c_OriginFields[] = {{"configuration", &SOrigin::buildConfiguration},
                                                         {"processor", &SOrigin::processor},
                                                         {"graphics", &SOrigin::graphics},
                                                         {"machine", &SOrigin::machine}};

using SSvnInfo = LuTestSuiteUtils::SSvnInfo;
inline constexpr STextField<SSvnInfo> c_SvnFields[] = {{"path", &SSvnInfo::Path},
                                                       {"root", &SSvnInfo::WorkingCopyRootPath},
                                                       {"url", &SSvnInfo::URL},
                                                       {"repository", &SSvnInfo::RepositoryRoot},
                                                       {"revision", &SSvnInfo::Revision},
                                                       {"changeAuthor", &SSvnInfo::LastChangedAuthor},
                                                       {"change", &SSvnInfo::LastChangedRev},
                                                       {"changeDate", &SSvnInfo::LastChangedDate}};

using SPscmInfo = LuTestSuiteUtils::SPscmInfo;
inline constexpr STextField<SPscmInfo> c_PscmFields[] = {
    {"server", &SPscmInfo::Server},          {"repository", &SPscmInfo::Repository},
    {"branch", &SPscmInfo::Branch},          {"changeset", &SPscmInfo::Changeset},
    {"author", &SPscmInfo::ChangesetAuthor}, {"workspace", &SPscmInfo::WorkspacePath}};

using SContact = LuTestSuite::SContact;
inline constexpr STextField<SContact> c_ContactFields[] = {
    {"name", &SContact::name}, {"email", &SContact::email}, {"role", &SContact::role}};

inline constexpr STextField<SDisabledCase> c_DisabledFields[] = {{"class", &SDisabledCase::className},
                                                                 {"folder", &SDisabledCase::dataDirectory},
                                                                 {"name", &SDisabledCase::name},
                                                                 {"file", &SDisabledCase::dataSetFile}};

template<typename R>
struct SValueField
{
    std::string_view name;
    std::variant<bool R::*, std::int32_t R::*, std::uint32_t R::*, std::uint64_t R::*> member;
};

using SParams = LuTestSuiteRun::SParams;
inline constexpr SValueField<SParams> c_ParamFields[] = {
    {"trackHeap", &SParams::trackHeap},
    {"dumpHeap", &SParams::dumpHeap},
    {"reportMemLeak", &SParams::reportMemLeak},
    {"external", &SParams::external},
    {"isolated", &SParams::isolated},
    {"assertDialog", &SParams::assertDialog},
    {"verbose", &SParams::verbose},
    {"verboseOutput", &SParams::deVerboseOutput},
    {"debuggingSerialization", &SParams::deDebuggingSerialization},
    {"predefinedBreakPoints", &SParams::dePredefinedBreakPoints},
    {"parallel", &SParams::parallel},
    {"workerThreads", &SParams::workerThreads},
    {"repetitions", &SParams::repetitions},
    {"timeOutSec", &SParams::timeOutSec},
    {"testCaseMax", &SParams::testCaseMax},
    {"breakAllocId", &SParams::breakAllocId},
    {"breakAllocSize", &SParams::breakAllocSize},
    {"repetitionsGiven", &SParams::repetitionsGiven},
};

inline constexpr SValueField<SReportRules> c_RuleFields[] = {{"messageReportMax", &SReportRules::messageReportMax},
                                                             {"smallReport", &SReportRules::smallReport},
                                                             {"tolerateWarnings", &SReportRules::tolerateWarnings},
                                                             {"flakyAllowed", &SReportRules::isFlakyAllowed}};

inline constexpr SValueField<SShard> c_ShardFields[] = {{"number", &SShard::number}, {"count", &SShard::count}};

/// The version of the plan's format.
inline constexpr std::uint32_t c_PlanFormat = 1;

} // namespace Runner
