/// The received files of tests, "<reference>.received", grouped by what has changed.
///
/// A review replaces references but never removes one. It does not look for references that no test compares any more.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "testing/lutestsuiterunner/review/parts.h"

namespace Runner
{

enum class EChange
{
    Changed,
    New,  ///< there is no reference yet
    Blank ///< the reference would have only white space and a byte-order mark; it may not exist yet
};

/// The parts of a file that earlier decisions of the same call have accepted.
struct SAccepted
{
    std::string reference; ///< its bytes before the first of these decisions; names of parts refer to these bytes
    PartNames parts;
};

/// A received file and its reference.
struct SReceivedFile
{
    std::wstring reference;                             ///< path
    std::wstring checksum;                              ///< of the received file
    std::wstring expected;                              ///< checksum of the reference; empty if there is none
    bool isRepeated;                                    ///< enough runs have made the same output
    std::shared_ptr<const SAccepted> earlier = nullptr; ///< null if no part was accepted
};

/// Differences that are decided on together.
struct SChange
{
    EChange kind;
    std::wstring checksum; ///< of the changed parts; for new and blank references, of all files and their contents
    std::wstring id;       ///< the first digits of `checksum`: at least six, and as many as make it unique
    PartNames parts;       ///< the parts, or kinds of parts, to be decided on; empty for whole files
    std::vector<SReceivedFile> files;
    bool areLinesEqual = true; ///< false if the changed lines are only similar, because they contain different values

    std::size_t CountUnrepeated() const;
};

/// The file in a reviewed folder that exists while a decision is carried out.
inline constexpr const wchar_t* c_DecisionFile = L"lutestsuite-review.pending";

/// The temporary file that becomes c_DecisionFile when it is complete.
inline constexpr const wchar_t* c_DecisionDraft = L"lutestsuite-review.pending.tmp";

/// The folder with the received files of the decision.
inline constexpr const wchar_t* c_ClaimsFolder = L"lutestsuite-review.pending.files";

struct SFound
{
    std::vector<std::wstring> references; ///< paths, ordered
    std::vector<std::wstring> unfinished; ///< folders with a decision that was interrupted, with final separator
    std::vector<std::wstring> remains; ///< folders with c_DecisionDraft or c_ClaimsFolder; twice if a folder has both
};

/// Looks for "*.received" and for interrupted decisions in a folder, its subfolders, and the folders that links in them
/// lead to. Each folder is searched once.
SFound FindReceived(const std::wstring& directory);

/// The folders above `directory` that contain an interrupted decision, with final separator. `directory` is a full
/// path.
std::vector<std::wstring> FindUnfinishedAbove(const std::wstring& directory);

/// Reads the files and groups them into changes; changes with the most files come first. The new references of a folder
/// are one change, and all references that would be blank are one. The others are grouped by GroupByParts; parts of one
/// kind count as one part if most of them occur in only one file, or if there are very many of them. Throws
/// LbException.
std::vector<SChange> GroupChanges(const std::vector<std::wstring>& references);

/// Sets `id` of each change. The checksums must differ.
void NameChanges(std::vector<SChange>& changes);

/// Returns the changes whose checksums begin with `digits`, in upper or lower case; none if there are fewer than six
/// digits.
std::vector<const SChange*> FindNamed(const std::vector<SChange>& changes, std::wstring digits);

/// The bytes of a reference or of what was received. Empty if there is no such file; throws LbException if it cannot be
/// read.
std::string ReadIfPresent(const std::wstring& path);

} // namespace Runner
