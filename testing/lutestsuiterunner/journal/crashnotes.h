/// The notes of hosts that crashed: the lines that they printed, in a file in the run's folder.
#pragma once

#include <cstdint>
#include <string>

namespace Runner
{

/// The file with the note of the host that wrote this journal. `folder` ends in a separator.
std::wstring GetCrashNotePath(const std::wstring& folder, std::uint32_t journal);

/// The lines of the note; empty if there is none.
std::wstring ReadCrashNote(const std::wstring& folder, std::uint32_t journal);

/// Copies the note, if there is one, to another run's folder and journal. Throws LbException if that fails.
void CopyCrashNote(const std::wstring& folder, std::uint32_t journal, const std::wstring& targetFolder,
                   std::uint32_t targetJournal);

} // namespace Runner
