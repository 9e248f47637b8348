#include "testing/lutestsuiterunner/journal/filenames.h"

#include <charconv>

#include "base/lbpath.h"

namespace Runner
{

std::wstring GetJournalName(std::uint32_t number)
{
    return number == 1 ? L"journal.ndjson" : L"journal-" + std::to_wstring(number) + L".ndjson";
}

std::optional<std::uint32_t> GetJournalNumber(std::wstring_view name)
{
    constexpr std::wstring_view c_Front = L"journal-";
    std::uint32_t number = 1;
    if (name.starts_with(c_Front))
    {
        // If the digits are not ASCII or have leading zeros, the name made from the number differs.
        const std::string digits(name.begin() + c_Front.size(), name.end());
        std::from_chars(digits.data(), digits.data() + digits.size(), number);
    }
    return name == GetJournalName(number) ? std::optional(number) : std::nullopt;
}

std::wstring GetShardFolderName(std::uint32_t number)
{
    return LbPath::WithSeparator(L"shard-" + std::to_wstring(number));
}

std::string GetOutputName(std::uint32_t journal)
{
    return "output/" + std::to_string(journal) + ".txt";
}

} // namespace Runner
