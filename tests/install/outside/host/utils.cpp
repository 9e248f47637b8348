#include <algorithm>

#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lbrtti.h"
#include "base/xmlnode.h"
#include "calls.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

using Utils = LuTestSuiteUtils;

const wchar_t c_Separator = LbPath::c_Separator;

void callBuildInformation()
{
    Expect(Utils::GetDefaultThreadCount() >= 1, "GetDefaultThreadCount");
    Expect(Utils::GetBuildConfiguration().ends_with(L" x64"), "GetBuildConfiguration");
    Expect(Utils::GetPlatform() == Utils::eP_x64, "GetPlatform");
    Expect(Utils::GetSvnInfo() == nullptr, "GetSvnInfo");
    const auto pscm = Utils::GetPscmInfo();
    Expect(pscm == nullptr || !pscm->Changeset.empty() || !pscm->WorkspacePath.empty(), "GetPscmInfo");
    Expect(Utils::GetModuleName(*LbRTTI::Find(L"COutsideTest")).starts_with(L"OutsideTests."), "GetModuleName");
    Expect(!Utils::GetDefaultStylesheet().empty(), "GetDefaultStylesheet");
    Expect(!Utils::GetJavascriptSource().empty(), "GetJavascriptSource");
    Expect(Utils::LoadResourceToString(L"no such", L"resource").empty(), "LoadResourceToString");
}

} // namespace

void CallPathsAndTexts(const SPlaces& places)
{
    const std::wstring folder = std::wstring(L"a") + c_Separator;
    Expect(Utils::AddBackslash(L"a") == folder, "AddBackslash");
    Expect(Utils::RemoveBackslash(folder) == L"a", "RemoveBackslash");
    Expect(Utils::GetFileNameOnly(folder + L"b.txt") == L"b.txt", "GetFileNameOnly");
    Expect(Utils::GetPrunedPath(folder + L"b.txt") == folder, "GetPrunedPath");
    std::wstring path;
    std::wstring name;
    Utils::SplitFileName(folder + L"b.txt", path, name);
    Expect(path == folder && name == L"b.txt", "SplitFileName");
    Expect(Utils::AssertDirectory(places.work + L"new"), "AssertDirectory");
    Expect(LbFileSystem::IsDirectory(Utils::GetLocalTestSuiteDir()), "GetLocalTestSuiteDir");
    Expect(Utils::FormatTime(0.25, 1) == L"250.0ms", "FormatTime");
    Expect(Utils::GetTrimmedLines(L"a\nb\nc", 2) == L"a\nb\n", "GetTrimmedLines");
    callBuildInformation();
}

void CallConfiguration(const SPlaces& places)
{
    const std::wstring path = places.work + L"config.xml";
    WriteFile(path, "<Config><ThreadCount>7</ThreadCount><Isolated>true</Isolated></Config>");
    Utils::SConfigFileData data;
    Utils::ReadConfigXML(path, data);
    Expect(data.ThreadCount == 7 && data.Isolated, "ReadConfigXML");
    Expect(Utils::GetDataDirHistory().empty(), "GetDataDirHistory");

    XMLDocument document;
    document.LoadText("<Run><TimeOutSec>5</TimeOutSec><Parallel>true</Parallel></Run>", "Run");
    LuTestSuiteRun::SParams params;
    Utils::GetRunParam(document.GetRoot(), params);
    Expect(params.timeOutSec == 5 && params.parallel, "GetRunParam");
    std::uint32_t narrow = 0;
    std::uint64_t wide = 0;
    bool flag = false;
    Utils::GetUInt32(document.GetRoot().GetChild("TimeOutSec"), narrow);
    Utils::GetUInt64(document.GetRoot().GetChild("TimeOutSec"), wide);
    Utils::GetBool(document.GetRoot().GetChild("Parallel"), flag);
    Expect(narrow == 5 && wide == 5 && flag, "GetUInt32, GetUInt64, GetBool");
}

void CallCommandLine(LuTestSuiteEnvironment& environment, const SPlaces& places)
{
    Expect(Utils::GetCommandLineHelp().find(L"--dll") != std::wstring::npos, "GetCommandLineHelp");
    const wchar_t* const arguments[] = {L"OutsideHost", L"-d", places.data.c_str(), L"--dll", L"OutsideTests"};
    const int count = static_cast<int>(std::size(arguments));
    LuTestSuiteSetup setup;
    Expect(Utils::ProcessCommandLine(setup, count, arguments), "ProcessCommandLine");
    Expect(setup.dataDir == places.data && setup.dlls.size() == 1, "the setup of ProcessCommandLine");
    Expect(Utils::RunCommandLine(environment, count, arguments), "RunCommandLine");
    const wchar_t* const refused[] = {L"OutsideHost", L"--no-such-option"};
    Expect(!Utils::RunCommandLine(environment, static_cast<int>(std::size(refused)), refused), "a refused call");
}

void CallSelection(const SPlaces& places)
{
    std::wstring dataDir = Utils::RemoveBackslash(places.data);
    Utils::PreprocessDataDir(dataDir);
    Expect(dataDir == places.data, "PreprocessDataDir");
    std::vector<LuTestSuite::SUnitTest> unitTests = Utils::ScanDirectoryForUnitTests(dataDir, true);
    Expect(std::ranges::any_of(unitTests, [](const auto& one) { return one.className == L"COutsideTest"; }),
           "ScanDirectoryForUnitTests");
    Utils::FilterTestCases(unitTests, L"", {L"COutsideTest:hello"}, {}, LuTestSuiteRun::c_NoLimit, false);
    Expect(unitTests.size() == 1 && unitTests[0].cases.size() == 1, "FilterTestCases");
    Expect(unitTests.at(0).GetDataSetFiles().size() == 1, "SUnitTest::GetDataSetFiles");
    Expect(std::regex_match(L"hello.txt", Utils::GenerateWildcardRegex(L"*.t?t")), "GenerateWildcardRegex");
}

void CallAuxiliaryModes(LuTestSuiteEnvironment& environment, const SPlaces& places)
{
    LuTestSuiteSetup setup;
    setup.dataDir = places.data;
    setup.duplicateMode = eDM_List;
    CRecordedText output;
    Utils::RunQueryMode(setup, environment);
    Expect(output.Take().find(L"Ausgewählte/Gefundene Klassen: 2/2\n") != std::wstring::npos, "RunQueryMode");
    Utils::ListDisabledTestCases(setup, environment);
    Expect(output.Take().find(L"Deaktivierte Fälle: 0 von 3\n") != std::wstring::npos, "ListDisabledTestCases");
    Utils::RunDuplicateDetection(setup, environment);
    Expect(output.Take().find(L"COutsideTest") != std::wstring::npos, "RunDuplicateDetection");
}
