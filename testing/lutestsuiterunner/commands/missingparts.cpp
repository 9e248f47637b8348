#include "testing/lutestsuiterunner/commands/missingparts.h"

#include <algorithm>

#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbrtti.h"

namespace Runner
{

std::wstring FindMissingFolder(const SPlan& plan)
{
    if (!LbFileSystem::IsDirectory(plan.workingDirectory))
    {
        return plan.workingDirectory;
    }
    const auto unitTest = std::ranges::find_if(plan.unitTests, [](const LuTestSuite::SUnitTest& candidate) {
        return !LbFileSystem::IsDirectory(candidate.dataDirectory);
    });
    return unitTest == plan.unitTests.end() ? std::wstring() : unitTest->dataDirectory;
}

std::wstring FindMissingClass(const SPlan& plan)
{
    const auto unitTest = std::ranges::find_if(plan.unitTests, [](const LuTestSuite::SUnitTest& candidate) {
        return LbRTTI::Find(candidate.className) == nullptr;
    });
    return unitTest == plan.unitTests.end()
               ? std::wstring()
               : LbFormat(L"%s aus dem Modul %s", unitTest->className, unitTest->moduleName);
}

} // namespace Runner
