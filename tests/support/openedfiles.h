/// Files that programs open on the desktop.
#pragma once

#include <string>
#include <vector>

#include "base/inoncopyable.h"
#include "tests/support/scopedfolder.h"

/// Has a folder with a program that replaces the desktop's opener. The program waits until Await is called, then
/// records the file that it was asked to open. Requires CanStandIn; put the folder first in the search path.
class OpenedFiles : public INonCopyable
{
public:
    static bool CanStandIn();

    OpenedFiles();

    const std::wstring& GetSearchPath() const noexcept { return m_folder.GetPath(); }

    /// Lets the waiting programs continue and waits until one of them has recorded its file. Returns all files so far,
    /// in order.
    std::vector<std::wstring> Await() const;

private:
    ScopedFolder m_folder;
};
