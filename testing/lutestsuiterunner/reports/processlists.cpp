#include "testing/lutestsuiterunner/reports/processlists.h"

#include <set>

#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/model/textescape.h"
#include "testing/lutestsuiterunner/reports/wholefile.h"

namespace Runner
{

namespace
{

std::set<std::uint32_t> findProcesses(const CRunState& state)
{
    std::set<std::uint32_t> processes;
    for (std::uint32_t index = 0; index < state.GetPlan().cases.size(); ++index)
    {
        if (state.GetVerdict(index) == EVerdict::FailedShared)
        {
            const SAttempt& reported = *state.GetReported(index);
            if (state.GetPredecessors(reported).size() > c_MostEarlierCases)
            {
                processes.insert(reported.process);
            }
        }
    }
    return processes;
}

void writeList(const std::wstring& path, const CRunState& state, std::uint32_t process)
{
    WriteWholeFile(path, [&](LuStreamWriteBinaryFile& file) {
        for (const std::uint32_t index : state.GetCasesOfProcess(process))
        {
            const std::string line = ToEscapedUtf8(GetCaseName(state.GetPlan(), index)) + "\n";
            file.Write(line.data(), line.size());
        }
    });
}

} // namespace

std::wstring GetProcessListName(std::uint32_t process)
{
    return LbFormat(L"%s/process-%u.txt", c_OutputFolderName, process);
}

void WriteProcessLists(const std::wstring& folder, const CRunState& state)
{
    for (const std::uint32_t process : findProcesses(state))
    {
        LbFileSystem::AssertDirectory(folder + c_OutputFolderName);
        writeList(folder + LbPath::ToNative(GetProcessListName(process)), state, process);
    }
}

} // namespace Runner
