#include <gtest/gtest.h>

#include "base/lbcommandline.h"
#include "base/lbencoding.h"
#include "base/os/files.h"
#include "testing/lutestsuite/archive/archive.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "tests/support/scopedfolder.h"

namespace
{

TEST(ArchiveSelection, IsTakenFromTheCommandLine)
{
    const ScopedFolder folder;
    const std::wstring file = folder.WriteFile(
        L"a.xml", "<ArchiveRun><Run><Config>Release</Config><Platform>x64</Platform></Run></ArchiveRun>");
    LuTestSuiteSetup setup;
    setup.includes = {L"a b", L"c"};
    setup.excludes = {L"\\.txt$"};
    setup.includeConfig = L"Auswahl.xml";
    setup.noRegex = true;

    const std::wstring arguments =
        LuTestSuite::GetArchiveRunArguments(LuTestSuite::ReadArchiveRuns(file, setup).at(0), {});

    EXPECT_TRUE(arguments.ends_with(L" -i \"a b\" -i \"c\" -e \"\\.txt$\" --include-config " +
                                    LbCommandLine::Quote(LbOs::GetFullPath(L"Auswahl.xml")) + L" --no-regex"))
        << LbEncoding::ToUtf8(arguments);
}

} // namespace
