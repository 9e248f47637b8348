#include "testing/lutestsuiterunner/review/decision.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbreceivedfile.h"
#include "tests/support/scopedfolder.h"

namespace
{

using Runner::EDecision;
using Runner::SOutcome;
using Runner::SReceivedFile;

class ReviewDecision : public testing::Test
{
protected:
    SReceivedFile Write(const std::wstring& name, const std::string& expected, const std::string& received) const
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

    SOutcome Decide(EDecision decision, const std::vector<SReceivedFile>& files,
                    const Runner::PartNames& parts = {}) const
    {
        return Runner::Decide(m_folder.GetPath(), decision, {Runner::EChange::Changed, {}, {}, parts, files});
    }

    std::optional<SOutcome> Finish() const { return Runner::FinishDecision(m_folder.GetPath()); }

    /// What the folder's decision fails with.
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

    /// What a process leaves that is killed after it has written its decision.
    void Interrupt(EDecision decision, const std::vector<SReceivedFile>& files,
                   const Runner::PartNames& parts = {}) const
    {
        nlohmann::json plan = {{"accept", decision == EDecision::Accept},
                               {"parts", nlohmann::json::array()},
                               {"files", nlohmann::json::array()}};
        for (const std::wstring& part : parts)
        {
            plan["parts"].push_back(LbEncoding::ToUtf8(part));
        }
        for (const SReceivedFile& file : files)
        {
            plan["files"].push_back(
                {{"reference", LbEncoding::ToUtf8(file.reference.substr(m_folder.GetPath().size()))},
                 {"checksum", LbEncoding::ToUtf8(file.checksum)},
                 {"expected", LbEncoding::ToUtf8(file.expected)}});
        }
        m_folder.WriteFile(Runner::c_DecisionFile, plan.dump());
    }

    /// The parts that files with these contents have.
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

TEST_F(ReviewDecision, AcceptsWhatWasReceived)
{
    const SReceivedFile changed = Write(L"a", "old", "new");
    const SReceivedFile added = Write(L"b", "", "fresh");

    Decide(EDecision::Accept, {changed, added});

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
    Decide(EDecision::Reject, {Write(L"a", "old", "new")});

    EXPECT_EQ(Read(L"a"), "old");
    EXPECT_EQ(Read(L"a.received"), "-");
    EXPECT_EQ(Read(L"a.received.runs"), "-");
}

TEST_F(ReviewDecision, LeavesFilesAloneThatHaveChangedMeanwhile)
{
    const SReceivedFile file = Write(L"a", "old", "new");
    m_folder.WriteFile(L"a.received", "newer");

    Decide(EDecision::Accept, {file});

    EXPECT_EQ(Read(L"a"), "old");
    EXPECT_EQ(Read(L"a.received"), "newer");
}

/// A folder cannot be replaced by a file.
TEST_F(ReviewDecision, ChangesNoFileIfOneCannotBeReplaced)
{
    const SReceivedFile first = Write(L"a", "old", "new");
    const SReceivedFile added = Write(L"b", "", "fresh");
    const SReceivedFile blocked = Write(L"c", "", "new");
    m_folder.WriteFile(L"c/file", "x");

    EXPECT_ANY_THROW(Decide(EDecision::Accept, {first, added, blocked}));

    EXPECT_EQ(Read(L"a"), "old");
    EXPECT_EQ(Read(L"a.received"), "new");
    EXPECT_EQ(Read(L"a.received.runs"), "3");
    EXPECT_EQ(Read(L"b"), "-");
    EXPECT_EQ(Read(L"b.received"), "fresh");
    EXPECT_EQ(Read(Runner::c_DecisionFile), "-");
}

TEST_F(ReviewDecision, IsFinishedAfterAnInterruption)
{
    const SReceivedFile done = Write(L"a", "old", "new");
    const SReceivedFile open = Write(L"b", "old", "new");
    Interrupt(EDecision::Accept, {done, open});
    m_folder.WriteFile(L"a", "new");
    LbOs::RemoveFile(m_folder.GetPathOf(L"a.received"));

    const std::optional<SOutcome> outcome = Finish();

    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->done.size(), 2U);
    EXPECT_EQ(outcome->left, 0U);

