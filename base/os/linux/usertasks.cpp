#include "base/os/linux/usertasks.h"

#include <filesystem>
#include <iterator>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace LbOs::Linux
{

std::uint64_t CountUserTasks(const std::string& root)
{
    std::uint64_t count = 0;
    std::error_code error;
    std::filesystem::directory_iterator entry(root, error);
    while (!error && entry != std::filesystem::directory_iterator())
    {
        // A process may end while it is examined.
        const std::string tasks = entry->path().native() + "/task";
        struct stat status = {};
        if (stat(tasks.c_str(), &status) == 0 && status.st_uid == geteuid())
        {
            std::error_code ended;
            std::filesystem::directory_iterator task(tasks, ended);
            while (!ended && task != std::filesystem::directory_iterator())
            {
                ++count;
                task.increment(ended);
            }
        }
        entry.increment(error);
    }
    return count;
}

} // namespace LbOs::Linux
