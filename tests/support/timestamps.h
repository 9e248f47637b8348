/// Time stamps in the names of archived reports.
#pragma once

#include <string>
#include <vector>

/// "[2024-01-31]-[23-00-00]" for each second of the next minute, starting now: a test cannot predict the second of its
/// report.
std::vector<std::wstring> GetNextTimeStamps();
