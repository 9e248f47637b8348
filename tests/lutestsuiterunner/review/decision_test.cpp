#include "testing/lutestsuiterunner/review/decision.h"

#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbreceivedfile.h"
#include "base/lbtemporaryname.h"
#include "base/os/filereplacement.h"
#include "base/os/folderlock.h"
#include "tests/lutestsuiterunner/review/decisiontest.h"

namespace
{

using Runner::EDecision;
using Runner::SOutcome;
using Runner::SReceivedFile;

TEST_F(ReviewDecision, ReplacesReferencesWithAcceptedOutput)
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

TEST_F(ReviewDecision, AcceptsAWholeFileWithoutLineEndsThatWereNotShown)
{
    const SOutcome outcome = Decide(EDecision::Accept, {Write(L"a", "old\nx\n", "new\r\nx\r\n")});

    EXPECT_EQ(Read(L"a"), "new\nx\n");
    EXPECT_EQ(Read(L"a.received"), "new\r\nx\r\n");
    EXPECT_TRUE(outcome.done.front().isOpen);
    Decide(EDecision::Accept, {Write(L"a", "new\nx\n", "new\r\nx\r\n")});
    EXPECT_EQ(Read(L"a"), "new\r\nx\r\n");
    EXPECT_EQ(Read(L"a.received"), "-");
}

TEST_F(ReviewDecision, RecognizesAWholeFileThatItReplacedBeforeAnInterruption)
{
    InterruptLate(EDecision::Accept, {Write(L"a", "old\nx\n", "new\r\nx\r\n")});
    m_folder.WriteFile(L"a", "new\nx\n");

    const std::optional<SOutcome> outcome = Finish();

    EXPECT_EQ(outcome.value().left, 0U);
    EXPECT_EQ(Read(L"a"), "new\nx\n");
    EXPECT_EQ(Read(L"a.received"), "new\r\nx\r\n");
}

TEST_F(ReviewDecision, RemovesRejectedOutputAndKeepsTheReference)
{
    Decide(EDecision::Reject, {Write(L"a", "old", "new")});

    EXPECT_EQ(Read(L"a"), "old");
    EXPECT_EQ(Read(L"a.received"), "-");
    EXPECT_EQ(Read(L"a.received.runs"), "-");
}

TEST_F(ReviewDecision, IsRefusedAsAWholeIfAnOutputHasChangedMeanwhile)
{
    const SReceivedFile first = Write(L"a", "old", "new");
    const SReceivedFile second = Write(L"b", "old", "new");
    m_folder.WriteFile(L"b.received", "newer");

    for (const EDecision decision : {EDecision::Accept, EDecision::Reject})
    {
        EXPECT_EQ(GetRefusal(decision, {first, second}),
                  L"Entscheidung abgelehnt: Datei " + second.reference + L".received hat sich seit dem Lesen geändert");
        EXPECT_EQ(Read(L"a") + Read(L"a.received") + Read(L"a.received.runs"), "oldnew3");
        EXPECT_EQ(Read(L"b") + Read(L"b.received"), "oldnewer");
        EXPECT_FALSE(HasPlan());
    }
}

TEST_F(ReviewDecision, IsRefusedAsAWholeIfAReferenceHasChangedMeanwhile)
{
    const SReceivedFile changed = Write(L"a", "old", "new");
    const SReceivedFile added = Write(L"b", "", "new");
    m_folder.WriteFile(L"b", "somebody else's");

    EXPECT_EQ(GetRefusal(EDecision::Accept, {changed, added}),
              L"Entscheidung abgelehnt: Datei " + added.reference + L" hat sich seit dem Lesen geändert");

    EXPECT_EQ(Read(L"a") + Read(L"a.received"), "oldnew");
    EXPECT_EQ(Read(L"b") + Read(L"b.received"), "somebody else'snew");
    EXPECT_FALSE(HasPlan());
}

TEST_F(ReviewDecision, IsRefusedWhileAnotherDecisionIsUnfinished)
{
    const SReceivedFile file = Write(L"a", "old", "new");
    const SReceivedFile other = Write(L"b", "old", "new");
    Interrupt(EDecision::Accept, {other});

    EXPECT_NE(GetRefusal(EDecision::Accept, {file}).find(L"ist eine Entscheidung unvollendet"), std::wstring::npos);

    EXPECT_EQ(Read(L"a"), "old");
    EXPECT_EQ(Finish().value().done.size(), 1U);
    EXPECT_EQ(Read(L"b"), "new");
}

/// The reference "c" is a folder, which a file cannot replace.
TEST_F(ReviewDecision, ChangesNoFileIfAReferenceCannotBeReplaced)
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
    InterruptLate(EDecision::Accept, {done, open});
    AcceptFirst(L"a");

