/// Listings of folders for child processes. Not for use outside of the runner.
#pragma once

#include <memory>
#include <string>

#include "base/lbexport.h"
#include "base/os/sharedmemory.h"

enum class EListingShare
{
    Made,
    TooEarly, ///< the folder changed a short time ago
    None      ///< there is no folder, it has few files, or a process of the user shares it already
};

/// Shares the listing of a folder: as long as the memory exists and the folder does not change, LbFileListing::Get in
/// any process of the user takes the listing from there, with the matches of patterns that this process has asked for.
/// Reads the folder if this process does not keep its listing, or keeps it without knowing that it would notice each
/// change (see LbFileListing); this is known a tenth of a second after the folder was first read. Any thread.
LB_API EListingShare LbShareListing(const std::wstring& directory, std::unique_ptr<LbOs::CSharedMemory>& memory);
