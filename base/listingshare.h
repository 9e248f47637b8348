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
    None      ///< the folder is missing, has few files, or would have to be read for a possible use; or the memory
              ///< cannot be created, for example because another process of the user already shares the folder
};

enum class EListingUse
{
    Certain, ///< the processes need the listing
    Possible ///< they may need it: shared only if the folder need not be read
};

/// Shares the listing of a folder: as long as `memory` exists and the folder does not change, LbFileListing::Get in any
/// process of the user takes the listing from this memory, together with the matches of each pattern for which this
/// process has called GetMatches. For a certain use, reads the folder unless this process keeps a current listing that
/// may be shared (see LbFileListing) or the folder changed a short time ago. Any thread.
LB_API EListingShare LbShareListing(const std::wstring& directory, EListingUse use,
                                    std::unique_ptr<LbOs::CSharedMemory>& memory);
