#include "base/subtesthints.h"

#include "base/subtestsearch.h"

void LbSubtestHints::Remember(const std::type_info& type, const std::wstring& directory, std::uint32_t count,
                              const std::function<const std::wstring&(std::uint32_t)>& getName)
{
    LbSubtestSearch::Remember(type, directory, count, getName);
}

std::optional<std::uint32_t> LbSubtestHints::Find(const std::type_info& type, const std::wstring& directory,
                                                  std::wstring_view name)
{
    return LbSubtestSearch::FindRemembered(type, directory, name);
}
