/// Files that programs open on the desktop.
#pragma once

#include <string>
#include <vector>

#include "base/inoncopyable.h"
#include "tests/support/scopedfolder.h"

/// The folder of a substitute for the desktop's opener: it waits for permission, then writes down the file it received.
/// Requires CanStandIn; put the folder first in the programs' search path.
class OpenedFiles : public INonCopyable
{
public:
    static bool CanStandIn();

    OpenedFiles();

    const std::wstring& GetSearchPath() const noexcept { return m_folder.GetPath(); }

    /// Lets the substitutes continue and waits until one has written its file. Returns all files so far, in order.
    std::vector<std::wstring> Await() const;

private:
    ScopedFolder m_folder;
};
