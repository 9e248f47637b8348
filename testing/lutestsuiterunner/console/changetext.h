/// Changes as German text for the console. Control characters in names and contents are replaced by visible symbols, so
/// that only the escape sequences for colours reach a terminal.
#pragma once

#include <cstddef>
#include <string>

#include "testing/lutestsuiterunner/review/changes.h"

namespace Runner
{

struct SDiffStyle
{
    bool isColoured = false;
    bool isSideBySide = false;
    bool areLinesCut = false; ///< for a terminal: limits width and number of lines. Bytes are cut in any case
    std::size_t width = 120;  ///< of the console, in characters
};

/// "1 Datei", "2 Dateien".
std::wstring FormatFileCount(std::size_t count);

/// One line about a change. Paths are relative to `directory`.
std::wstring FormatTitle(const SChange& change, const std::wstring& directory);

/// The names of the change's files, one per line, each preceded by `before`.
std::wstring FormatFiles(const SChange& change, const std::wstring& directory, const std::wstring& before);

/// FormatTitle, followed by the names of the files if there are several; at most 20 names if `style` cuts lines.
std::wstring FormatHeading(const SChange& change, const std::wstring& directory, const SDiffStyle& style);

/// FormatTitle; for a changed reference also the first difference in the change's first file, at most one removed and
/// one added line cut to the width, and the number of further differences in this file.
std::wstring DescribeChange(const SChange& change, const std::wstring& directory, const SDiffStyle& style);

/// The differences of the change in one of its files, and the number of other changes in this file. Throws LbException
/// if the file cannot be read.
std::wstring ShowDifference(const SChange& change, const SReceivedFile& file, const std::wstring& directory,
                            const SDiffStyle& style);

} // namespace Runner
