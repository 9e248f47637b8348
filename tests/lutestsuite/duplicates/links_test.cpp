// The links of a directory, and the places that they lead through.

#include "testing/lutestsuite/duplicates/links.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/lbpath.h"
#include "base/os/files.h"
#include "tests/support/os/testaids.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuTestSuite::FindLinks;
using LuTestSuite::SLink;
using LuTestSuite::SLinks;
using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class Links : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!LbOs::MakeLink(m_folder.GetPathOf(L"Probe"), L"1"))
        {
            GTEST_SKIP() << "links cannot be made here";
        }
        LbOs::RemoveFile(m_folder.GetPathOf(L"Probe"));
    }

    void Link(const std::wstring& name, const std::wstring& target) const
    {
        ASSERT_TRUE(LbOs::MakeLink(m_folder.GetPathOf(name), target));
    }

    std::wstring GetPlaceOf(const std::wstring& name) const
    {
        return LbPath::WithSeparator(LbOs::GetCanonicalPath(m_folder.GetPath())) + name;
    }

    /// The chain of the link with this name; empty if none was found.
    std::vector<std::wstring> FindChain(const std::wstring& name) const
    {
        for (const SLink& link : FindLinks(m_folder.GetPath()).links)
        {
            if (link.place == GetPlaceOf(name))
            {
                return link.chain;
            }
        }
        return {};
    }

    const ScopedFolder m_folder;
};

} // namespace

TEST_F(Links, LeadToTheirFile)
{
    const std::wstring target = m_folder.WriteFile(L"Ziel.txt", "");
    Link(L"a.txt", target);

    EXPECT_THAT(FindChain(L"a.txt"), ElementsAre(GetPlaceOf(L"Ziel.txt")));
}

TEST_F(Links, LeadThroughOtherLinksToTheirFile)
{
    Link(L"b.txt", m_folder.WriteFile(L"Ziel.txt", ""));
    Link(L"a.txt", m_folder.GetPathOf(L"b.txt"));

    EXPECT_THAT(FindChain(L"a.txt"), ElementsAre(GetPlaceOf(L"b.txt"), GetPlaceOf(L"Ziel.txt")));
}

TEST_F(Links, WithoutATargetHaveAnEmptyChain)
{
    Link(L"a.txt", m_folder.GetPathOf(L"fehlt.txt"));
    Link(L"b.txt", m_folder.GetPathOf(std::wstring(L"fehlt") + LbPath::c_Separator + L"Ziel.txt"));

    const SLinks links = FindLinks(m_folder.GetPath());

    EXPECT_THAT(links.links, UnorderedElementsAre(Field(&SLink::place, GetPlaceOf(L"a.txt")),
                                                  Field(&SLink::place, GetPlaceOf(L"b.txt"))));
    EXPECT_THAT(links.links, Each(Field(&SLink::chain, IsEmpty())));
    EXPECT_THAT(links.unreadPlaces, IsEmpty());
}

TEST_F(Links, ToABrokenLinkEndAtThatLink)
{
    Link(L"b.txt", m_folder.GetPathOf(L"fehlt.txt"));
    Link(L"a.txt", m_folder.GetPathOf(L"b.txt"));

    EXPECT_THAT(FindChain(L"a.txt"), ElementsAre(GetPlaceOf(L"b.txt")));
}
