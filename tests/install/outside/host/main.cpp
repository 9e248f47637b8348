/// OutsideHost DATA WORK: makes all calls and prints what failed. The exit status is 1 if something failed.

#include <iostream>
#include <vector>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbpath.h"
#include "base/lustream.h"
#include "base/os/process.h"
#include "calls.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"

namespace
{

bool s_hasFailed = false;

void callAll(const std::wstring& program, const SPlaces& places)
{
    LuTestSuiteEnvironment environment;
    CallEnvironment(environment);
    CallOutput();
    CallHeapTracker();
    CallMarkupWriter(places);
    CallPathsAndTexts(places);
    CallConfiguration(places);
    CallCommandLine(environment, places);
    CallSelection(places);
    CallAuxiliaryModes(environment, places);
    CallRuns(environment, places);
    CallRunEvents(environment, places);
    CallReports(environment, places);
    CallProcesses(program, places);
}

} // namespace

void Expect(bool condition, const char* what)
{
    if (!condition)
    {
        s_hasFailed = true;
        std::cout << "failed: " << what << std::endl;
    }
}

bool HasFailed()
{
    return s_hasFailed;
}

void WriteFile(const std::wstring& path, const std::string& bytes)
{
    LuStreamWriteBinaryFile file(path);
    file.Write(bytes.data(), bytes.size());
    file.Close();
}

int main(int argumentCount, char** arguments)
{
    try
    {
        const std::vector<std::wstring> texts = LbOs::GetArguments(argumentCount, arguments);
        if (texts.at(1) == L"park" || texts.at(1) == L"ask")
        {
            return WorkAsChild(texts[1], texts.at(2));
        }
        callAll(LbPath::ToNative(texts[0]), {LbPath::ToNative(texts[1]), LbPath::ToNative(texts.at(2))});
    }
    catch (...)
    {
        Expect(false, LbEncoding::ToUtf8(LbDescribeCurrentException()).c_str());
    }
    std::cout << (HasFailed() ? "failed" : "every operation answers") << std::endl;
    return HasFailed() ? 1 : 0;
}
