#include "base/os/modules.h"

#include <string>

#include <gtest/gtest.h>

#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/os/files.h"
#include "tests/support/scopedfolder.h"

namespace
{

const int c_InTheExecutable = 0;

std::wstring getBaseModulePath()
{
    return LbOs::GetModulePathOf(reinterpret_cast<const void*>(&LbFormatArguments));
}

TEST(OsModules, FindsTheModuleOfAnAddress)
{
    EXPECT_EQ(LbOs::GetModulePathOf(&c_InTheExecutable), LbOs::GetExecutablePath());
    const std::wstring path = getBaseModulePath();
    EXPECT_TRUE(LbOs::IsAbsolutePath(path));
    EXPECT_NE(LbPath::GetLastComponent(path).find(L"LbBase"), std::wstring::npos);
    EXPECT_EQ(LbOs::QueryEntry(path), LbOs::EEntry::File);
}

TEST(OsModules, FindsNoModuleForAddressesOutsideModules)
{
    const int onTheStack = 0;
    EXPECT_EQ(LbOs::GetModulePathOf(&onTheStack), L"");
    EXPECT_EQ(LbOs::GetModulePathOf(nullptr), L"");
}

TEST(OsModules, LoadsAModule)
{
    std::wstring reason = L"untouched";
    EXPECT_TRUE(LbOs::LoadModule(getBaseModulePath(), reason));
    EXPECT_EQ(reason, L"untouched");
}

TEST(OsModules, ReportsWhyAModuleIsNotLoaded)
{
    const ScopedFolder folder;
    for (const std::wstring& path : {folder.GetPathOf(L"missing") + LbOs::c_ModuleSuffix,
                                     folder.WriteFile(std::wstring(L"text") + LbOs::c_ModuleSuffix, "no module")})
    {
        std::wstring reason;
        EXPECT_FALSE(LbOs::LoadModule(path, reason));
        ASSERT_FALSE(reason.empty());
        EXPECT_EQ(reason.find_first_of(L"\r\n"), std::wstring::npos);
        EXPECT_EQ(reason.find(L"%1"), std::wstring::npos);
    }
}

} // namespace
