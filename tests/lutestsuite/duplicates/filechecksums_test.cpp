#include "testing/lutestsuite/duplicates/filechecksums.h"

#include <optional>
#include <string>
#include <system_error>
#include <thread>

#include <gtest/gtest.h>

#include "base/lbevent.h"
#include "tests/support/os/testaids.h"
#include "tests/support/scopedfolder.h"

namespace
{

/// Starts threads until no further one can be started; they occupy the stacks of ended threads. False if threads are
/// not limited.
bool useUpThreads()
{
    constexpr int c_Many = 1000;
    static LbEvent& s_never = *new LbEvent;
    try
    {
        for (int count = 0; count < c_Many; ++count)
        {
            std::thread([] { s_never.Wait(); }).detach();
        }
        return false;
    }
    catch (const std::system_error&)
    {
        return true;
    }
}

/// The file fits into memory, but the stack of a reading thread does not.
TEST(FileChecksums, NeedNoThread)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers need unlimited address space";
#endif
    constexpr std::size_t c_Limit = 1024 * 1024;
    constexpr int c_HasThreads = 2;
    const ScopedFolder folder;
    std::string content(c_Limit / 2, 'x');
    content.back() = 'y';
    const std::wstring path = folder.WriteFile(L"Datei", content);
    const LuMurmurHash3::S128 expected =
        LuMurmurHash3::GetOptimizedChecksum128(content.data(), static_cast<std::uint32_t>(content.size()), 0);

    const std::optional<int> status = LbOs::RunInFork([&] {
        if (!LbOs::LimitMemory(c_Limit) || !useUpThreads())
        {
            return c_HasThreads;
        }
        LuTestSuite::CFileChecksums checksums;
        return checksums.Get(path) == expected && checksums.Get(path) == expected ? 0 : 1;
    });
    if (!status || status == c_HasThreads)
    {
        GTEST_SKIP() << "the process has other threads here";
    }
    EXPECT_EQ(status, 0);
}

} // namespace