    EXPECT_EQ(Read(L"a"), "new");
    EXPECT_EQ(Read(L"b"), "new");
    EXPECT_EQ(Read(L"b.received"), "-");
    EXPECT_FALSE(Finish());
}

TEST_F(ReviewDecision, DoesNotFinishWithWhatWasReceivedLater)
{
    const SReceivedFile done = Write(L"a", "old", "new");
    Interrupt(EDecision::Accept, {done});
    m_folder.WriteFile(L"a.received", "newer");

    EXPECT_EQ(Finish().value().left, 1U);

    EXPECT_EQ(Read(L"a"), "old");
    EXPECT_EQ(Read(L"a.received"), "newer");
}

TEST_F(ReviewDecision, RemainsToBeFinishedIfAFileCannotBeReplaced)
{
    const SReceivedFile blocked = Write(L"c", "", "new");
    m_folder.WriteFile(L"c/file", "x");
    Interrupt(EDecision::Accept, {blocked});

    EXPECT_NE(GetFailure().find(L"; wird die Datei "), std::wstring::npos) << GetFailure();

    EXPECT_NE(Read(Runner::c_DecisionFile), "-");
}

TEST_F(ReviewDecision, IsRefusedIfItsFileIsDamaged)
{
    m_folder.WriteFile(Runner::c_DecisionFile, "{\"accept\":tr");

    EXPECT_NE(GetFailure().find(L"beschädigt; wird die Datei "), std::wstring::npos) << GetFailure();
}

TEST_F(ReviewDecision, LeavesReferencesAloneThatHaveChangedMeanwhile)
{
    const SReceivedFile changed = Write(L"a", "old", "new");
    const SReceivedFile added = Write(L"b", "", "new");
    m_folder.WriteFile(L"a", "older");
    m_folder.WriteFile(L"b", "somebody else's");

    const SOutcome outcome = Decide(EDecision::Accept, {changed, added});

    EXPECT_EQ(outcome.done.size(), 0U);
    EXPECT_EQ(outcome.left, 2U);
    EXPECT_EQ(Read(L"a"), "older");
    EXPECT_EQ(Read(L"a.received"), "new");
    EXPECT_EQ(Read(L"b"), "somebody else's");
}

TEST_F(ReviewDecision, CountsWhatIsDone)
{
    const SReceivedFile first = Write(L"a", "old", "new");
    const SReceivedFile second = Write(L"b", "old", "new");
    m_folder.WriteFile(L"b.received", "newer");

    const SOutcome outcome = Decide(EDecision::Reject, {first, second});

    ASSERT_EQ(outcome.done.size(), 1U);
    EXPECT_EQ(outcome.done.front().reference, first.reference);
    EXPECT_EQ(outcome.left, 1U);
}

TEST_F(ReviewDecision, AcceptsPartsAndKeepsWhatWasReceived)
{
    const SReceivedFile file = Write(L"a", "old 1\nx\nold 2\n", "new 1\nx\nnew 2\n");
    const SReceivedFile whole = Write(L"b", "old 1\ny\n", "new 1\ny\n");

    const SOutcome outcome = Decide(EDecision::Accept, {file, whole}, GetParts("old 1\nx", "new 1\nx"));

    EXPECT_EQ(Read(L"a"), "new 1\nx\nold 2\n");
    EXPECT_EQ(Read(L"a.received"), "new 1\nx\nnew 2\n");
    EXPECT_EQ(Read(L"a.received.runs"), "3");
    EXPECT_EQ(Read(L"b"), "new 1\ny\n");
    EXPECT_EQ(Read(L"b.received"), "-");
    ASSERT_EQ(outcome.done.size(), 2U);
    EXPECT_TRUE(outcome.done[0].isOpen);
    EXPECT_EQ(outcome.done[0].expected, LbReceivedFile::GetChecksum("new 1\nx\nold 2\n"));
    EXPECT_FALSE(outcome.done[1].isOpen);
}

TEST_F(ReviewDecision, AboutPartsIsFinishedAfterAnInterruption)
{
    const SReceivedFile done = Write(L"a", "old 1\nx\nold 2\n", "new 1\nx\nnew 2\n");
    const SReceivedFile open = Write(L"b", "old 1\ny\nold 2\n", "new 1\ny\nnew 2\n");
    Interrupt(EDecision::Accept, {done, open}, GetParts("old 1\nx", "new 1\nx"));
    m_folder.WriteFile(L"a", "new 1\nx\nold 2\n");

    const std::optional<SOutcome> outcome = Finish();

    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->done.size(), 2U);
    EXPECT_EQ(Read(L"a"), "new 1\nx\nold 2\n");
    EXPECT_EQ(Read(L"b"), "new 1\ny\nold 2\n");
}

TEST_F(ReviewDecision, AboutPartsIsUndoneIfAFileCannotBeReplaced)
{
    const SReceivedFile first = Write(L"a", "old 1\nx\nold 2\n", "new 1\nx\nnew 2\n");
    const SReceivedFile blocked = Write(L"c", "", "new");
    m_folder.WriteFile(L"c/file", "x");

    EXPECT_ANY_THROW(Decide(EDecision::Accept, {first, blocked}, GetParts("old 1\nx", "new 1\nx")));

    EXPECT_EQ(Read(L"a"), "old 1\nx\nold 2\n");
    EXPECT_EQ(Read(L"a.received"), "new 1\nx\nnew 2\n");
}

} // namespace
