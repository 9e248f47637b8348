/// Replaces reference files. A link stays a link; its target is replaced.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "testing/lutestsuiterunner/review/changes.h"

namespace Runner
{

std::wstring DescribeIrreplaceable(const std::wstring& reference);

/// Replaces the content of a reference in one step: writes a file with the name `temporary` beside the reference or its
/// target, and renames it. If the process is killed, at most that file is left. Throws LbException or a German message
/// as std::wstring.
void WriteReference(const std::wstring& reference, std::string_view bytes, const std::wstring& temporary);

/// Removes the temporary files of calls of WriteReference whose process was killed.
void RemoveTemporaries(const std::vector<SReceivedFile>& files, const std::wstring& temporary);

/// Throws a German message as std::wstring for a link that leads to no file, and for two references that are one file
/// because of links.
void RequireOwnFiles(const std::vector<SReceivedFile>& files);

} // namespace Runner
