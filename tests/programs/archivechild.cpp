/// Stands for the host of an archive run: it ends as the name of its data directory says, the argument behind the
/// first, and writes nothing.

#include <chrono>
#include <cstdlib>
#include <string_view>
#include <thread>

int main(int count, char** arguments)
{
    const std::string_view dataDir = count > 2 ? arguments[2] : "";
    if (dataDir.ends_with("crash"))
    {
        std::abort();
    }
    if (dataDir.ends_with("hang"))
    {
        std::this_thread::sleep_for(std::chrono::minutes(1));
    }
    return 3;
}