    const std::optional<SOutcome> outcome = Finish();

    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->done.size(), 2U);
    EXPECT_EQ(outcome->left, 0U);

    EXPECT_EQ(Read(L"a"), "new");
    EXPECT_EQ(Read(L"b"), "new");
    EXPECT_EQ(Read(L"b.received"), "-");
    EXPECT_FALSE(HasPlan());
    EXPECT_FALSE(Finish());
}

TEST_F(ReviewDecision, RemovesOnlyItsOwnTemporaryFilesAfterAnInterruption)
{
    InterruptLate(EDecision::Accept, {Write(L"COne/a", "old", "new"), Write(L"b", "old", "new")});
    m_folder.WriteFile(L"COne/" + c_Temporary, "ne");
    const std::wstring other = L"COne/" + LbTemporaryName::Make();
    m_folder.WriteFile(other, "of a run");

    Finish();

    EXPECT_EQ(Read(L"COne/a") + Read(L"b"), "newnew");
    EXPECT_EQ(Read(L"COne/" + c_Temporary), "-");
    EXPECT_EQ(Read(other), "of a run");
}

TEST_F(ReviewDecision, RemovesTheDraftOfADecisionThatWasNotMade)
{
    m_folder.WriteFile(Runner::c_DecisionDraft, "{");
    EXPECT_EQ(Runner::FindReceived(m_folder.GetPath()).remains, std::vector{m_folder.GetPath()});

    Runner::RemoveRemains(m_folder.GetPath());

    EXPECT_EQ(Read(Runner::c_DecisionDraft), "-");
}

TEST_F(ReviewDecision, RemovesTheRemainingFolderOfACompleteDecision)
{
    m_folder.WriteFile(c_Claims + L"/complete", "");
    EXPECT_EQ(Runner::FindReceived(m_folder.GetPath()).remains, std::vector{m_folder.GetPath()});

    Runner::RemoveRemains(m_folder.GetPath());

    EXPECT_FALSE(HasPlan());
}

TEST_F(ReviewDecision, KeepsReceivedFilesInTheFolderOfAnIncompleteDecision)
{
    m_folder.WriteFile(c_Claims + L"/0", "new");

    Runner::RemoveRemains(m_folder.GetPath());

    EXPECT_EQ(Read(c_Claims + L"/0"), "new");
}

TEST_F(ReviewDecision, KeepsTheDraftOfAnotherProcess)
{
    m_folder.WriteFile(Runner::c_DecisionDraft, "{");
    const auto lock = LbOs::CFolderLock::TryAcquire(m_folder.GetPath());

    std::thread([this] { Runner::RemoveRemains(m_folder.GetPath()); }).join();

    EXPECT_EQ(Read(Runner::c_DecisionDraft), "{");
}

TEST_F(ReviewDecision, IsReportedAsDamagedIfItsTemporaryNameIsInvalid)
{
    for (const std::wstring name : {L"a", L"../LuTestSuite-a.tmp", L""})
    {
        m_folder.WriteFile(Runner::c_DecisionFile,
                           Runner::MakeDecisionPlan(m_folder.GetPath(), {EDecision::Accept, {}, {}, name}));
        EXPECT_NE(GetFailure().find(L"beschädigt"), std::wstring::npos)
            << "temporary name with " << name.size() << " characters";
    }
}

TEST_F(ReviewDecision, IsFinishedAfterAnInterruptionWhileMovingReceivedFiles)
{
    Interrupt(EDecision::Accept, {Write(L"a", "old", "new"), Write(L"b", "", "fresh")});
    LbOs::MakeDirectory(m_folder.GetPathOf(c_Claims));
    ASSERT_TRUE(LbOs::RenameFile(m_folder.GetPathOf(L"a.received"), m_folder.GetPathOf(c_Claims + L"/0")));

    EXPECT_EQ(Finish().value().done.size(), 2U);

    EXPECT_EQ(Read(L"a") + Read(L"b"), "newfresh");
    EXPECT_FALSE(HasPlan());
}

