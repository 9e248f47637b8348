#include "base/subtestsearch.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/scopedfolder.h"

namespace
{

/// Searches for names among `m_names`, in its own folder; counts how often the search requests a name.
class SubtestSearch : public testing::Test
{
protected:
    std::optional<std::uint32_t> Find(std::wstring_view name)
    {
        return LbSubtestSearch::Find({typeid(SubtestSearch), m_folder.GetPath(), m_listing,
                                      static_cast<std::uint32_t>(m_names.size()),
                                      [this](std::uint32_t subtest) {
                                          ++m_questions;
                                          return m_names.at(subtest);
                                      },
                                      m_likely},
                                     name);
    }

    std::size_t CountQuestionsFor(std::wstring_view name)
    {
        m_questions = 0;
        Find(name);
        return m_questions;
    }

    /// Searches twice; after that, the search knows that the name is missing.
    void Miss(std::wstring_view name)
    {
        EXPECT_EQ(Find(name), std::nullopt);
        EXPECT_EQ(Find(name), std::nullopt);
    }

    const ScopedFolder m_folder;
    std::shared_ptr<const LbFileListing> m_listing = LbFileListing::Get(m_folder.GetPath());
    std::vector<std::wstring> m_names = {L"a", L"b", L"c"};
    std::optional<std::uint32_t> m_likely;
    std::size_t m_questions = 0;
};

TEST_F(SubtestSearch, RequestsOneNameIfTheIndexIsKnown)
{
    EXPECT_EQ(Find(L"c"), 2U);

    EXPECT_EQ(CountQuestionsFor(L"b"), 1U);
}

TEST_F(SubtestSearch, RequestsOneNameIfTheLikelyIndexIsRight)
{
    m_likely = 2;

    EXPECT_EQ(CountQuestionsFor(L"c"), 1U);
    EXPECT_EQ(Find(L"c"), 2U);
}

TEST_F(SubtestSearch, FindsANameThatIsNotAtTheLikelyIndex)
{
    for (const std::uint32_t likely : {0U, 3U, 0xFFFF'FFFFU})
    {
        m_likely = likely;
        EXPECT_EQ(Find(L"b"), 1U);
    }
}

TEST_F(SubtestSearch, RemembersTheFirstIndexOfEachNameThatItIsGiven)
{
    const auto remember = [this] {
        LbSubtestSearch::Remember(typeid(SubtestSearch), m_folder.GetPath(), static_cast<std::uint32_t>(m_names.size()),
                                  [this](std::uint32_t subtest) -> const std::wstring& { return m_names[subtest]; });
    };
    const auto find = [this](std::wstring_view name) {
        return LbSubtestSearch::FindRemembered(typeid(SubtestSearch), m_folder.GetPath(), name);
    };
    EXPECT_EQ(find(L"a"), std::nullopt);
    m_names = {L"b", L"a", L"a"};
    remember();

    EXPECT_EQ(find(L"a"), 1U);
    EXPECT_EQ(CountQuestionsFor(L"a"), 1U);

    m_names = {L"c", L"c", L"a"};
    remember();

    EXPECT_EQ(find(L"a"), 2U);
    EXPECT_EQ(find(L"b"), std::nullopt);
}

TEST_F(SubtestSearch, RequestsNoNameOnceAllNamesAreKnown)
{
    Miss(L"x");

    EXPECT_EQ(CountQuestionsFor(L"y"), 0U);
    EXPECT_EQ(CountQuestionsFor(L"z"), 0U);
    EXPECT_EQ(Find(L"c"), 2U);
}

TEST_F(SubtestSearch, ReadsAllNamesAgainAfterTheFolderHasChanged)
{
    Miss(L"x");
    m_listing = LbFileListing::Get(m_folder.GetPath());
    m_names = {L"a", L"b", L"x"};

    EXPECT_EQ(Find(L"x"), 2U);
}

TEST_F(SubtestSearch, ReadsAllNamesAgainAfterTheirNumberHasChanged)
{
    Miss(L"x");
    m_names = {L"a", L"x"};

    EXPECT_EQ(Find(L"x"), 1U);
}

TEST_F(SubtestSearch, ReadsAllNamesAgainWithoutAListing)
{
    m_listing.reset();
    Miss(L"x");
    m_names = {L"x", L"b", L"c"};

    EXPECT_EQ(Find(L"x"), 0U);
}

TEST_F(SubtestSearch, DoesNotUseTheNamesOfAnotherListing)
{
    Miss(L"x");
    const auto first = m_listing;
    m_listing = LbFileListing::Get(m_folder.GetPath());
    m_names = {L"a", L"b", L"y"};
    Miss(L"x");
    m_listing = first;
    m_names = {L"a", L"b", L"c"};

    EXPECT_EQ(Find(L"c"), 2U);
}

} // namespace
