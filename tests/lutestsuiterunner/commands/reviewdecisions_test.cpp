#include "testing/lutestsuiterunner/commands/reviewdecisions.h"

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/lbreceivedfile.h"
#include "testing/lutestsuiterunner/review/changes.h"
#include "tests/support/scopedfolder.h"

namespace
{

using Runner::EDecision;
using Runner::SChange;

/// How often each line is in a text.
using LineCounts = std::map<std::string, int>;

void count(LineCounts& counts, const std::vector<std::string_view>& lines, int number)
{
    for (const std::string_view line : lines)
    {
        int& of = counts[std::string(line)];
        of += number;
        if (of == 0)
        {
            counts.erase(std::string(line));
        }
    }
}

LineCounts countLines(const std::string& text)
{
    LineCounts counts;
    count(counts, Runner::SplitLines(text, false), 1);
    return counts;
}

struct STexts
{
    std::string expected;
    std::string received;
};

/// Folders of a few files with many equal lines, changed by a few random causes.
class CRandomFolders
{
public:
    std::vector<STexts> Make()
    {
        std::vector<int> causes(2 + m_random() % 3);
        std::ranges::generate(causes, [this] { return static_cast<int>(m_random() % 5); });
        const std::string from = pick();
        const std::string to = pick();
        std::vector<STexts> folder(2 + m_random() % 5);
        for (STexts& texts : folder)
        {
            std::vector<std::string> lines(2 + m_random() % 8);
            std::ranges::generate(lines, [this] { return pick(); });
            texts.expected = join(lines);
            for (const int cause : causes)
            {
                change(lines, m_random() % 3 == 0 ? -1 : cause, from, to);
            }
            texts.received = join(lines) + (m_random() % 4 == 0 ? "\n" : "");
        }
        return folder;
    }

    std::size_t Choose(std::size_t count) { return m_random() % count; }

    void Shuffle(std::vector<SChange>& changes)
    {
        for (std::size_t left = changes.size(); left > 1; --left)
        {
            std::swap(changes[left - 1], changes[Choose(left)]);
        }
    }

private:
    std::string pick()
    {
        static constexpr const char* c_Lines[] = {"a",   "b",     "",   "{",      "}",      "x 1",
                                                  "x 2", "sum 3", "ok", "time 5", "time 5", "}"};
        return c_Lines[m_random() % std::size(c_Lines)];
    }

    void change(std::vector<std::string>& lines, int cause, const std::string& from, const std::string& to)
    {
        const auto place = lines.begin() + static_cast<std::ptrdiff_t>(m_random() % lines.size());
        if (cause == 0)
        {
            std::ranges::replace(lines, from, to);
        }
        else if (cause == 1)
        {
            std::ranges::replace(lines, "time 5", "time 5 ms");
        }
        else if (cause == 2)
        {
            lines.insert(place, to);
        }
        else if (cause == 3)
        {
            lines.insert(place, std::string(*place));
        }
        else if (cause == 4 && lines.size() > 1)
        {
            lines.erase(place);
        }
    }

    static std::string join(const std::vector<std::string>& lines)
    {
        std::string text;
        for (const std::string& line : lines)
        {
            text += (&line == lines.data() ? "" : "\n") + line;
        }
        return text;
    }

    std::mt19937 m_random{1449};
};

class ReviewDecisions : public testing::Test
{
protected:
    std::vector<SChange> Write(const std::vector<STexts>& folder)
    {
        m_texts.clear();
        std::vector<std::wstring> references;
        for (const STexts& texts : folder)
        {
            const std::wstring name = std::to_wstring(references.size());
            const std::wstring reference = m_folder.WriteFile(name, texts.expected);
            if (texts.expected != texts.received)
            {
                m_folder.WriteFile(name + LbReceivedFile::c_Suffix, texts.received);
            }
            references.push_back(reference);
            m_texts[reference] = texts;
        }
        std::erase_if(references, [this](const std::wstring& reference) {
            return m_texts[reference].expected == m_texts[reference].received;
        });
        return Runner::GroupChanges(references);
    }

    /// Splits the changes, so that each contains one part of one file.
    std::vector<SChange> Split(const std::vector<SChange>& changes) const
    {
        std::vector<SChange> single;
        for (const SChange& change : changes)
        {
            if (change.parts.empty())
            {
                single.push_back(change);
                continue;
            }
            for (const Runner::SReceivedFile& file : change.files)
            {
                const STexts& texts = m_texts.at(file.reference);
                for (const Runner::SPart& part : Runner::FindParts(texts.expected, texts.received))
                {
                    if (Runner::IsNamed(part, change.parts))
                    {
                        single.push_back(change);
                        single.back().files = {file};
                        single.back().parts = {part.checksum};
                    }
                }
            }
        }
        return single;
    }

