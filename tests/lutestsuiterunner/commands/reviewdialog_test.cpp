#include "testing/lutestsuiterunner/commands/reviewdialog.h"

#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbreceivedfile.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// Two changes: one of the files "a" and "b", and one of the file "c".
class ReviewDialog : public testing::Test
{
protected:
    ReviewDialog()
    {
        Receive(L"a", "alt\n", "neu\n", 3);
        Receive(L"b", "alt\n", "neu\n", 3);
        Receive(L"c", "alt\n", "anders\n", 3);
    }

    void Receive(const std::wstring& name, const std::string& expected, const std::string& received, int runs) const
    {
        m_folder.WriteFile(name, expected);
        m_folder.WriteFile(name + LbReceivedFile::c_Suffix, received);
        m_folder.WriteFile(name + LbReceivedFile::c_RunsSuffix,
                           std::to_string(runs) + " " + LbEncoding::ToUtf8(LbReceivedFile::GetChecksum(received)) +
                               " " + std::string(32, '0') + "\n");
    }

    /// The output of the dialog for these answers, errors last.
    std::string Answer(const std::string& answers, bool mayBecomeBlank = false) const
    {
        return Answer(answers, Runner::GroupChanges(Runner::FindReceived(m_folder.GetPath()).references),
                      mayBecomeBlank);
    }

    std::string Answer(const std::string& answers, const std::vector<Runner::SChange>& changes,
                       bool mayBecomeBlank = false) const
    {
        std::istringstream input(answers);
        const std::wstring& directory = m_folder.GetPath();
        Runner::CReviewDecisions decisions(directory, changes);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        Runner::CReviewDialog(directory, {}, mayBecomeBlank, input).Ask(changes, decisions);
        const std::string output = testing::internal::GetCapturedStdout();
        return output + testing::internal::GetCapturedStderr();
    }

    std::string Read(const wchar_t* name) const { return LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(name)); }
    bool IsOpen(const std::wstring& name) const
    {
        return LbFileSystem::IsFile(m_folder.GetPathOf(name) + LbReceivedFile::c_Suffix);
    }

    ScopedFolder m_folder;
};

bool contains(const std::string& text, const char* part)
{
    return text.find(part) != std::string::npos;
}

TEST_F(ReviewDialog, AcceptsAndRejectsChanges)
{
    const std::string output = Answer("j\nv\n");

    EXPECT_EQ(Read(L"a") + Read(L"b") + Read(L"c"), "neu\nneu\nalt\n");
    EXPECT_FALSE(IsOpen(L"a") || IsOpen(L"b") || IsOpen(L"c"));
    EXPECT_TRUE(contains(output, "[1/2] ")) << output;
    EXPECT_TRUE(contains(output, "Keine weiteren")) << output;
}

TEST_F(ReviewDialog, SkipsAChangeWithoutADecision)
{
    Answer("w\nj\n");

    EXPECT_EQ(Read(L"a") + Read(L"c"), "alt\nanders\n");
    EXPECT_TRUE(IsOpen(L"a"));
}

TEST_F(ReviewDialog, EndsOnRequest)
{
    EXPECT_FALSE(contains(Answer("e\nj\n"), "[2/2]"));
    EXPECT_EQ(Read(L"a") + Read(L"c"), "alt\nalt\n");
}

TEST_F(ReviewDialog, EndsAtTheEndOfItsInput)
{
    EXPECT_FALSE(contains(Answer(""), "[2/2]"));
    EXPECT_TRUE(IsOpen(L"a") && IsOpen(L"c"));
}

TEST_F(ReviewDialog, AsksAgainAfterShowingBothSidesAndAfterUnknownAnswers)
{
    const std::string output = Answer("n\nx\nj\ne\n");

    EXPECT_TRUE(contains(output, " | neu")) << output;
    EXPECT_EQ(Read(L"a"), "neu\n");
}

TEST_F(ReviewDialog, ListsAllFilesOfAChange)
{
    EXPECT_TRUE(contains(Answer("d\ne\n"), "    a\n    b\n"));
}

TEST_F(ReviewDialog, AsksBeforeReferencesBecomeBlank)
{
    Receive(L"a", "alt\n", "\n", 3);
    Receive(L"b", "alt\n", "\n", 3);

    const std::string output = Answer("j\nnein\ne\n");
    EXPECT_TRUE(contains(output, "Wirklich (ja/nein)? Übernehmen (j)")) << output;
    EXPECT_FALSE(contains(output, "Fehler")) << output;
    EXPECT_EQ(Read(L"a"), "alt\n");
    Answer("j\nja\ne\n");
    EXPECT_EQ(Read(L"a"), "\n");
}

