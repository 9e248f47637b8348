#include "tests/support/timestamps.h"

#include <ctime>

#include "base/lbencoding.h"

std::vector<std::wstring> GetNextTimeStamps()
{
    constexpr std::time_t c_Seconds = 60;
    const std::time_t now = std::time(nullptr);
    std::vector<std::wstring> stamps;
    for (std::time_t second = now; second < now + c_Seconds; ++second)
    {
        char text[32] = {};
        std::strftime(text, sizeof(text), "[%Y-%m-%d]-[%H-%M-%S]", std::localtime(&second));
        stamps.push_back(LbEncoding::FromUtf8(text));
    }
    return stamps;
}
