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
    Blank ///< the reference would have nothing but white space and a byte-order mark; perhaps there is none yet
};

/// The parts of a file that earlier decisions of the same call have accepted.
struct SAccepted
{
    std::string reference; ///< bytes before the first of these decisions; the names of parts refer to them
    PartNames parts;
};

/// A received file and its reference.
struct SReceivedFile
{
    std::wstring reference;                             ///< path
    std::wstring checksum;                              ///< of the received file
    std::wstring expected;                              ///< checksum of the reference; empty if there is none
    bool isRepeated;                                    ///< enough runs have made the same output
    std::shared_ptr<const SAccepted> earlier = nullptr; ///< null: nothing
};

/// One decision.
struct SChange
{
    EChange kind;
    std::wstring checksum; ///< of the changed parts; of new and blank references: of all files with their contents
    std::wstring id;       ///< the first digits of `checksum`: at least six, more if those of others are equal
    PartNames parts;       ///< the parts, or kinds of parts, to be decided on; empty for whole files
    std::vector<SReceivedFile> files;
    bool areLinesEqual = true; ///< false if the changed lines differ in unchanged text, such as values of each file

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
    std::vector<std::wstring> remains;    ///< folders with c_DecisionDraft or c_ClaimsFolder, perhaps twice
};

/// Looks for "*.received" and for interrupted decisions in a folder, its subfolders, and the folders that links in them
/// lead to. Each folder is searched once.
SFound FindReceived(const std::wstring& directory);

/// The folders above with an interrupted decision, with final separator. `directory` is a full path.
std::vector<std::wstring> FindUnfinishedAbove(const std::wstring& directory);

/// Reads the files and groups them, most files first. New references are one change for each folder; those that would
/// be blank are one. The others are grouped by GroupByParts; parts of one kind count as one part if most of them
/// are in a single file, or if there are very many of them. Throws LbException.
std::vector<SChange> GroupChanges(const std::vector<std::wstring>& references);

/// Sets the names of changes with different checksums.
void NameChanges(std::vector<SChange>& changes);

/// The changes whose checksums begin with these digits, at least six; "a" to "f" in any case.
std::vector<const SChange*> FindNamed(const std::vector<SChange>& changes, std::wstring digits);

/// The bytes of a reference or of what was received. Empty if there is no such file; throws LbException if it cannot be
/// read.
std::string ReadIfPresent(const std::wstring& path);

} // namespace Runner
