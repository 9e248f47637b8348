/// Compares output with stored golden files.
#pragma once

#include <string>

/// Fails the test unless `received` equals the bytes of tests/golden/<name>. On failure keeps `received` in the build
/// tree, from which scripts/approve-golden takes it. `name` has "/" between folders.
void ExpectGolden(const std::string& name, const std::string& received);

/// The content of tests/golden/<name>; empty if the file does not exist.
std::string ReadGolden(const std::string& name);

/// Replaces each time in brackets, such as "[12.34ms]" or "[0 s]", with "[#.##s]", because number and unit differ
/// between runs.
std::string NormalizeTimes(const std::string& text);

/// Replaces text that depends on the machine, the build or the run in the XML report of a host's run: the contents of
/// the elements for machine, build, data directory, dates, times and memory become "#".
std::string NormalizeXmlReport(const std::string& text);

/// The same for an HTML report: replaces the values in the rows for build, machine, data directory, dates, times and
/// memory, and the time and memory of each case. Also removes the style sheet.
std::string NormalizeHtmlReport(const std::string& page);
