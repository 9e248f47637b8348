#include "tests/support/unwritable.h"

#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "base/inoncopyable.h"
#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "tests/support/fulldevice.h"
#include "tests/support/os/testaids.h"

namespace
{

/// Makes a path whose components are short enough, but which as a whole is too long for any system.
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

/// Forbids writing to a file or into a folder during its lifetime.
class CProtection : public INonCopyable
{
public:
    explicit CProtection(const std::wstring& place) : m_place(LbEncoding::ToNative(place))
    {
        std::filesystem::permissions(m_place, c_Writing, std::filesystem::perm_options::remove);
    }

    ~CProtection()
    {
        std::error_code ignored;
        std::filesystem::permissions(m_place, c_Writing, std::filesystem::perm_options::add, ignored);
    }

private:
    static constexpr std::filesystem::perms c_Writing = std::filesystem::perms::owner_write;

    std::filesystem::path m_place;
};

/// Protects `place`. Adds `path`, which is `place` itself or a file in it, unless the current user may write
/// everywhere.
void addProtected(std::vector<SUnwritablePlace>& places, const std::string& name, const std::wstring& place,
                  const std::wstring& path)
{
    auto protection = std::make_shared<CProtection>(place);
    if (!std::ofstream(std::filesystem::path(LbEncoding::ToNative(path))).is_open())
    {
        places.push_back({name, path, std::move(protection)});
    }
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
    // No user can create files in this folder, while an administrator can create them in an ordinary read-only folder.
    if (const std::wstring directory = L"/proc/"; LbFileSystem::IsDirectory(directory))
    {
        places.push_back({"folder that takes no files", directory + name, {}});
    }
    const std::wstring file = folder.WriteFile(L"nur lesbar " + name, "");
    addProtected(places, "read-only file", file, file);
    const std::wstring readOnly = folder.MakeFolder(L"nur lesbar");
    addProtected(places, "read-only folder", readOnly, readOnly + name);
    const std::wstring held = folder.WriteFile(L"gehalten " + name, "");
    if (std::shared_ptr<void> hold = LbOs::HoldFile(held))
    {
        places.push_back({"file that another program holds", held, std::move(hold)});
    }
    return places;
}
