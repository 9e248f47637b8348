/// The host as a child process.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// How the host is started.
struct SHostOptions
{
    std::wstring program;                                         ///< full path; empty: the host of this build
    std::wstring workingDirectory;                                ///< empty: the test's own
    std::vector<std::pair<std::wstring, std::wstring>> variables; ///< environment; an empty value unsets
    std::uint32_t memoryLimitKilobytes = 0;                       ///< of address space, 0 for none; Linux only
    std::uint32_t openFilesLimit = 0;                             ///< soft limit, 0 for the test's own; Linux only
    std::uint32_t openFilesHardLimit = 0;                         ///< which nobody can raise; the same
    std::wstring outputDevice;                                    ///< takes standard output; empty: it is recorded
    bool onTerminal = false;                                      ///< standard output is a terminal; Linux only
};

struct SHostRun
{
    int exitStatus = -1;
    std::string output; ///< bytes of standard output; on a terminal those of standard error, too
    std::string errors; ///< bytes of standard error
};

/// Runs the host of this build to its end. Arguments must not hold quotation marks and percent signs, which the shell
/// of one platform cannot hand on, nor characters above U+00FF, which its narrow calls cannot.
SHostRun RunHost(const std::vector<std::wstring>& arguments, const SHostOptions& options = {});

/// True where SHostOptions::onTerminal is possible.
bool CanRunHostOnTerminal();

/// True where the limits are possible.
bool CanLimitHost();

/// What text mode writes for each line feed of standard output on this platform.
std::string ToPlatformLines(const std::string& text);

/// The reverse.
std::string FromPlatformLines(const std::string& bytes);
