#include "tests/support/unwritable.h"

#include <utility>

#include "base/lbfilesystem.h"
#include "base/os/testaids.h"
#include "tests/support/fulldevice.h"

namespace
{

/// Each of its names is short enough, all together are too long for any system.
std::wstring makeLongFolder()
{
    constexpr int c_Levels = 4000;
    std::wstring path;
    for (int level = 0; level < c_Levels; ++level)
    {
        path += L"Ebene 123/";
    }
    return path;
}

} // namespace

std::vector<SUnwritablePlace> GetUnwritablePlaces(const ScopedFolder& folder, const std::wstring& name)
{
    folder.MakeFolder(name);
    folder.WriteFile(L"Datei", "");
    std::vector<SUnwritablePlace> places = {
        {"folder in place of the file", folder.GetPathOf(name), {}},
        {"missing folder", folder.GetPathOf(L"fehlt/" + name), {}},
        {"file in place of the folder", folder.GetPathOf(L"Datei/" + name), {}},
        {"too long a name", folder.GetPathOf(std::wstring(300, L'x') + name), {}},
        {"too long a path", folder.GetPathOf(makeLongFolder() + name), {}},
    };
    if (const std::wstring device = GetFullDevice(); !device.empty())
    {
        places.push_back({"full disk", device, {}});
    }
    // Takes no files, whoever asks.
    if (const std::wstring directory = L"/proc/"; LbFileSystem::IsDirectory(directory))
    {
        places.push_back({"folder that takes no files", directory + name, {}});
    }
    const std::wstring held = folder.WriteFile(L"gehalten " + name, "");
    if (std::shared_ptr<void> hold = LbOs::HoldFile(held))
    {
        places.push_back({"file that another program holds", held, std::move(hold)});
    }
    return places;
}
