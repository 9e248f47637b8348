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
    None      ///< the folder is missing, has few files, is already shared by the user, or would have to be read
};

enum class EListingUse
{
    Certain, ///< the processes need the listing
    Possible ///< they may need it: it is shared only if that costs no reading of the folder
};

/// Shares the listing of a folder: as long as the memory exists and the folder does not change, LbFileListing::Get in
/// any process of the user takes the listing from it, with the matches of patterns that this process has requested.
/// Reads the folder for a certain use unless this process keeps a listing that is certain to notice each change (see
/// LbFileListing). Any thread.
LB_API EListingShare LbShareListing(const std::wstring& directory, EListingUse use,
                                    std::unique_ptr<LbOs::CSharedMemory>& memory);
