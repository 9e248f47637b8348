#include "base/os/machine.h"

#include <charconv>
#include <climits>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include <unistd.h>

#include "base/lbencoding.h"
#include "base/os/files.h"

namespace
{

/// Values of a kernel file by key, from "key=value" or "key : value" lines; the first line of each key counts.
std::map<std::string, std::string> readPairs(const std::string& path, char separator)
{
    constexpr const char* c_Blanks = " \t";
    std::map<std::string, std::string> pairs;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);)
    {
        const std::size_t at = line.find(separator);
        if (at == std::string::npos)
        {
            continue;
        }
        const std::size_t keyEnd = at == 0 ? std::string::npos : line.find_last_not_of(c_Blanks, at - 1);
        const std::size_t value = line.find_first_not_of(c_Blanks, at + 1);
        pairs.emplace(line.substr(0, keyEnd + 1), value == std::string::npos ? "" : line.substr(value));
    }
    return pairs;
}

double toNumber(const std::string& text)
{
    double number = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

double getRatedMegahertz()
{
    constexpr double c_KilohertzPerMegahertz = 1000.0;
    std::ifstream file("/sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq");
    double kilohertz = 0.0;
    return file >> kilohertz ? kilohertz / c_KilohertzPerMegahertz : 0.0;
}

/// The number in "card3"; empty for connectors such as "card3-HDMI-A-1".
std::optional<std::uint32_t> getCardNumber(std::string_view name)
{
    constexpr std::string_view c_Prefix = "card";
    if (!name.starts_with(c_Prefix))
    {
        return std::nullopt;
    }
    name.remove_prefix(c_Prefix.size());
    std::uint32_t number = 0;
    const char* const end = name.data() + name.size();
    const auto parsed = std::from_chars(name.data(), end, number);
    return parsed.ec == std::errc() && parsed.ptr == end ? std::optional(number) : std::nullopt;
}

} // namespace

LbOs::SProcessor LbOs::QueryProcessor()
{
    SProcessor processor;
    auto pairs = readPairs("/proc/cpuinfo", ':');
    const long count = sysconf(_SC_NPROCESSORS_ONLN);
    const double rated = getRatedMegahertz();
    processor.model = LbEncoding::FromUtf8(pairs["model name"]);
    processor.logicalProcessors = count > 0 ? static_cast<std::uint32_t>(count) : 0;
    processor.megahertz = rated > 0.0 ? rated : toNumber(pairs["cpu MHz"]);
    return processor;
}

std::uint64_t LbOs::GetPhysicalMemory()
{
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGESIZE);
    return pages > 0 && pageSize > 0 ? static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize) : 0;
}

std::wstring LbOs::GetMachineName()
{
    char name[HOST_NAME_MAX + 1] = {};
    return gethostname(name, sizeof(name) - 1) == 0 ? LbEncoding::FromUtf8(name) : std::wstring();
}

std::wstring LbOs::GetGraphicsAdapter()
{
    const std::wstring folder = L"/sys/class/drm";
    std::set<std::uint32_t> cards;
    VisitDirectory(folder, [&cards](const SDirectoryEntry& entry) {
        if (const std::optional<std::uint32_t> number = getCardNumber(LbEncoding::ToNative(entry.name)))
        {
            cards.insert(*number);
        }
    });
    for (const std::uint32_t card : cards)
    {
        // The kernel knows drivers and numbers. Product names come from libraries that a machine without display lacks.
        auto pairs = readPairs(LbEncoding::ToNative(folder) + "/card" + std::to_string(card) + "/device/uevent", '=');
        const std::string& driver = pairs["DRIVER"];
        const std::string& pciNumber = pairs["PCI_ID"];
        if (!driver.empty())
        {
            return LbEncoding::FromUtf8(pciNumber.empty() ? driver : driver + " (PCI " + pciNumber + ")");
        }
    }
    return {};
}
