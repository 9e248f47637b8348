/// Tests of decisions about files in a folder.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/lbreceivedfile.h"
#include "base/lbtemporaryname.h"
#include "base/os/filereplacement.h"
#include "testing/lutestsuiterunner/review/claims.h"
#include "testing/lutestsuiterunner/review/decision.h"
#include "testing/lutestsuiterunner/review/decisionplan.h"
#include "tests/support/scopedfolder.h"

class ReviewDecision : public testing::Test
{
protected:
    Runner::SReceivedFile Write(const std::wstring& name, const std::string& expected,
                                const std::string& received) const
    {
        if (!expected.empty())
        {
            m_folder.WriteFile(name, expected);
        }
        m_folder.WriteFile(name + LbReceivedFile::c_Suffix, received);
        m_folder.WriteFile(name + LbReceivedFile::c_RunsSuffix, "3");
        return {m_folder.GetPathOf(name), LbReceivedFile::GetChecksum(received),
                expected.empty() ? std::wstring() : LbReceivedFile::GetChecksum(expected), true};
    }

    Runner::SOutcome Decide(Runner::EDecision decision, const std::vector<Runner::SReceivedFile>& files,
                            const Runner::PartNames& parts = {}) const
    {
        return Runner::Decide(m_folder.GetPath(), decision, {Runner::EChange::Changed, {}, {}, parts, files});
    }

    /// The message with which Decide refuses the decision; empty if the decision is made.
    std::wstring GetRefusal(Runner::EDecision decision, const std::vector<Runner::SReceivedFile>& files,
                            const Runner::PartNames& parts = {}) const
    {
        try
        {
            Decide(decision, files, parts);
        }
        catch (const std::wstring& reason)
        {
            return reason;
        }
        return L"";
    }

    /// True if the file or the folder of an unfinished decision exists.
    bool HasPlan() const { return Holds(Runner::c_DecisionFile) || Holds(c_Claims); }
    bool Holds(const std::wstring& name) const { return !LbOs::IsMissing(m_folder.GetPathOf(name)); }

    std::optional<Runner::SOutcome> Finish() const { return Runner::FinishDecision(m_folder.GetPath()); }

    /// The reason why the folder's decision cannot be finished; empty if it can.
    std::wstring GetFailure() const
    {
        try
        {
            Finish();
        }
        catch (const std::wstring& reason)
        {
            return reason;
        }
        return L"";
    }

    /// The content of a file; "-" if there is no such file.
    std::string Read(const std::wstring& name) const
    {
        const std::wstring path = m_folder.GetPathOf(name);
        return LbFileSystem::IsFile(path) ? LbFileSystem::ReadFile8Bit(path) : "-";
    }

    /// Writes the files that a process leaves if it is killed after it has written its decision.
    void Interrupt(Runner::EDecision decision, const std::vector<Runner::SReceivedFile>& files,
                   const Runner::PartNames& parts = {}) const
    {
        m_folder.WriteFile(Runner::c_DecisionFile,
                           Runner::MakeDecisionPlan(m_folder.GetPath(), {decision, parts, files, c_Temporary}));
    }

    /// Writes the files that a process leaves if it is killed after it has moved the output of all files to c_Claims.
    void InterruptLate(Runner::EDecision decision, const std::vector<Runner::SReceivedFile>& files,
                       const Runner::PartNames& parts = {}) const
    {
        Interrupt(decision, files, parts);
        ASSERT_EQ(Runner::CClaims(m_folder.GetPath(), files).Claim(), L"");
    }

    /// Does what an interrupted decision may have done: replaces the reference of its first file.
    void AcceptFirst(const std::wstring& name) const
    {
        ASSERT_TRUE(LbOs::RenameFile(m_folder.GetPathOf(c_Claims + L"/0"), m_folder.GetPathOf(name)));
    }

    const std::wstring c_Temporary = LbTemporaryName::Make(); ///< name of the temporary files of interrupted decisions
    const std::wstring c_Claims = Runner::c_ClaimsFolder;

    /// The parts in which files with these contents differ.
    static Runner::PartNames GetParts(const std::string& expected, const std::string& received)
    {
        Runner::PartNames names;
        for (const Runner::SPart& part : Runner::FindParts(expected, received))
        {
            names.insert(part.checksum);
        }
        return names;
    }

    ScopedFolder m_folder;
};
