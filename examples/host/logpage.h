/// The runner's output as rich text.
#pragma once

#include <string>

#include "testing/lutestsuite/lutestsuiteout.h"

/// Collects output lines with their attributes, for a pane that shows rich text; here it is a page for the browser.
/// Any thread may print, one line at a time; read the page only after the operation that prints.
class CLogPage : public LuTestSuiteOut::LuCustomOut
{
public:
    void Output(const LuTestSuiteOut& line) override;

    /// Writes all lines so far. Throws LbException when the file cannot be written.
    void Save(const std::wstring& path) const;

private:
    std::wstring m_body;
};
