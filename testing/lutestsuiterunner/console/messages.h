/// Redirects the library's own lines.
#pragma once

namespace Runner
{

/// From now on the library's lines go to standard error, so that standard output contains only what the command prints.
/// For the life of the process.
void MoveLibraryLinesToErrors();

/// From now on the library prints only warnings and errors: the host itself prints lines about cases.
void ShowOnlyWarnings();

} // namespace Runner
