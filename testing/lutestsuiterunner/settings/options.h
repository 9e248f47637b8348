/// What the command line asks for: one record a command.
#pragma once

#include <string>
#include <variant>
#include <vector>

namespace Runner
{

/// What stands behind "--": options of LuTestSuiteCLI, which the library's own command line reads.
using LibraryOptions = std::vector<std::wstring>;

struct SHelp
{
    std::wstring text; ///< German, lines ended by line feeds
};

struct SListOptions
{
    bool json = false;
    LibraryOptions library;
};

using Command = std::variant<SHelp, SListOptions>;

} // namespace Runner
