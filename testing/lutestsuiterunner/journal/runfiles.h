/// Which files in a folder belong to a run, and their removal. Folders end in a separator.
#pragma once

#include <string>

namespace Runner
{

/// True if the folder contains a plan, a journal or the list of a distributed run's shards.
bool ContainsRun(const std::wstring& folder);

/// The name of a file that is named like a report of a run, in a folder that contains no run; empty if there is none.
/// The reports of a new run replace it.
std::wstring FindForeignReport(const std::wstring& folder);

/// As FindForeignReport, for the files of large texts. A new run cannot replace them.
std::wstring FindForeignText(const std::wstring& folder);

/// Removes the files of the run that the folder contains, and the folders that are empty then; other files stay. Does
/// nothing if the folder contains no run. Throws LbException with a German message if a file cannot be removed.
void RemoveRun(const std::wstring& folder);

} // namespace Runner
