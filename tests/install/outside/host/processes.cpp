#include <chrono>
#include <filesystem>
#include <thread>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/lbuniqueid.h"
#include "base/os/platform.h"
#include "calls.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

using Utils = LuTestSuiteUtils;

constexpr std::uint32_t c_Enough = 60;
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

void awaitFile(const std::wstring& path)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(c_Enough);
    while (!LbFileSystem::IsFile(path) && std::chrono::steady_clock::now() < end)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

/// Starts a copy of this program under a unique name. The copy runs until KillAllByName ends it.
void callKillAllByName(const std::wstring& program, const SPlaces& places, CRecordedText& output)
{
    const std::wstring name = L"OutsideHost-" + LbUniqueId::Generate() + LbOs::c_ExecutableSuffix;
    const std::wstring copy = Utils::GetPrunedPath(program) + name;
    const std::wstring parked = places.work + L"killed.txt";
    std::filesystem::copy_file(std::filesystem::path(program), std::filesystem::path(copy));
    std::thread starter(
        [&] { Utils::ExecuteWithTimeout(copy, LbFormat(L"park \"%s\"", parked), places.work, 2 * c_Enough); });
    awaitFile(parked);
    Utils::KillAllByName(name);
    starter.join();
    Expect(output.Take() == LbFormat(L"Aktiver Prozess %s gefunden. Wird terminiert.\n", name), "KillAllByName");
    std::filesystem::remove(std::filesystem::path(copy));
}

} // namespace

int WorkAsChild(const std::wstring& task, const std::wstring& answer)
{
    if (task == L"park")
    {
        WriteFile(answer, "");
        Utils::EnterDebugBreakpoint();
    }
    WriteFile(answer, Utils::CheckForSameParentProcess() ? c_SameParent : "");
    return 0;
}

void CallProcesses(const std::wstring& program, const SPlaces& places)
{
    const std::wstring answer = places.work + L"answer.txt";
    Utils::ExecuteWithTimeout(program, LbFormat(L"ask \"%s\"", answer), places.work, c_Enough);
    Expect(LbFileSystem::IsFile(answer) && LbFileSystem::ReadFile8Bit(answer) == c_SameParent,
           "CheckForSameParentProcess");
    CRecordedText output;
    Utils::ExecuteWithTimeout(program, LbFormat(L"park \"%s\"", places.work + L"parked.txt"), places.work, 1);
    Expect(output.Take().find(L"nach 1 Sekunden abgebrochen") != std::wstring::npos,
           "ExecuteWithTimeout, EnterDebugBreakpoint");
    callKillAllByName(program, places, output);

    LuTestSuiteSetup setup;
    setup.archiveRun = writeArchiveConfiguration(places) + L":outside";
    Utils::RunArchiveMode(setup);
    Expect(LbFileSystem::IsFile(places.work + L"archived" + LbPath::c_Separator + L"index.html"), "RunArchiveMode");
}
