/// The runner's output as rich text.
#pragma once

#include <string>

#include "testing/lutestsuite/lutestsuiteout.h"

/// Collects output lines with their attributes and saves them as a page for the browser; a graphical host would show
/// them in a pane with rich text. Lines may come from any thread, but only one at a time. Save the page only after the
/// operation that prints has ended.
class CLogPage : public LuTestSuiteOut::LuCustomOut
{
public:
    void Output(const LuTestSuiteOut& line) override;

    /// Writes all lines so far. Throws LbException if the file cannot be written.
    void Save(const std::wstring& path) const;

private:
    std::wstring m_body;
};
