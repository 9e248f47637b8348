/// The times in names of archived reports.
#pragma once

#include <string>
#include <vector>

/// "[2024-01-31]-[23-00-00]" for each second of the next minute, the present one first: a test that begins now does not
/// know the second that it will meet.
std::vector<std::wstring> GetNextTimeStamps();
