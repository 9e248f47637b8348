/// What tests of distributed runs share.
#pragma once

#include <string>
#include <vector>

#include "base/lbpath.h"
#include "tests/lutestsuiterunner/cli/runnertest.h"

class DistributedTest : public RunnerTest
{
protected:
    /// Runs "submit" with the folder "out".
    SHostRun Submit(const std::vector<std::wstring>& own, const std::vector<std::wstring>& library = {},
                    const SHostOptions& options = {}) const;

    /// Makes the data sets "0.ms", "1.ms", ...; the case of each takes the milliseconds at its index.
    void MakeDurations(const std::vector<int>& milliseconds) const;

    /// Makes the data of cases with results of many kinds.
    void MakeMixedData() const;

    /// Runs a command on the cases of the example product family, some of which fail.
    static SHostRun RunExamples(std::vector<std::wstring> arguments, const SHostOptions& options = {});

    /// The folder of another run, with separator at its end.
    std::wstring GetOther() const { return m_folder.GetPathOf(LbPath::WithSeparator(L"other")); }

    /// Compares all reports of two runs, except times and the names of the slowest cases in the summary.
    static void ExpectSameReports(const std::wstring& folder, const std::wstring& other);

    /// Fails unless the independent checker confirms the proof. Does nothing where the checker cannot run.
    static void ExpectProof(const std::wstring& folder);
};