/// After the interruption, a run writes other output of "b" and the same output of "c".
TEST_F(ReviewDecision, AcceptsTheDecidedOutputAfterAnotherRun)
{
    InterruptLate(EDecision::Accept, {Write(L"a", "old", "new"), Write(L"b", "old", "new"), Write(L"c", "old", "new")});
    AcceptFirst(L"a");
    m_folder.WriteFile(L"b.received", "newer");
    m_folder.WriteFile(L"c.received", "new");

    const std::optional<SOutcome> outcome = Finish();

    EXPECT_EQ(outcome.value().done.size(), 3U);
    EXPECT_EQ(outcome.value().changed, L"");
    EXPECT_EQ(Read(L"a") + Read(L"b") + Read(L"c"), "newnewnew");
    EXPECT_EQ(Read(L"b.received"), "newer");
    EXPECT_EQ(Read(L"c.received"), "-");
}

TEST_F(ReviewDecision, RejectsOnlyTheDecidedOutputAfterAnotherRun)
{
    InterruptLate(EDecision::Reject, {Write(L"a", "old", "new"), Write(L"b", "old", "new")});
    m_folder.WriteFile(L"a.received", "new");
    m_folder.WriteFile(L"b.received", "newer");

    EXPECT_EQ(Finish().value().done.size(), 2U);

    EXPECT_EQ(Read(L"a.received"), "-");
    EXPECT_EQ(Read(L"b.received"), "newer");
    EXPECT_EQ(Read(L"a") + Read(L"b"), "oldold");
}

TEST_F(ReviewDecision, KeepsAReferenceThatChangedAfterAnInterruption)
{
    InterruptLate(EDecision::Accept, {Write(L"a", "old", "new"), Write(L"b", "old", "new")});
    AcceptFirst(L"a");
    m_folder.WriteFile(L"b", "somebody else's");

    EXPECT_EQ(Finish().value().left, 1U);

    EXPECT_EQ(Read(L"b") + Read(L"b.received"), "somebody else'snew");
    EXPECT_FALSE(HasPlan());
}

TEST_F(ReviewDecision, IsUndoneIfOutputChangedAfterAnEarlyInterruption)
{
    const SReceivedFile first = Write(L"a", "old", "new");
    const SReceivedFile changed = Write(L"b", "old", "new");
    Interrupt(EDecision::Accept, {first, changed});
    m_folder.WriteFile(L"b.received", "newer");

    EXPECT_EQ(Finish().value().changed, changed.reference + L".received");

    EXPECT_EQ(Read(L"a") + Read(L"a.received"), "oldnew");
    EXPECT_EQ(Read(L"b") + Read(L"b.received"), "oldnewer");
    EXPECT_FALSE(HasPlan());
}

TEST_F(ReviewDecision, StaysUnfinishedIfAReferenceCannotBeReplaced)
{
    const SReceivedFile blocked = Write(L"c", "", "new");
    m_folder.WriteFile(L"c/file", "x");
    Interrupt(EDecision::Accept, {blocked});

    EXPECT_NE(GetFailure().find(L"; wird die Datei "), std::wstring::npos) << GetFailure();

    EXPECT_NE(Read(Runner::c_DecisionFile), "-");
}

TEST_F(ReviewDecision, CannotBeFinishedIfItsFileIsDamaged)
{
    m_folder.WriteFile(Runner::c_DecisionFile, "{\"accept\":tr");

    EXPECT_NE(GetFailure().find(L"beschädigt; wird die Datei "), std::wstring::npos) << GetFailure();
}

TEST_F(ReviewDecision, AcceptsPartsAndKeepsReceivedFilesWithOpenParts)
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

