#include "base/os/sharedmemory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include <gtest/gtest.h>

#include "base/lbuniqueid.h"
#include "tests/support/os/testaids.h"

namespace
{

using LbOs::CSharedMemory;
using LbOs::EMemoryAccess;
using LbOs::MapSharedMemory;

constexpr std::size_t c_Size = 100000;

class OsSharedMemory : public testing::Test
{
protected:
    std::wstring m_name = LbUniqueId::Generate();
    std::unique_ptr<CSharedMemory> m_memory = CSharedMemory::Create(m_name, c_Size);
};

TEST_F(OsSharedMemory, IsZeroAtFirst)
{
    const auto view = MapSharedMemory(m_name, c_Size, EMemoryAccess::Read);
    ASSERT_NE(view, nullptr);

    const char* const bytes = static_cast<const char*>(view.get());
    EXPECT_EQ(std::count(bytes, bytes + c_Size, '\0'), static_cast<std::ptrdiff_t>(c_Size));
}

TEST_F(OsSharedMemory, IsSharedByAllViewsMappedByName)
{
    const auto written = MapSharedMemory(m_name, c_Size, EMemoryAccess::Write);
    const auto read = MapSharedMemory(m_name, c_Size, EMemoryAccess::Read);
    ASSERT_TRUE(written && read);
    ASSERT_NE(written, read);

    std::memcpy(static_cast<char*>(written.get()) + c_Size - 5, "Text", 5);

    EXPECT_STREQ(static_cast<const char*>(read.get()) + c_Size - 5, "Text");
}

TEST_F(OsSharedMemory, IsNotCreatedTwice)
{
    EXPECT_EQ(CSharedMemory::Create(m_name, c_Size), nullptr);
    EXPECT_NE(MapSharedMemory(m_name, c_Size, EMemoryAccess::Read), nullptr);
}

TEST_F(OsSharedMemory, ReportsWhyItCannotBeCreated)
{
    constexpr std::size_t c_TooMuch = ~std::size_t{0} / 4;
    std::wstring exists;
    std::wstring isTooLarge;

    EXPECT_EQ(CSharedMemory::Create(m_name, c_Size, &exists), nullptr);
    EXPECT_EQ(CSharedMemory::Create(m_name + L"-a", c_TooMuch, &isTooLarge), nullptr);

    EXPECT_NE(exists, L"");
    EXPECT_NE(isTooLarge, L"");
    EXPECT_NE(exists, isTooLarge);
}

TEST_F(OsSharedMemory, IsAccessibleOnlyToItsUser)
{
    EXPECT_TRUE(LbOs::IsForOwnUserOnly(m_name));
    EXPECT_FALSE(LbOs::IsForOwnUserOnly(m_name + L"-a"));
}

TEST_F(OsSharedMemory, IsViewedInFullByItsName)
{
    std::memset(m_memory->Map(EMemoryAccess::Write).get(), 1, c_Size);
    const LbOs::CSharedView view(m_name);

    ASSERT_GE(view.GetBytes().size(), c_Size);
    EXPECT_EQ(view.GetBytes()[c_Size - 1], std::byte{1});
    EXPECT_TRUE(LbOs::CSharedView(m_name + L"-a").GetBytes().empty());
}

TEST_F(OsSharedMemory, IsNotMappedIfItBelongsToAnotherUser)
{
    const std::wstring name = m_name + L"-other";
    const std::shared_ptr<void> memory = LbOs::MakeMemoryOfAnotherUser(name, c_Size);
    if (!memory)
    {
        GTEST_SKIP() << "this user cannot create objects of another user";
    }

    EXPECT_TRUE(LbOs::CSharedView(name).GetBytes().empty());
    EXPECT_EQ(MapSharedMemory(name, c_Size, EMemoryAccess::Read), nullptr);
}

TEST_F(OsSharedMemory, RemovesItsNameOnDestruction)
{
    m_memory.reset();

    EXPECT_EQ(MapSharedMemory(m_name, c_Size, EMemoryAccess::Read), nullptr);
    EXPECT_NE(CSharedMemory::Create(m_name, c_Size), nullptr);
}

TEST_F(OsSharedMemory, StaysMappedAfterItsNameIsRemoved)
{
    const auto view = MapSharedMemory(m_name, c_Size, EMemoryAccess::Write);
    ASSERT_NE(view, nullptr);
    m_memory.reset();

    std::memset(view.get(), 1, c_Size);
    EXPECT_EQ(static_cast<const char*>(view.get())[c_Size - 1], 1);
}

TEST_F(OsSharedMemory, HasTheSameContentInItsOwnAndInNamedViews)
{
    const auto written = m_memory->Map(EMemoryAccess::Write);
    const auto read = m_memory->Map(EMemoryAccess::Read);
    const auto named = MapSharedMemory(m_name, c_Size, EMemoryAccess::Read);
    ASSERT_TRUE(written && read && named);

    std::memcpy(written.get(), "Text", 5);

    EXPECT_STREQ(static_cast<const char*>(read.get()), "Text");
    EXPECT_STREQ(static_cast<const char*>(named.get()), "Text");
}

TEST_F(OsSharedMemory, ReportsWhetherOthersHaveRemovedItsName)
{
    EXPECT_TRUE(m_memory->IsNamed());

    // Such a path exists on Linux only.
    std::error_code error;
    const std::filesystem::path path(L"/dev/shm/LuTestSuite-" + m_name);
    const bool isRemoved = std::filesystem::remove(path, error);

    EXPECT_EQ(m_memory->IsNamed(), !isRemoved);
    EXPECT_NE(m_memory->Map(EMemoryAccess::Write), nullptr);
    const auto other = CSharedMemory::Create(m_name, c_Size);
    EXPECT_EQ(other != nullptr, isRemoved);
    EXPECT_EQ(m_memory->IsNamed(), !isRemoved);
}

TEST_F(OsSharedMemory, IsNotMappedBeyondItsEnd)
{
    constexpr std::size_t c_Pages = 65536;
    EXPECT_EQ(MapSharedMemory(m_name, c_Size + c_Pages, EMemoryAccess::Write), nullptr);
}

TEST_F(OsSharedMemory, CannotBeTruncatedByOthers)
{
    const auto view = MapSharedMemory(m_name, c_Size, EMemoryAccess::Read);
    ASSERT_NE(view, nullptr);

    // Only Linux has such a path. On Windows, shared memory cannot be truncated.
    std::error_code error;
    std::filesystem::resize_file(std::filesystem::path(L"/dev/shm/LuTestSuite-" + m_name), 0, error);

    EXPECT_TRUE(error);
    EXPECT_EQ(static_cast<const char*>(view.get())[c_Size - 1], '\0');
}

TEST_F(OsSharedMemory, RemainsUsableWhenAllFilesAreClosed)
{
    const std::optional<int> status = LbOs::RunInFork([] {
        const std::wstring name = LbUniqueId::Generate();
        const auto memory = CSharedMemory::Create(name, c_Size);
        constexpr std::intptr_t c_Files = 256;
        for (std::intptr_t file = 0; file < c_Files; ++file)
        {
            LbOs::CloseForOthers(file);
        }
        return memory && MapSharedMemory(name, c_Size, EMemoryAccess::Write) ? 0 : 1;
    });

    if (!status)
    {
        GTEST_SKIP() << "processes do not fork";
    }
    EXPECT_EQ(status, 0);
}

TEST_F(OsSharedMemory, AcceptsOnlyPlainNames)
{
    for (const wchar_t* name : {L"", L"../a", L"a/b", L"a\\b", L"ä", L".", L"a b"})
    {
        EXPECT_EQ(CSharedMemory::Create(name, c_Size), nullptr);
        EXPECT_EQ(MapSharedMemory(name, c_Size, EMemoryAccess::Read), nullptr);
    }
}

} // namespace
