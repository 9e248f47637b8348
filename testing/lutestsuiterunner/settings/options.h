/// The options of the command line: one record for each command.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "testing/lutestsuiterunner/settings/engines.h"

namespace Runner
{

/// The options of LuTestSuiteCLI after "--", which the library's own command line reads.
using LibraryOptions = std::vector<std::wstring>;

/// The default folder of a run.
inline constexpr const wchar_t* c_DefaultOut = L"lutestsuite-out";

struct SHelp
{
    std::wstring text; ///< German, lines ended by line feeds
};

struct SListOptions
{
    bool json = false;
    std::wstring ctest; ///< path of a script for CTest, written instead of a list; empty: none
    LibraryOptions library;
};

enum class EOrder
{
    Listed,
    FailedFirst,
    LongestFirst,
    Random,
};

struct SRunOptions
{
    std::wstring out = c_DefaultOut;
    bool force = false; ///< replaces the run that `out` holds
    EOrder order = EOrder::Listed;
    std::optional<std::uint64_t> seed; ///< of EOrder::Random; empty: a seed is chosen
    std::wstring previous;             ///< folder of a run or archive, or XML report; empty: none
    bool onlyFailed = false;
    std::uint32_t failFast = 0; ///< number of failed cases that ends the run; 0: no limit
    std::uint32_t retries = 0;
    bool allowFlaky = false;
    std::wstring quarantine; ///< file of patterns; empty: none
    std::uint32_t minCases = 1;
    bool requireAllModules = false;
    std::uint32_t shard = 1; ///< 1 to shardCount
    std::uint32_t shardCount = 1;
    bool confirm = false;
    std::wstring core;    ///< folder for memory dumps of child processes; empty: no dumps
    bool planned = false; ///< runs the shard whose plan is in `out`; ignores all options but `shard` and `shardCount`
    LibraryOptions library;
    std::vector<std::wstring> arguments; ///< of the call, without the program's name
};

struct SSubmitOptions
{
    SRunOptions run;                       ///< options that all shards share
    std::wstring engine = c_DefaultEngine; ///< name of a registered engine
    std::uint32_t shards = 0;              ///< 0: as many as this machine has processors
    std::vector<std::wstring> sbatch;
    bool detach = false; ///< does not wait for the end
};

/// Commands for an existing distributed run.
struct SStatusOptions
{
    std::wstring directory;
};

struct SWaitOptions
{
    std::wstring directory;
};

struct SCancelOptions
{
    std::wstring directory;
};

struct SResumeOptions
{
    std::wstring directory;
    bool confirm = false;
};

struct SCaseOptions
{
    std::wstring name;
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
    bool force = false; ///< replaces the run that `out` holds
};

struct SHistoryOptions
{
    std::wstring archive;
    std::wstring html; ///< path of the page; empty for none
    std::wstring json;
    std::vector<std::wstring> gates;
    std::vector<std::wstring> cases;          ///< "class:case"; each is shown in all its runs
    std::vector<std::wstring> configurations; ///< the others are ignored; empty for all
    std::uint32_t runs = 100;                 ///< how many of the newest runs of each configuration are analysed
    std::uint32_t since = 0;                  ///< shows only findings that began in the newest `since` runs; 0: all
    std::wstring alarmRate = L"0.05";         ///< probability of a false alarm in an archive
    std::wstring smallestChange = L"3";       ///< percent
    std::uint32_t reshuffles = 20;
    std::uint32_t seed = 1; ///< for the reshuffled archives
};

struct SFoldersOptions
{
    LibraryOptions library;
};

/// If no option decides or lists, the command asks about each change, provided that the command runs on a terminal. If
/// the command neither decides nor asks, it lists the changes.
struct SReviewOptions
{
    std::wstring directory;
    bool diff = false;                ///< shows, for each change, the differences of one file
    std::wstring diffFile;            ///< shows all differences of only this reference; empty: of none
    bool sideBySide = false;          ///< as `diff`, but side by side, with references on the left
    std::wstring sideBySideFile;      ///< as diffFile
    bool files = false;               ///< lists the names of the references
    std::wstring filesOf;             ///< only of this change; empty: of all changes
    std::vector<std::wstring> accept; ///< names of changes, paths of references, or "all"
    std::vector<std::wstring> reject;
    bool acceptEmpty = false; ///< references may become empty
    bool ci = false;          ///< neither decides nor asks; the command fails if there are changes
};

using Command = std::variant<SHelp, SSubmitOptions, SStatusOptions, SWaitOptions, SCancelOptions, SRunOptions,
                             SResumeOptions, SReportOptions, SMergeOptions, SListOptions, SCaseOptions, SHistoryOptions,
                             SFoldersOptions, SReviewOptions>;

} // namespace Runner
