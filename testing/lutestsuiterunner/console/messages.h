/// Where the library's own lines go.
#pragma once

namespace Runner
{

/// From now on the library's lines go to standard error, so that standard output holds what the command prints and no
/// more. For the life of the process.
void MoveLibraryLinesToErrors();

/// From now on only warnings and errors among these lines are shown: the others tell of cases, as this host does.
void ShowOnlyWarnings();

} // namespace Runner