TEST_F(ReviewDialog, AsksBeforeCreatingBlankReferences)
{
    Receive(L"d", "", "\n", 3);
    LbOs::RemoveFile(m_folder.GetPathOf(L"d"));

    const std::string output = Answer("w\nw\nj\nnein\ne\n");
    EXPECT_TRUE(contains(output, "Referenzen wären leer: d")) << output;
    EXPECT_TRUE(contains(output, "Wirklich (ja/nein)? ")) << output;
    EXPECT_TRUE(IsOpen(L"d"));
    Answer("w\nw\nj\nja\ne\n");
    EXPECT_EQ(Read(L"d"), "\n");
}

TEST_F(ReviewDialog, ShowsAChangeOnce)
{
    const std::string output = Answer("e\n");

    EXPECT_EQ(output.find("+neu"), output.rfind("+neu")) << output;
}

TEST_F(ReviewDialog, DoesNotAskIfBlankReferencesAreAllowed)
{
    Receive(L"a", "alt\n", "", 3);
    Receive(L"b", "alt\n", "", 3);

    EXPECT_FALSE(contains(Answer("j\ne\n", true), "Wirklich"));
    EXPECT_EQ(Read(L"a"), "");
}

TEST_F(ReviewDialog, AsksAgainIfAChangeMustNotBeAccepted)
{
    Receive(L"a", "alt\n", "neu\n", 2);

    EXPECT_FALSE(contains(Answer("j\ne\n"), "[2/2]"));
    EXPECT_EQ(Read(L"a") + Read(L"b"), "alt\nalt\n");
    EXPECT_TRUE(IsOpen(L"a"));
}

TEST_F(ReviewDialog, SkipsFilesThatAnEarlierAnswerRejected)
{
    Receive(L"a", "eins\nx\n", "EINS\nx\n", 3);
    Receive(L"b", "eins\nzwei\nx\n", "EINS\nZWEI\nx\n", 3);
    Receive(L"c", "zwei\nx\n", "ZWEI\nx\n", 3);

    const std::string output = Answer("v\nj\n");

    EXPECT_FALSE(IsOpen(L"a") || IsOpen(L"b") || IsOpen(L"c"));
    EXPECT_EQ(Read(L"a") + Read(L"c"), "eins\nx\nZWEI\nx\n");
    EXPECT_EQ(Read(L"b"), "eins\nzwei\nx\n");
    EXPECT_TRUE(contains(output, "Warnung: ohne Entscheidung mit verworfen: 1 andere Änderung in 1 Datei;")) << output;
}

TEST_F(ReviewDialog, DoesNotWarnOfRejectedFilesWhoseOtherChangesAreDecided)
{
    Receive(L"a", "eins\nx\n", "EINS\nx\n", 3);
    Receive(L"b", "eins\nzwei\nx\n", "EINS\nZWEI\nx\n", 3);
    Receive(L"c", "zwei\nx\n", "ZWEI\nx\n", 3);

    const std::string output = Answer("j\nv\n");

    EXPECT_EQ(Read(L"b"), "EINS\nzwei\nx\n");
    EXPECT_FALSE(IsOpen(L"b"));
    EXPECT_FALSE(contains(output, "Warnung: ")) << output;
}

TEST_F(ReviewDialog, AcceptsBothChangesOfAFile)
{
    Receive(L"a", "eins\nx\n", "EINS\nx\n", 3);
    Receive(L"b", "eins\nzwei\nx\n", "EINS\nZWEI\nx\n", 3);
    Receive(L"c", "zwei\nx\n", "ZWEI\nx\n", 3);

    Answer("j\nj\n");

    EXPECT_EQ(Read(L"b"), "EINS\nZWEI\nx\n");
    EXPECT_FALSE(IsOpen(L"b"));
}

TEST_F(ReviewDialog, DecidesNothingIfAFileHasChangedMeanwhile)
{
    const auto changes = Runner::GroupChanges(Runner::FindReceived(m_folder.GetPath()).references);
    m_folder.WriteFile(L"b", "newer\n");

    EXPECT_TRUE(contains(Answer("j\nv\ne\n", changes), "Entscheidung abgelehnt: Datei "));

    EXPECT_EQ(Read(L"a") + Read(L"b"), "alt\nnewer\n");
    EXPECT_TRUE(IsOpen(L"a") && IsOpen(L"b"));
}

} // namespace
