/// A substitute for the host of an archive run. Its second argument is the path of its data directory. If the path ends
/// in "crash", the program aborts; if it ends in "hang", the program sleeps for a minute; if it ends in "reports", the
/// program writes "xml" and "html" into the two reports. Unless the program aborts, its status is 3.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <thread>

namespace
{

void writeReport(const char* path, const char* text)
{
    if (std::FILE* const file = std::fopen(path, "wb"))
    {
        std::fputs(text, file);
        std::fclose(file);
    }
}

} // namespace

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
    if (dataDir.ends_with("reports") && count > 6)
    {
        writeReport(arguments[4], "xml");
        writeReport(arguments[6], "html");
    }
    return 3;
}
