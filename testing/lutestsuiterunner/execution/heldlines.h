/// Lines of the library that are held back.
#pragma once

#include <string>

#include "base/inoncopyable.h"

namespace Runner
{

/// Holds back what the library prints on this thread while the object exists, if MoveLibraryLinesToErrors has been
/// called. At most one object per thread.
class CHeldLines : public INonCopyable
{
public:
    CHeldLines();

    /// Prints the lines that have not been taken.
    ~CHeldLines();

    /// Removes and returns the lines so far, each with its line feed.
    std::wstring Take();

    /// Called by the output of the library's lines. False if this thread holds back no lines.
    static bool Hold(const std::wstring& line);

private:
    std::wstring m_lines;
};

} // namespace Runner
