/// Differences of test output from its references, grouped by what has changed.
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

/// Files with the same change; the user decides on all of them at once.
struct SChange
{
    EChange kind;
    std::wstring id; ///< six digits that depend on the change alone
    std::vector<SReceivedFile> files;

    std::size_t CountUnrepeated() const;
};

/// Reference paths of all files "*.received" in a folder and its subfolders, ordered. Does not follow links to folders.
std::vector<std::wstring> FindReceived(const std::wstring& directory);

/// Reads the files and groups them. All new references form one change, and so do all references that would become
/// empty. The others belong together if they have the same sets of removed and added lines. The change with the most
/// files comes first. Throws LbException.
std::vector<SChange> GroupChanges(const std::vector<std::wstring>& references);

/// The bytes of a reference or of a received file. Empty if there is no such file; throws LbException if it cannot be
/// read.
std::string ReadIfPresent(const std::wstring& path);

} // namespace Runner
