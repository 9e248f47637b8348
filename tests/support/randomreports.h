/// Report records of random content.
#pragma once

#include <random>

#include "testing/lutestsuite/lutestsuitereport.h"

/// A record of random size and content. Its texts come through writing and reading: raw ones hold no markup, and all
/// characters are among those that a report file can hold. Numbers are drawn from the whole range of their types.
LuTestSuiteReport::SReportData MakeRandomReport(std::mt19937& random);
