/// Tests of the command "review".
#pragma once

#include <string>
#include <vector>

#include "base/lbfilesystem.h"
#include "base/lbreceivedfile.h"
#include "base/lbuniqueid.h"
#include "tests/lutestsuiterunner/cli/runnertest.h"
#include "tests/support/scopedenvironment.h"

class RunnerReview : public RunnerTest
{
protected:
    SHostRun Review(std::vector<std::wstring> options = {}) const
    {
        options.insert(options.begin(), {L"review", m_folder.GetPathOf(L"data")});
        return RunRunner(options);
    }

    /// Receives the output of `runs` runs, which differs from the reference.
    void Receive(const std::wstring& name, const std::string& received, int runs = 3) const
    {
        for (int run = 0; run < runs; ++run)
        {
            const ScopedEnvironmentVariable variable(LbReceivedFile::c_RunVariable, LbUniqueId::Generate());
            LbReceivedFile::Compare(received, m_folder.GetPathOf(L"data/" + name), true);
        }
    }

    void Write(const std::wstring& name, const std::string& bytes) const { m_folder.WriteFile(L"data/" + name, bytes); }

    std::string Read(const std::wstring& name) const
    {
        return LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"data/" + name));
    }

    bool Holds(const std::wstring& name) const { return LbFileSystem::IsFile(m_folder.GetPathOf(L"data/" + name)); }

private:
    // Clears CI, which a build server that runs these tests may have set.
    ScopedEnvironmentVariable m_ci{L"CI", L""};
};
