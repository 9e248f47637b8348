/// Comparison with stored output.
#pragma once

#include <string>

/// Fails the test unless `received` is, byte for byte, what tests/golden/<name> holds. Then what was received is left
/// in the build tree, where scripts/approve-golden takes it from. `name` has "/" between folders.
void ExpectGolden(const std::string& name, const std::string& received);

/// What tests/golden/<name> holds; empty when there is no such file.
std::string ReadGolden(const std::string& name);

/// Replaces each time of two decimals in brackets, "[12.34ms]", by "[#.##s]": neither the number nor its unit is the
/// same in two runs.
std::string NormalizeTimes(const std::string& text);

/// Replaces what differs between machines, builds and runs in an XML report of a host's run: contents of the elements
/// about machine, build, data directory, dates, times and memory become "#".
std::string NormalizeXmlReport(const std::string& text);

/// The same in an HTML report, by the labels of its rows; and without the style sheet inside.
std::string NormalizeHtmlReport(const std::string& page);
