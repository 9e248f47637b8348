#include "testing/lutestsuiterunner/cluster/lasterror.h"

#include "base/lbencoding.h"

namespace Runner
{

std::wstring FindLastError(std::string_view bytes)
{
    constexpr std::string_view c_Start = "Fehler: ";
    std::size_t place = bytes.rfind(c_Start);
    while (place != std::string_view::npos && place != 0 && bytes[place - 1] != '\n')
    {
        place = bytes.rfind(c_Start, place - 1);
    }
    if (place == std::string_view::npos)
    {
        return {};
    }
    const std::string_view line = bytes.substr(place + c_Start.size());
    return LbEncoding::FromUtf8(line.substr(0, line.find_first_of("\r\n")));
}

std::wstring FindLastLine(std::string_view bytes)
{
    bytes = bytes.substr(0, bytes.find_last_not_of(" \t\r\n") + 1);
    return LbEncoding::FromUtf8(bytes.substr(bytes.find_last_of("\r\n") + 1));
}

} // namespace Runner
