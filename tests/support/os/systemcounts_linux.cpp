#include "tests/support/os/systemcounts.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <thread>

#include <fcntl.h>
#include <sys/inotify.h>
#include <unistd.h>

#include "base/lbencoding.h"

std::optional<std::size_t> LbOs::CountWrites(const std::function<void()>& function)
{
    // In this mode each read returns the bytes of one write.
    std::array<int, 2> ends = {};
    if (pipe2(ends.data(), O_CLOEXEC | O_DIRECT) != 0)
    {
        return std::nullopt;
    }
    std::fflush(stdout);
    const int former = dup(STDOUT_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    close(ends[1]);
    std::size_t writes = 0;
    std::thread reader([&writes, file = ends[0]] {
        std::array<char, 65536> bytes = {};
        while (read(file, bytes.data(), bytes.size()) > 0)
        {
            ++writes;
        }
    });
    function();
    dup2(former, STDOUT_FILENO);
    close(former);
    reader.join();
    close(ends[0]);
    return writes;
}

std::optional<std::size_t> LbOs::CountFolderReads(const std::wstring& folder, const std::function<void()>& function)
{
    const int watch = inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    // Also watches the ends of listings, because the system merges equal events that directly follow each other.
    if (inotify_add_watch(watch, LbEncoding::ToNative(folder).c_str(), IN_OPEN | IN_CLOSE_NOWRITE | IN_ONLYDIR) < 0)
    {
        close(watch);
        return std::nullopt;
    }
    function();
    std::size_t reads = 0;
    std::array<char, 65536> bytes = {};
    for (ssize_t size = 1; size > 0;)
    {
        size = read(watch, bytes.data(), bytes.size());
        inotify_event event = {};
        for (ssize_t at = 0; at < size; at += static_cast<ssize_t>(sizeof(event) + event.len))
        {
            std::memcpy(&event, bytes.data() + at, sizeof(event));
            // Events of files in the folder have names.
            reads += (event.mask & IN_OPEN) != 0 && event.len == 0 ? 1 : 0;
        }
    }
    close(watch);
    return reads;
}
