/// The file that says what a decision does, for a process that finishes it.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuiterunner/review/decisionrecords.h"

namespace Runner
{

/// A decision as in its file.
struct SPlanned
{
    EDecision decision;
    PartNames parts; ///< empty: the files as a whole
    std::vector<SReceivedFile> files;
    std::wstring temporary; ///< name of the files in the references' folders that replace them
};

/// The bytes of the decision's file. `directory` contains all files and has a final separator.
std::string MakeDecisionPlan(const std::wstring& directory, const SPlanned& planned);

/// Reads c_DecisionFile. Throws LbException or a German message as std::wstring.
SPlanned ReadDecisionPlan(const std::wstring& directory);

} // namespace Runner
