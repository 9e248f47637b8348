/// What programs hand to the desktop.
#pragma once

#include <string>
#include <vector>

#include "base/inoncopyable.h"
#include "tests/support/scopedfolder.h"

/// Folder of a program that stands in for the desktop's opener: it waits until it may go on, then notes the file that
/// it was given. Only where CanStandIn; its folder is to come first in the programs' search path.
class OpenedFiles : public INonCopyable
{
public:
    static bool CanStandIn();

    OpenedFiles();

    const std::wstring& GetSearchPath() const noexcept { return m_folder.GetPath(); }

    /// Lets the stand-ins go on and waits until one has noted its file. The files of all that have, in their order.
    std::vector<std::wstring> Await() const;

private:
    ScopedFolder m_folder;
};
