/// What tests of distributed runs share.
#pragma once

#include <string>
#include <vector>

#include "base/lbpath.h"
#include "tests/lutestsuiterunner/cli/runnertest.h"

class DistributedTest : public RunnerTest
{
protected:
    /// The command "submit" into the folder "out".
    SHostRun Submit(const std::vector<std::wstring>& own, const std::vector<std::wstring>& library = {},
                    const SHostOptions& options = {}) const;

    /// Data sets "0.ms", "1.ms", ... that take so many milliseconds.
    void MakeDurations(const std::vector<int>& milliseconds) const;

    /// Cases with results of many kinds.
    void MakeMixedData() const;

    /// The folder of another run, with separator at its end.
    std::wstring GetOther() const { return m_folder.GetPathOf(LbPath::WithSeparator(L"other")); }

    /// A report's text with all numbers masked, up to the slowest cases.
    static std::string ReadReport(const std::wstring& path);

    /// Fails unless the independent checker confirms the proof. Does nothing where the checker cannot run.
    static void ExpectProof(const std::wstring& folder);
};
