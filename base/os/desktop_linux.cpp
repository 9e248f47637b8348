#include "base/os/desktop.h"

#include <string>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/lbencoding.h"

void LbOs::OpenOnDesktop(const std::wstring& path)
{
    std::string file = LbEncoding::ToNative(path);
    if (file.starts_with('-'))
    {
        file.insert(0, "./");
    }
    // The shell ends at once and leaves xdg-open running, perhaps for as long as the program that xdg-open starts. A
    // session of its own keeps xdg-open alive when the terminal closes.
    const char* const command = "xdg-open \"$1\" </dev/null >/dev/null 2>&1 &";
    const char* const arguments[] = {"sh", "-c", command, "sh", file.c_str(), nullptr};
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSID);
    pid_t shell = 0;
    // The system's interface lacks the const.
    if (posix_spawn(&shell, "/bin/sh", nullptr, &attributes, const_cast<char* const*>(arguments), environ) == 0)
    {
        waitpid(shell, nullptr, 0);
    }
    posix_spawnattr_destroy(&attributes);
}
