#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "calls.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

using Utils = LuTestSuiteUtils;

constexpr const char* c_SameParent = "the parent runs the same program";

/// The configuration of one run with the host beside this program.
std::wstring writeArchiveConfiguration(const SPlaces& places)
{
    const bool isDebug = Utils::GetBuildConfiguration().starts_with(L"Debug");
    const std::wstring text =
        LbFormat(L"<ArchiveRun><Run name=\"outside\">"
                 L"<BinaryDir>%s</BinaryDir><DataDir>%s</DataDir><OutDir>%s</OutDir>"
                 L"<Config>%s</Config><Platform>x64</Platform><External>false</External><TrackHeap>false</TrackHeap>"
                 L"</Run></ArchiveRun>",
                 LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable), places.data, places.work + L"archived",
                 isDebug ? L"Debug" : L"Release");
    const std::wstring path = places.work + L"archive.xml";
    WriteFile(path, LbEncoding::ToUtf8(text));
    return path;
}

} // namespace

int WorkAsChild(const std::wstring& task, const std::wstring& answer)
{
    if (task == L"park")
    {
        Utils::EnterDebugBreakpoint();
    }
    WriteFile(answer, Utils::CheckForSameParentProcess() ? c_SameParent : "");
    return 0;
}

void CallProcesses(const std::wstring& program, const SPlaces& places)
{
    const std::wstring answer = places.work + L"answer.txt";
    constexpr std::uint32_t c_Enough = 60;
    Utils::ExecuteWithTimeout(program, LbFormat(L"ask \"%s\"", answer), places.work, c_Enough);
    Expect(LbFileSystem::IsFile(answer) && LbFileSystem::ReadFile8Bit(answer) == c_SameParent,
           "CheckForSameParentProcess");
    CRecordedText output;
    Utils::ExecuteWithTimeout(program, L"park -", places.work, 1);
    Expect(output.Take().find(L"nach 1 Sekunden abgebrochen") != std::wstring::npos,
           "ExecuteWithTimeout, EnterDebugBreakpoint");
    Utils::KillAllByName(L"no program has this name");
    Expect(output.Take().empty(), "KillAllByName");

    LuTestSuiteSetup setup;
    setup.archiveRun = writeArchiveConfiguration(places) + L":outside";
    Utils::RunArchiveMode(setup);
    Expect(LbFileSystem::IsFile(places.work + L"archived" + LbPath::c_Separator + L"index.html"), "RunArchiveMode");
}
