/// One "testcase" of junit.xml.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "testing/lutestsuiterunner/model/runstate.h"
#include "testing/lutestsuiterunner/reports/opencases.h"

namespace Runner
{

enum class EJunitStatus
{
    Passed,
    Failure,
    Error,
    Skipped
};

struct SJunitCase
{
    EJunitStatus status = EJunitStatus::Passed;
    std::uint64_t time = 0; ///< nanoseconds
    std::string start;      ///< markup up to the text
    std::string text;       ///< escaped; empty if there is nothing to tell
    std::string end;        ///< markup after the text

    bool IsRed() const { return status == EJunitStatus::Failure || status == EJunitStatus::Error; }
};

/// `suiteName` becomes the attribute "classname" of the case.
SJunitCase MakeJunitCase(const CRunState& state, const SOpenCases& open, std::uint32_t caseIndex,
                         std::wstring_view suiteName);

/// A case that its description disables.
SJunitCase MakeJunitCase(const SPlan& plan, const SDisabledCase& disabled, std::wstring_view suiteName);

/// A problem of the run, not of a case. The text is `details`, or the problem itself if `details` is empty.
SJunitCase MakeJunitProblem(std::wstring_view name, std::wstring_view problem, std::wstring_view suiteName,
                            std::wstring_view details = {});

} // namespace Runner
