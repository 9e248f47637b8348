/// The runner's output as rich text.
#pragma once

#include <string>

#include "testing/lutestsuite/lutestsuiteout.h"

/// Collects output lines with their attributes and saves them as a page for the browser; a graphical host would show
/// them in a pane with rich text. Any thread may print, one line at a time. Save the page only after the operation that
/// prints.
class CLogPage : public LuTestSuiteOut::LuCustomOut
{
public:
    void Output(const LuTestSuiteOut& line) override;

    /// Writes all lines so far. Throws LbException when the file cannot be written.
    void Save(const std::wstring& path) const;

private:
    std::wstring m_body;
};
