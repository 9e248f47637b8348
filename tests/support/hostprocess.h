/// The host as a child process.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// Options for starting the host.
struct SHostOptions
{
    std::wstring program;                                         ///< full path; empty: the host of this build
    std::wstring workingDirectory;                                ///< empty: the test's own
    std::vector<std::pair<std::wstring, std::wstring>> variables; ///< environment; an empty value unsets the variable
    std::uint32_t memoryLimitKilobytes = 0;                       ///< address space; 0: unlimited; Linux only
    std::uint32_t openFilesLimit = 0;                             ///< soft limit; 0: the test's own; Linux only
    std::uint32_t openFilesHardLimit = 0;                         ///< hard limit; 0: the test's own; Linux only
    std::uint32_t processesLimit = 0; ///< runs as another user with this limit; 0: unlimited
    std::wstring ignoredSignal;       ///< a signal that the host ignores from its start, without "SIG"; Linux only
    std::wstring outputDevice;        ///< receives standard output; empty: it is recorded
    bool onTerminal = false;          ///< standard output is a terminal; Linux only
};

struct SHostRun
{
    int exitStatus = -1;
    std::string output; ///< standard output; on a terminal also standard error
    std::string errors; ///< standard error
};

/// Runs the host of this build to its end. Arguments must not contain quotation marks or percent signs, which the
/// Windows shell cannot pass on, nor characters above U+00FF, which narrow Windows calls cannot pass on.
SHostRun RunHost(const std::vector<std::wstring>& arguments, const SHostOptions& options = {});

/// True if SHostOptions::onTerminal is supported.
bool CanRunHostOnTerminal();

/// True if the limits of memory and of open files are supported.
bool CanLimitHost();

/// True if SHostOptions::processesLimit works: the test needs the right to become another user.
bool CanLimitHostProcesses();

/// Replaces line feeds by the line ends that text mode writes to standard output on this platform.
std::string ToPlatformLines(const std::string& text);

/// Replaces such line ends by line feeds.
std::string FromPlatformLines(const std::string& bytes);
