/// Unit tests for the search of the data directory, registered by the test program itself. Their names begin with
/// CScan, so that they do not clash with modules that other tests load.
#pragma once

#include <string>
#include <vector>

namespace discoverymodels
{

/// The calls made on objects of CScanJournal since the last Clear, and how many objects exist.
struct SJournal
{
    std::vector<std::wstring> calls;
    int alive = 0;

    static SJournal& GetInstance();
};

} // namespace discoverymodels
