#include "tests/support/unwritable.h"

#include "base/lbfilesystem.h"
#include "tests/support/fulldevice.h"

std::vector<SUnwritablePlace> GetUnwritablePlaces(const ScopedFolder& folder, const std::wstring& name)
{
    folder.MakeFolder(name);
    std::vector<SUnwritablePlace> places = {
        {"folder in place of the file", folder.GetPathOf(name)},
        {"missing folder", folder.GetPathOf(L"fehlt/" + name)},
        {"too long a name", folder.GetPathOf(std::wstring(300, L'x') + name)},
    };
    if (const std::wstring device = GetFullDevice(); !device.empty())
    {
        places.push_back({"full disk", device});
    }
    // Takes no files, whoever asks.
    if (const std::wstring directory = L"/proc/"; LbFileSystem::IsDirectory(directory))
    {
        places.push_back({"folder that takes no files", directory + name});
    }
    return places;
}
