/// What tests have made in place of their references, grouped by what has changed.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Runner
{

enum class EChange
{
    Changed,
    New,   ///< there is no reference yet
    Empty, ///< the reference would become empty
};

/// One reference.
struct SReceivedFile
{
    std::wstring reference; ///< path
    std::wstring checksum;  ///< of what was received
    bool isRepeated;        ///< enough runs have made exactly that
};

/// Files that have changed alike; one decision.
struct SChange
{
    EChange kind;
    std::wstring id; ///< six digits that depend on the change alone
    std::vector<SReceivedFile> files;

    std::size_t CountUnrepeated() const;
};

/// Reference paths of all files "*.received" in a folder and its subfolders, ordered. Does not follow links to folders.
std::vector<std::wstring> FindReceived(const std::wstring& directory);

/// Reads the files and groups them. New references are one change, and so are those that would become empty; the
/// others are one if they have the same sets of removed and added lines. Most files first. Throws LbException.
std::vector<SChange> GroupChanges(const std::vector<std::wstring>& references);

/// The bytes of a reference or of what was received. Empty if there is no such file; throws LbException if it cannot be
/// read.
std::string ReadIfPresent(const std::wstring& path);

} // namespace Runner
