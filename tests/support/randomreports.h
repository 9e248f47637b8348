/// Report records with random content.
#pragma once

#include <random>

#include "testing/lutestsuite/lutestsuitereport.h"

/// A record of random size and content that writing and reading does not change: raw texts contain no markup, and all
/// characters are allowed in report files. Numbers cover the whole range of their types.
LuTestSuiteReport::SReportData MakeRandomReport(std::mt19937& random);
