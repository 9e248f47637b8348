/// Reports for benchmarks, and a folder for their files.
#pragma once

#include <string>

#include "base/inoncopyable.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lbuniqueid.h"
#include "testing/lutestsuite/lutestsuitereport.h"

namespace Benchmarks
{

/// Makes a report in which every tenth case has failed with messages; `shift` selects which cases.
inline LuTestSuiteReport::SReportData MakeReport(std::uint32_t classes, std::uint32_t cases, std::uint32_t shift)
{
    LuTestSuiteReport::SReportData data;
    data.BuildConfiguration = L"Release x64";
    data.ClassesTotal = classes;
    data.CasesTotal = cases;
    data.Classes.resize(classes);
    for (std::uint32_t index = 0; index < classes; ++index)
    {
        data.Classes[index].Name = LbFormat(L"CTestClass%u", index);
    }
    data.Cases.resize(cases);
    for (std::uint32_t index = 0; index < cases; ++index)
    {
        LuTestSuiteReport::SReportCase& testCase = data.Cases[index];
        testCase.Id = index;
        testCase.ClassName = data.Classes[index % classes].Name;
        testCase.CaseName = LbFormat(L"data set %u, größer als üblich.txt", index);
        testCase.Time = static_cast<float>(index + shift) / 1000.0F;
        testCase.Memory = std::uint64_t{index} * 4096;
        if ((index + shift) % 10 == 0)
        {
            testCase.Result = LuTestSuiteRun::ECaseRunResult::Error;
            testCase.Dumps = {{true, L"value 17 in place of 18"}, {true, L"value 4 &lt; 5"}, {false, L"..."}};
        }
    }
    return data;
}

/// A temporary folder that is removed with the object.
class CFolder : public INonCopyable
{
public:
    CFolder() { LbFileSystem::AssertDirectory(m_path); }
    ~CFolder() { LbFileSystem::RemoveTree(m_path); }

    const std::wstring& GetPath() const { return m_path; }
    std::wstring GetPathOf(const wchar_t* name) const { return m_path + name; }

private:
    std::wstring m_path =
        LbFileSystem::GetDirectory(LbFileSystem::eDK_Temporary) + LbUniqueId::Generate() + LbPath::c_Separator;
};

} // namespace Benchmarks
