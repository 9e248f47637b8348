/// Redirects the library's own lines.
#pragma once

namespace Runner
{

/// For the rest of the process, the library's lines go to standard error, so that standard output contains only what
/// the command prints.
void MoveLibraryLinesToErrors();

/// For the rest of the process, the library prints only warnings and errors, because the host itself prints the lines
/// about cases.
void ShowOnlyWarnings();

} // namespace Runner
