#include "testing/lutestsuiterunner/review/referencefile.h"

#include <string>

#include <gtest/gtest.h>

#include "base/lbreceivedfile.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/review/decision.h"
#include "tests/lutestsuiterunner/review/decisiontest.h"
#include "tests/support/os/testaids.h"

namespace
{

using Runner::EDecision;
using Runner::SReceivedFile;

/// The reference "a" is a link to a file in another folder.
class ReviewDecisionOnALink : public ReviewDecision
{
protected:
    void SetUp() override
    {
        m_folder.MakeFolder(L"other");
        if (!LbOs::MakeLink(m_folder.GetPathOf(L"a"), m_folder.GetPathOf(L"other/target")))
        {
            GTEST_SKIP() << "links cannot be made here";
        }
    }

    SReceivedFile WriteLink(const std::string& expected, const std::string& received) const
    {
        m_folder.WriteFile(L"other/target", expected);
        SReceivedFile file = Write(L"a", "", received);
        file.expected = LbReceivedFile::GetChecksum(expected);
        return file;
    }

    bool IsLink(const std::wstring& name) const { return LbOs::IsLink(m_folder.GetPathOf(name)); }
};

TEST_F(ReviewDecisionOnALink, ReplacesTheTargetAndKeepsTheLink)
{
    Decide(EDecision::Accept, {WriteLink("old", "new")});

    EXPECT_TRUE(IsLink(L"a"));
    EXPECT_EQ(Read(L"other/target"), "new");
    EXPECT_EQ(Read(L"a.received"), "-");
    EXPECT_EQ(Read(L"a.received.runs"), "-");
    EXPECT_FALSE(HasPlan());
}

TEST_F(ReviewDecisionOnALink, WritesAcceptedPartsToTheTarget)
{
    Decide(EDecision::Accept, {WriteLink("old 1\nx\nold 2\n", "new 1\nx\nnew 2\n")}, GetParts("old 1\nx", "new 1\nx"));

    EXPECT_TRUE(IsLink(L"a"));
    EXPECT_EQ(Read(L"other/target"), "new 1\nx\nold 2\n");
    EXPECT_EQ(Read(L"a.received"), "new 1\nx\nnew 2\n");
}

TEST_F(ReviewDecisionOnALink, KeepsTheTargetIfAnotherFileHasNoPartOfTheChange)
{
    const SReceivedFile link = WriteLink("old 1\nx\n", "new 1\nx\n");
    const SReceivedFile other = Write(L"b", "old 2\nx\n", "new 2\nx\n");

    EXPECT_NE(GetRefusal(EDecision::Accept, {link, other}, GetParts("old 1\nx\n", "new 1\nx\n")), L"");

    EXPECT_TRUE(IsLink(L"a"));
    EXPECT_EQ(Read(L"other/target"), "old 1\nx\n");
    EXPECT_EQ(Read(L"a.received"), "new 1\nx\n");
}

TEST_F(ReviewDecisionOnALink, IsFinishedIfInterruptedAfterTheTargetWasReplaced)
{
    InterruptLate(EDecision::Accept, {WriteLink("old", "new")});
    m_folder.WriteFile(L"other/target", "new");
    m_folder.WriteFile(L"other/" + c_Temporary, "ne");

    EXPECT_EQ(Finish().value().done.size(), 1U);

    EXPECT_TRUE(IsLink(L"a"));
    EXPECT_EQ(Read(L"a.received"), "-");
    EXPECT_EQ(Read(L"other/" + c_Temporary), "-");
    EXPECT_FALSE(HasPlan());
}

TEST_F(ReviewDecisionOnALink, AllowsOnlyARejectionIfTheLinkIsBroken)
{
    SReceivedFile file = Write(L"b", "old", "new");
    SReceivedFile broken = WriteLink("", "new");
    broken.expected.clear();
    LbOs::RemoveFile(m_folder.GetPathOf(L"other/target"));

    EXPECT_EQ(GetRefusal(EDecision::Accept, {file, broken}),
              L"Entscheidung abgelehnt: Die Verknüpfung " + broken.reference + L" führt zu keiner Datei");

    EXPECT_EQ(Read(L"b") + Read(L"a.received"), "oldnew");
    EXPECT_TRUE(IsLink(L"a"));
    Decide(EDecision::Reject, {broken});
    EXPECT_EQ(Read(L"a.received"), "-");
}

TEST_F(ReviewDecisionOnALink, IsRefusedIfTheLinkLeadsToAnotherReference)
{
    const SReceivedFile link = WriteLink("old", "new");
    const SReceivedFile target = Write(L"other/target", "old", "new");

    EXPECT_EQ(GetRefusal(EDecision::Accept, {link, target}),
              L"Entscheidung abgelehnt: " + link.reference + L" und " + target.reference + L" sind dieselbe Datei");
    EXPECT_EQ(Read(L"other/target"), "old");
}

} // namespace
