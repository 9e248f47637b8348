/// Unit tests for the walk of the data directory, registered by this test program itself. Their names begin with CScan,
/// so that no module that another test loads has one of them.
#pragma once

#include <string>
#include <vector>

namespace discoverymodels
{

/// What happened to the objects of CScanJournal since the last Clear, and how many are alive.
struct SJournal
{
    std::vector<std::wstring> calls;
    int alive = 0;

    static SJournal& GetInstance();
};

} // namespace discoverymodels
