/// Where the library's own lines go.
#pragma once

namespace Runner
{

/// From now on the library's lines go to standard error, so that standard output holds what the command prints and no
/// more. For the life of the process.
void MoveLibraryLinesToErrors();

} // namespace Runner
