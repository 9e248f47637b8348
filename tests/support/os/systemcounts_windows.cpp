#include "tests/support/os/systemcounts.h"

std::optional<std::size_t> LbOs::CountWrites(const std::function<void()>& /*function*/)
{
    return std::nullopt;
}

std::optional<std::size_t> LbOs::CountFolderReads(const std::wstring& /*folder*/,
                                                  const std::function<void()>& /*function*/)
{
    return std::nullopt;
}