TEST_F(ReviewDecision, IsRefusedAsAWholeIfAFileHasNoPartOfTheChange)
{
    const SReceivedFile first = Write(L"a", "old 1\nx\n", "new 1\nx\n");
    const SReceivedFile other = Write(L"b", "old 2\nx\n", "new 2\nx\n");

    EXPECT_EQ(GetRefusal(EDecision::Accept, {first, other}, GetParts("old 1\nx\n", "new 1\nx\n")),
              L"Entscheidung abgelehnt: Datei " + other.reference + L" hat keinen Teil der Änderung");

    EXPECT_EQ(Read(L"a") + Read(L"a.received"), "old 1\nx\nnew 1\nx\n");
    EXPECT_EQ(Read(L"b") + Read(L"b.received"), "old 2\nx\nnew 2\nx\n");
    EXPECT_FALSE(HasPlan());
}

TEST_F(ReviewDecision, FinishesAcceptedPartsAfterAnInterruption)
{
    const SReceivedFile done = Write(L"a", "old 1\nx\nold 2\n", "new 1\nx\nnew 2\n");
    const SReceivedFile open = Write(L"b", "old 1\ny\nold 2\n", "new 1\ny\nnew 2\n");
    InterruptLate(EDecision::Accept, {done, open}, GetParts("old 1\nx", "new 1\nx"));
    m_folder.WriteFile(L"a", "new 1\nx\nold 2\n");

    const std::optional<SOutcome> outcome = Finish();

    ASSERT_TRUE(outcome);
    EXPECT_EQ(outcome->done.size(), 2U);
    EXPECT_EQ(Read(L"a"), "new 1\nx\nold 2\n");
    EXPECT_EQ(Read(L"b"), "new 1\ny\nold 2\n");
}

TEST_F(ReviewDecision, UndoesAcceptedPartsIfAReferenceCannotBeReplaced)
{
    const SReceivedFile first = Write(L"a", "old 1\nx\nold 2\n", "new 1\nx\nnew 2\n");
    const SReceivedFile blocked = Write(L"c", "", "new");
    m_folder.WriteFile(L"c/file", "x");

    EXPECT_ANY_THROW(Decide(EDecision::Accept, {first, blocked}, GetParts("old 1\nx", "new 1\nx")));

    EXPECT_EQ(Read(L"a"), "old 1\nx\nold 2\n");
    EXPECT_EQ(Read(L"a.received"), "new 1\nx\nnew 2\n");
}

/// The file has bytes that are not UTF-8, and an earlier decision has accepted one of its parts.
class ReviewDecisionAfterAnother : public ReviewDecision
{
protected:
    SReceivedFile WriteAccepted() const
    {
        SReceivedFile file = Write(L"a", "new \xE4\nx\nold 2\ny\nold 3\n", "new \xE4\nx\nnew 2\ny\nnew 3\n");
        file.earlier = std::make_shared<const Runner::SAccepted>(
            Runner::SAccepted{"old \xE4\nx\nold 2\ny\nold 3\n", GetParts("old \xE4\nx", "new \xE4\nx")});
        return file;
    }

    const Runner::PartNames c_Parts = GetParts("old 2\nx", "new 2\nx");
};

TEST_F(ReviewDecisionAfterAnother, IsFinishedAfterAnInterruption)
{
    InterruptLate(EDecision::Accept, {WriteAccepted()}, c_Parts);

    EXPECT_EQ(Finish().value().left, 0U);

    EXPECT_EQ(Read(L"a"), "new \xE4\nx\nnew 2\ny\nold 3\n");
    EXPECT_EQ(Read(L"a.received"), "new \xE4\nx\nnew 2\ny\nnew 3\n");
}

TEST_F(ReviewDecisionAfterAnother, RecognizesAReferenceThatItReplacedBeforeAnInterruption)
{
    InterruptLate(EDecision::Accept, {WriteAccepted()}, c_Parts);
    m_folder.WriteFile(L"a", "new \xE4\nx\nnew 2\ny\nold 3\n");

    EXPECT_EQ(Finish().value().left, 0U);
}

TEST_F(ReviewDecisionAfterAnother, KeepsAReferenceThatChangedAfterAnInterruption)
{
    InterruptLate(EDecision::Accept, {WriteAccepted()}, c_Parts);
    m_folder.WriteFile(L"a", "somebody else's\nx\nnew 2\ny\nold 3\n");

    EXPECT_EQ(Finish().value().left, 1U);
}

} // namespace
