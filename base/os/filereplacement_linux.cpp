#include "base/os/filereplacement.h"

#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/os/linux/systempath.h"

using LbOs::Linux::ToSystemPath;

namespace
{

/// Checks the rights of the effective user, as opening a file does.
bool isAllowed(const std::string& path, int rights)
{
    return faccessat(AT_FDCWD, path.c_str(), rights, AT_EACCESS) == 0;
}

/// Gives the file at `path` the former owner, group and permissions, as far as the user may set them. Only privileged
/// users can set the owner, for example when the administrator rewrites another user's file. The owner is set first,
/// because changing it removes some permissions.
void handDown(const struct stat& former, const std::string& path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0)
    {
        return;
    }
    constexpr uid_t c_AsItIs = static_cast<uid_t>(-1);
    const bool isGroupKept = (status.st_uid == former.st_uid && status.st_gid == former.st_gid) ||
                             chown(path.c_str(), former.st_uid, former.st_gid) == 0 ||
                             chown(path.c_str(), c_AsItIs, former.st_gid) == 0;
    // If the file gets another group, that group gets only the rights that everybody has.
    const mode_t others = former.st_mode & S_IRWXO;
    const mode_t group = isGroupKept ? former.st_mode & S_IRWXG : others << 3U;
    chmod(path.c_str(), (former.st_mode & S_IRWXU) | group | others);
}

} // namespace

bool LbOs::MayAddFiles(const std::wstring& directory)
{
    return isAllowed(ToSystemPath(directory), W_OK | X_OK);
}

bool LbOs::RenameFile(const std::wstring& path, const std::wstring& newPath)
{
    const std::string name = ToSystemPath(path);
    const std::string newName = ToSystemPath(newPath);
    struct stat former = {};
    if (lstat(newName.c_str(), &former) == 0 && S_ISREG(former.st_mode))
    {
        if (!isAllowed(newName, W_OK))
        {
            return false;
        }
        handDown(former, name);
    }
    return std::rename(name.c_str(), newName.c_str()) == 0;
}