    /// Accepts all changes except `leftOut` in one call.
    void Accept(const std::vector<SChange>& changes, const SChange* leftOut) const
    {
        Runner::CReviewDecisions decisions(m_folder.GetPath(), {});
        std::wstring refusal;
        testing::internal::CaptureStdout();
        try
        {
            for (const SChange& change : changes)
            {
                if (&change != leftOut)
                {
                    decisions.Carry(EDecision::Accept, change);
                }
            }
        }
        catch (const std::wstring& reason)
        {
            refusal = reason;
        }
        testing::internal::GetCapturedStdout();
        EXPECT_EQ(refusal, L"");
    }

    /// How often each line is in a reference after all changes except `leftOut` have been accepted.
    LineCounts CountWithout(const SChange& leftOut, const std::wstring& reference)
    {
        const auto& [expected, received] = m_texts[reference];
        LineCounts counts = countLines(received);
        const bool isIn = std::ranges::any_of(
            leftOut.files, [&reference](const Runner::SReceivedFile& file) { return file.reference == reference; });
        if (!isIn)
        {
            return counts;
        }
        if (leftOut.parts.empty())
        {
            return countLines(expected);
        }
        for (const Runner::SPart& part : Runner::FindParts(expected, received))
        {
            for (const Runner::SHunk& hunk : part.hunks)
            {
                if (Runner::IsNamed(part, leftOut.parts))
                {
                    count(counts, hunk.added, -1);
                    count(counts, hunk.removed, 1);
                }
            }
        }
        return counts;
    }

    ScopedFolder m_folder;
    std::map<std::wstring, STexts> m_texts; ///< keys: paths of the references
};

TEST_F(ReviewDecisions, MakesTheOutputTheReferenceIfAllPartsAreAccepted)
{
    CRandomFolders folders;
    for (int round = 0; round < 100; ++round)
    {
        std::vector<SChange> changes = Split(Write(folders.Make()));
        folders.Shuffle(changes);

        Accept(changes, nullptr);

        for (const auto& [reference, texts] : m_texts)
        {
            EXPECT_EQ(LbFileSystem::ReadFile8Bit(reference), texts.received) << "round " << round << "\n"
                                                                             << texts.expected;
            EXPECT_FALSE(LbFileSystem::IsFile(reference + LbReceivedFile::c_Suffix)) << "round " << round;
        }
    }
}

TEST_F(ReviewDecisions, AppliesAllOtherChangesIfOneIsLeftOut)
{
    CRandomFolders folders;
    for (int round = 0; round < 100; ++round)
    {
        std::vector<SChange> changes = Split(Write(folders.Make()));
        if (changes.empty())
        {
            continue;
        }
        folders.Shuffle(changes);
        const SChange& leftOut = changes[folders.Choose(changes.size())];

        Accept(changes, &leftOut);

        for (const auto& [reference, texts] : m_texts)
        {
            EXPECT_EQ(countLines(LbFileSystem::ReadFile8Bit(reference)), CountWithout(leftOut, reference))
                << "round " << round << "\n"
                << texts.expected << "\n->\n"
                << texts.received;
            LbOs::RemoveFile(reference + LbReceivedFile::c_Suffix);
        }
    }
}

/// After the first decision, the reference and the output differ in other parts than before.
TEST_F(ReviewDecisions, FindsPartsAfterAnEarlierDecision)
{
    const STexts texts = {"x 1\nx 2\n}\n\ntime 5\nb", "x 1\nx 2\n}\ntime 5\ntime 5\nb\n"};
    for (const bool isReversed : {false, true})
    {
        const std::vector<SChange> whole = Write({texts});
        ASSERT_EQ(whole.size(), 1U);
        std::vector<SChange> changes;
        for (const Runner::SPart& part : Runner::FindParts(texts.expected, texts.received))
        {
            changes.push_back(whole.front());
            changes.back().parts = {part.checksum};
        }
        ASSERT_GT(changes.size(), 1U);
        if (isReversed)
        {
            std::ranges::reverse(changes);
        }

        Accept(changes, nullptr);

        EXPECT_EQ(LbFileSystem::ReadFile8Bit(m_folder.GetPathOf(L"0")), texts.received);
    }
}

} // namespace
