/// What the command line asks for: one record a command.
#pragma once

#include <string>
#include <variant>
#include <vector>

namespace Runner
{

/// What stands behind "--": options of LuTestSuiteCLI, which the library's own command line reads.
using LibraryOptions = std::vector<std::wstring>;

/// Where a run is written to unless the user says otherwise.
inline constexpr const wchar_t* c_DefaultOut = L"lutestsuite-out";

struct SHelp
{
    std::wstring text; ///< German, lines ended by line feeds
};

struct SListOptions
{
    bool json = false;
    LibraryOptions library;
};

struct SReportOptions
{
    std::wstring directory; ///< of the run
};

struct SMergeOptions
{
    std::vector<std::wstring> directories; ///< of the shards
    std::wstring out = c_DefaultOut;
};

using Command = std::variant<SHelp, SListOptions, SReportOptions, SMergeOptions>;

} // namespace Runner
