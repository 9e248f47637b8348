/// The file that describes a decision, for a process that finishes it later.
#pragma once

#include <string>
#include <vector>

#include "testing/lutestsuiterunner/review/decisionrecords.h"

namespace Runner
{

/// A decision as its file describes it.
struct SPlanned
{
    EDecision decision;
    PartNames parts; ///< empty: the files as a whole
    std::vector<SReceivedFile> files;
    std::wstring temporary; ///< name of the temporary files that replace references, each in the reference's folder
};

/// The bytes of the decision's file. `directory` contains all files and has a final separator.
std::string MakeDecisionPlan(const std::wstring& directory, const SPlanned& planned);

/// Reads c_DecisionFile. Throws LbException or a German message as std::wstring.
SPlanned ReadDecisionPlan(const std::wstring& directory);

} // namespace Runner
