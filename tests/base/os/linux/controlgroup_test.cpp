#include "base/os/linux/controlgroup.h"

#include <cstdint>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "tests/support/scopedfolder.h"

namespace
{

class OsControlGroup : public testing::Test
{
protected:
    std::optional<std::uint64_t> ReadLimit(const std::string& membership) const
    {
        std::string root = LbEncoding::ToNative(m_folder.GetPath());
        root.pop_back();
        return LbOs::Linux::ReadGroupProcessLimit(membership, root);
    }

    std::optional<std::uint64_t> ReadFree(const std::string& membership) const
    {
        std::string root = LbEncoding::ToNative(m_folder.GetPath());
        root.pop_back();
        return LbOs::Linux::ReadFreeGroupProcesses(membership, root);
    }

    const ScopedFolder m_folder;
};

TEST_F(OsControlGroup, HasTheLimitOfItsFile)
{
    m_folder.WriteFile(L"a/b/pids.max", "77\n");

    EXPECT_EQ(ReadLimit("0::/a/b\n"), 77U);
    EXPECT_EQ(ReadLimit("5:pids:/x\n1:name=systemd:/y\n0::/a/b"), 77U);
}

TEST_F(OsControlGroup, HasTheSmallestLimitOfItselfAndItsParents)
{
    m_folder.WriteFile(L"pids.max", "300\n");
    m_folder.WriteFile(L"a/pids.max", "20\n");
    m_folder.WriteFile(L"a/b/pids.max", "100\n");

    EXPECT_EQ(ReadLimit("0::/a/b\n"), 20U);
    EXPECT_EQ(ReadLimit("0::/a/b/missing\n"), 20U);
    EXPECT_EQ(ReadLimit("0::/\n"), 300U);
}

TEST_F(OsControlGroup, HasTheFewestFreeProcessesOfItselfAndItsParents)
{
    m_folder.WriteFile(L"a/pids.max", "300\n");
    m_folder.WriteFile(L"a/pids.current", "290\n");
    m_folder.WriteFile(L"a/b/pids.max", "100\n");
    m_folder.WriteFile(L"a/b/pids.current", "20\n");

    EXPECT_EQ(ReadFree("0::/a/b\n"), 10U);
    m_folder.WriteFile(L"a/pids.current", "301\n");
    EXPECT_EQ(ReadFree("0::/a/b\n"), 0U);
    m_folder.WriteFile(L"a/pids.max", "max\n");
    EXPECT_EQ(ReadFree("0::/a/b\n"), 80U);
    EXPECT_EQ(ReadFree("0::/other\n"), std::nullopt);
}

TEST_F(OsControlGroup, HasNoLimitIfNoFileContainsALimit)
{
    m_folder.WriteFile(L"a/pids.max", "max\n");

    EXPECT_EQ(ReadLimit("0::/a\n"), std::nullopt);
    EXPECT_EQ(ReadLimit("0::/other\n"), std::nullopt);
}

TEST_F(OsControlGroup, HasNoLimitInVersion1)
{
    m_folder.WriteFile(L"pids.max", "77\n");

    EXPECT_EQ(ReadLimit("5:pids:/\n1:name=systemd:/\n"), std::nullopt);
    EXPECT_EQ(ReadLimit(""), std::nullopt);
}

} // namespace
