#include "testing/lutestsuite/run/children/childend.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "base/lbpath.h"

namespace
{

constexpr bool c_IsWindows = LbPath::c_Separator == L'\\';
constexpr std::int64_t c_Abort = c_IsWindows ? 3 : -6;
constexpr std::int64_t c_AccessViolation = c_IsWindows ? std::int64_t{0xC0000005} : -11;
constexpr const wchar_t* c_LackOfMemory = L", wohl aus Speichermangel";

std::wstring FindReason(std::optional<std::int64_t> exitStatus, std::vector<std::wstring> lastLines)
{
    LuTestSuiteRun::SCaseEnd end;
    end.exitStatus = exitStatus;
    end.lastLines = std::move(lastLines);
    LuTestSuiteRun::FindReason(end);
    return end.reason;
}

const std::vector<std::wstring> c_Terminated = {L"terminate called after throwing an instance of 'std::bad_alloc'",
                                                L"  what():  std::bad_alloc"};

TEST(ChildEnd, IsALackOfMemoryAfterAnUncaughtBadAlloc)
{
    EXPECT_TRUE(FindReason(c_Abort, c_Terminated).ends_with(c_LackOfMemory));
}

TEST(ChildEnd, IsNoLackOfMemoryWithoutAnUncaughtBadAlloc)
{
    EXPECT_EQ(FindReason(c_Abort, {L"what(): Speicher"}).find(c_LackOfMemory), std::wstring::npos);
}

TEST(ChildEnd, IsNoLackOfMemoryUnlessTheProcessAborted)
{
    for (const std::int64_t status : {std::int64_t{0}, std::int64_t{1}, c_AccessViolation})
    {
        EXPECT_EQ(FindReason(status, c_Terminated).find(c_LackOfMemory), std::wstring::npos) << status;
    }
}

TEST(ChildEnd, WithUnknownStatusIsNoLackOfMemory)
{
    EXPECT_EQ(FindReason(std::nullopt, c_Terminated), L"Der Prozess des Testfalls endete mit unbekanntem Status");
}

} // namespace
