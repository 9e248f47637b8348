#include "testing/lutestsuite/report/companions.h"

#include "base/lbfilesystem.h"
#include "base/lustream.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

void writeBytes(const std::wstring& path, const std::string& bytes)
{
    LbFileSystem::WriteWhole(path, [&bytes](const std::wstring& place) {
        LuStreamWriteBinaryFile file(place);
        file.Write(bytes.data(), bytes.size());
        file.Close();
    });
}

} // namespace

void LuTestSuite::WriteCompanions(const std::wstring& pagePath, bool writeCss, bool writeJs)
{
    const std::wstring folder = LuTestSuiteUtils::GetPrunedPath(pagePath);
    if (writeCss)
    {
        writeBytes(folder + c_StylesheetName, LuTestSuiteUtils::GetDefaultStylesheet());
    }
    if (writeJs)
    {
        writeBytes(folder + c_ScriptName, LuTestSuiteUtils::GetJavascriptSource());
    }
}
