#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "base/lbcommandline.h"
#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbtemporaryname.h"
#include "base/os/childprocess.h"
#include "testing/lutestsuiterunner/review/changes.h"
#include "tests/lutestsuiterunner/cli/reviewtest.h"
#include "tests/support/places.h"

namespace
{

/// Decisions about files. Some files are large, so that a decision takes long enough to be interrupted.
class RunnerReviewKilled : public RunnerReview
{
protected:
    static constexpr int c_Files = 12;
    static constexpr int c_Early = 3; ///< number of the file after which the process is killed
    static constexpr int c_Late = 8;

    /// How the files differ from their references, and which decision is made.
    struct SKind
    {
        bool isNew;         ///< there are no references
        bool isCauseShared; ///< half of the files also have another change
        const wchar_t* option;
    };

    static std::wstring GetName(int number) { return LbFormat(L"CFall/%03d", number); }

    static std::string GetText(const SKind& kind, int number, const std::string& first, const std::string& second)
    {
        return first + GetBody(number) + (kind.isCauseShared && number % 2 == 0 ? second : "");
    }

    /// The unchanged lines of a file. The files after c_Early and c_Late are large, so that the process is killed while
    /// it handles them.
    static std::string GetBody(int number)
    {
        constexpr int c_Lines = 500;
        std::string body = "x\n";
        for (int line = 0; line < c_Lines && (number == c_Early + 1 || number == c_Late + 1); ++line)
        {
            body += std::string(1'000, 'y') + "\n";
        }
        return body;
    }

    void WriteFiles(const SKind& kind) const
    {
        for (int number = 0; number < c_Files; ++number)
        {
            LbOs::RemoveFile(m_folder.GetPathOf(L"data/" + GetName(number)));
            if (!kind.isNew)
            {
                Write(GetName(number), GetText(kind, number, "alt 1\n", "alt 2\n"));
            }
            const std::string received = GetText(kind, number, "neu 1\n", "neu 2\n");
            Write(GetName(number) + LbReceivedFile::c_Suffix, received);
            Write(GetName(number) + LbReceivedFile::c_RunsSuffix,
                  "3 " + LbEncoding::ToUtf8(LbReceivedFile::GetChecksum(received)) + " " + std::string(32, '0') + "\n");
        }
    }

    /// Decides on the first change in another process. Kills the process when it has handled the file of this number,
    /// or, for -1, when the decision is on the disk. True if the decision was interrupted.
    bool KillAt(const SKind& kind, int number) const
    {
        const std::wstring directory = m_folder.GetPathOf(L"data");
        const std::wstring change = Runner::GroupChanges(Runner::FindReceived(directory).references).front().id;
        LbOs::SChildOptions options;
        options.program = L"" LUTESTSUITE_RUNNER;
        for (const std::wstring& word :
             {options.program, std::wstring(L"review"), directory, std::wstring(kind.option), change})
        {
            options.commandLine += LbCommandLine::Quote(word) + L" ";
        }
        options.isSilent = true;
        const auto process = LbOs::CChildProcess::Start(options);
        while (process->IsRunning() && !HasReached(number))
        {
        }
        process->Terminate();
        return Holds(c_DecisionName);
    }

    bool HasReached(int number) const
    {
        const std::wstring claims = std::wstring(c_DecisionName) + L".files/";
        return number < 0 ? Holds(c_DecisionName)
                          : Holds(claims + L"complete") && !Holds(claims + std::to_wstring(number));
    }

    /// Kills decisions at several places. Expects that all references begin with `first` after the next review.
    void ExpectFinished(const SKind& kind, const std::string& first, const char* summary) const
    {
        // At least one process must be killed between two files, to show that the next review handles the rest. On a
        // busy machine the process may end before it is killed, so the test tries several times.
        constexpr int c_MostKills = 12;
        constexpr int c_Numbers[] = {-1, c_Early, c_Late};
        int interruptedLater = 0;
        for (int kill = 0; kill < 3 || (kill < c_MostKills && interruptedLater == 0); ++kill)
        {
            const int number = c_Numbers[kill % 3];
            WriteFiles(kind);
            const bool isInterrupted = KillAt(kind, number);
            interruptedLater += isInterrupted && number >= 0 ? 1 : 0;
            ExpectLine(Review().output, summary);
            for (int file = 0; file < c_Files; ++file)
            {
                ASSERT_TRUE(Read(GetName(file)) == GetText(kind, file, first, "alt 2\n")) << file;
            }
            EXPECT_FALSE(Holds(c_DecisionName));
            EXPECT_FALSE(LbFileSystem::IsDirectory(m_folder.GetPathOf(L"data/") + Runner::c_ClaimsFolder));
            EXPECT_TRUE(std::ranges::none_of(LbFileSystem::GetFileNames(m_folder.GetPathOf(L"data/CFall")),
                                             LbTemporaryName::IsTemporary));
        }
        EXPECT_GT(interruptedLater, 0);
    }

    static constexpr const wchar_t* c_DecisionName = L"lutestsuite-review.pending";
};

TEST_F(RunnerReviewKilled, IsFinishedByTheNextReviewForPartsOfFiles)
{
    ExpectFinished({false, true, L"--accept"}, "neu 1\n", "Änderungen: 1, Dateien: 6\n");
}

TEST_F(RunnerReviewKilled, IsFinishedByTheNextReviewForWholeFiles)
{
    ExpectFinished({false, false, L"--accept"}, "neu 1\n", "Änderungen: 0, Dateien: 0\n");
}

TEST_F(RunnerReviewKilled, IsFinishedByTheNextReviewForNewReferences)
{
    ExpectFinished({true, false, L"--accept"}, "neu 1\n", "Änderungen: 0, Dateien: 0\n");
}

TEST_F(RunnerReviewKilled, IsFinishedByTheNextReviewForRejectedFiles)
{
    ExpectFinished({false, true, L"--reject"}, "alt 1\n", "Änderungen: 0, Dateien: 0\n");
}

/// The next review finishes a decision that has begun to change references, and undoes one that has not begun.
TEST_F(RunnerReviewKilled, IsAppliedToAllFilesOrNoneIfANewRunFollows)
{
    const SKind kind = {false, false, L"--accept"};
    int interruptedLater = 0;
    for (const int number : {-1, c_Early, c_Late})
    {
        WriteFiles(kind);
        const bool isInterrupted = KillAt(kind, number);
        interruptedLater += isInterrupted && number >= 0 ? 1 : 0;
        for (int file = 0; file < c_Files; ++file)
        {
            Receive(GetName(file), "anders 1\nx\n", 1);
        }

        Review();

        const std::string first = Read(GetName(0));
        EXPECT_TRUE(first == "alt 1\nx\n" || first == "neu 1\nx\n") << first;
        for (int file = 0; file < c_Files; ++file)
        {
            ASSERT_TRUE(Read(GetName(file)) == GetText(kind, file, first.substr(0, 6), "")) << number;
            ASSERT_EQ(Read(GetName(file) + LbReceivedFile::c_Suffix), "anders 1\nx\n");
        }
    }
    EXPECT_GT(interruptedLater, 0);
}

} // namespace
