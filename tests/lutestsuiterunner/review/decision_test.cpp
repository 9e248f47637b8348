#include "testing/lutestsuiterunner/review/decision.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbreceivedfile.h"
#include "tests/support/scopedfolder.h"

namespace
{

using Runner::Decide;
using Runner::EDecision;

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
        return {m_folder.GetPathOf(name), LbReceivedFile::GetChecksum(received), true};
    }

    /// The content of a file; "-" if there is no such file.
    std::string Read(const std::wstring& name) const
    {
        const std::wstring path = m_folder.GetPathOf(name);
        return LbFileSystem::IsFile(path) ? LbFileSystem::ReadFile8Bit(path) : "-";
    }

    /// The files that a process leaves if it is killed after it has written its decision.
    void Interrupt(EDecision decision, const std::vector<Runner::SReceivedFile>& files) const
    {
        std::string text = std::string("{\"accept\":") + (decision == EDecision::Accept ? "true" : "false");
        text += ",\"files\":[";
        for (const Runner::SReceivedFile& file : files)
        {
            const std::wstring name = file.reference.substr(m_folder.GetPath().size());
            text += (text.back() == '[' ? "" : ",") + std::string("{\"reference\":\"") +
                    std::string(name.begin(), name.end()) + "\",\"checksum\":\"" +
                    std::string(file.checksum.begin(), file.checksum.end()) + "\"}";
        }
        m_folder.WriteFile(Runner::c_DecisionFile, text + "]}");
    }

    ScopedFolder m_folder;
};

TEST_F(ReviewDecision, AcceptsWhatWasReceived)
{
    const Runner::SReceivedFile changed = Write(L"a", "old", "new");
    const Runner::SReceivedFile added = Write(L"b", "", "fresh");

    Decide(m_folder.GetPath(), EDecision::Accept, {changed, added});

    EXPECT_EQ(Read(L"a"), "new");
    EXPECT_EQ(Read(L"b"), "fresh");
    for (const wchar_t* name : {L"a.received", L"a.received.runs", L"b.received", L"b.received.runs"})
    {
        EXPECT_EQ(Read(name), "-");
    }
    EXPECT_EQ(Read(Runner::c_DecisionFile), "-");
}

TEST_F(ReviewDecision, RejectsWhatWasReceived)
{
    Decide(m_folder.GetPath(), EDecision::Reject, {Write(L"a", "old", "new")});

    EXPECT_EQ(Read(L"a"), "old");
    EXPECT_EQ(Read(L"a.received"), "-");
    EXPECT_EQ(Read(L"a.received.runs"), "-");
}

TEST_F(ReviewDecision, LeavesFilesAloneThatHaveChangedMeanwhile)
{
    const Runner::SReceivedFile file = Write(L"a", "old", "new");
    m_folder.WriteFile(L"a.received", "newer");

    Decide(m_folder.GetPath(), EDecision::Accept, {file});

    EXPECT_EQ(Read(L"a"), "old");
    EXPECT_EQ(Read(L"a.received"), "newer");
}

/// A folder cannot be replaced by a file.
TEST_F(ReviewDecision, ChangesNoFileIfOneCannotBeReplaced)
{
    const Runner::SReceivedFile first = Write(L"a", "old", "new");
    const Runner::SReceivedFile added = Write(L"b", "", "fresh");
    const Runner::SReceivedFile blocked = Write(L"c", "", "new");
    m_folder.WriteFile(L"c/file", "x");

    EXPECT_ANY_THROW(Decide(m_folder.GetPath(), EDecision::Accept, {first, added, blocked}));

    EXPECT_EQ(Read(L"a"), "old");
    EXPECT_EQ(Read(L"a.received"), "new");
    EXPECT_EQ(Read(L"a.received.runs"), "3");
    EXPECT_EQ(Read(L"b"), "-");
    EXPECT_EQ(Read(L"b.received"), "fresh");
    EXPECT_EQ(Read(Runner::c_DecisionFile), "-");
}

TEST_F(ReviewDecision, IsFinishedAfterAnInterruption)
{
    const Runner::SReceivedFile done = Write(L"a", "old", "new");
    const Runner::SReceivedFile open = Write(L"b", "old", "new");
    Interrupt(EDecision::Accept, {done, open});
    m_folder.WriteFile(L"a", "new");
    LbOs::RemoveFile(m_folder.GetPathOf(L"a.received"));

    EXPECT_EQ(Runner::FinishDecision(m_folder.GetPath()), 2U);

    EXPECT_EQ(Read(L"a"), "new");
    EXPECT_EQ(Read(L"b"), "new");
    EXPECT_EQ(Read(L"b.received"), "-");
    EXPECT_EQ(Runner::FinishDecision(m_folder.GetPath()), 0U);
}

TEST_F(ReviewDecision, DoesNotFinishWithWhatWasReceivedLater)
{
    const Runner::SReceivedFile done = Write(L"a", "old", "new");
    Interrupt(EDecision::Accept, {done});
    m_folder.WriteFile(L"a.received", "newer");

    Runner::FinishDecision(m_folder.GetPath());

    EXPECT_EQ(Read(L"a"), "old");
    EXPECT_EQ(Read(L"a.received"), "newer");
}

TEST_F(ReviewDecision, RemainsToBeFinishedIfAFileCannotBeReplaced)
{
    const Runner::SReceivedFile blocked = Write(L"c", "", "new");
    m_folder.WriteFile(L"c/file", "x");
    Interrupt(EDecision::Accept, {blocked});

    EXPECT_ANY_THROW(Runner::FinishDecision(m_folder.GetPath()));

    EXPECT_NE(Read(Runner::c_DecisionFile), "-");
}

TEST_F(ReviewDecision, IsRefusedIfItsFileIsDamaged)
{
    m_folder.WriteFile(Runner::c_DecisionFile, "{\"accept\":tr");

    EXPECT_ANY_THROW(Runner::FinishDecision(m_folder.GetPath()));
}

} // namespace
