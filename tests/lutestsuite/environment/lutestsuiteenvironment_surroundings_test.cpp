// The environment's use of temporary files, container file and traces.

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/inoncopyable.h"
#include "base/ioccontainer.h"
#include "base/lbdiagnostics.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lustream.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "tests/support/scopedenvironment.h"
#include "tests/support/scopedfolder.h"

namespace
{

using testing::ElementsAre;
using testing::StartsWith;

/// Records traces during a scope.
class CTraces : public INonCopyable
{
public:
    CTraces() : m_former(LbDiagnostics::SetListener([this](const std::wstring& text) { m_lines.push_back(text); })) {}
    ~CTraces() { LbDiagnostics::SetListener(std::move(m_former)); }

    const std::vector<std::wstring>& GetLines() const { return m_lines; }

private:
    std::vector<std::wstring> m_lines;
    std::function<void(const std::wstring&)> m_former;
};

constexpr const wchar_t* c_WarmUpTrace = L"LuTestSuiteEnvironment: static data allocated";

TEST(PreallocateStaticData, SendsATrace)
{
    const CTraces traces;

    LuTestSuiteEnvironment::PreallocateStaticData();

    EXPECT_THAT(traces.GetLines(), ElementsAre(c_WarmUpTrace));
}

TEST(PreallocateStaticData, TracesAFileThatCannotBeCreated)
{
    const ScopedFolder folder;
    const std::wstring missing = folder.GetPathOf(L"fehlt");
    // Each platform reads one of the two variables.
    const ScopedEnvironmentVariable temporaryOnLinux(L"TMPDIR", missing);
    const ScopedEnvironmentVariable temporaryOnWindows(L"TMP", missing);
    const CTraces traces;

    EXPECT_NO_THROW(LuTestSuiteEnvironment::PreallocateStaticData());

    EXPECT_THAT(traces.GetLines(), ElementsAre(c_WarmUpTrace, StartsWith(L"LuTestSuiteEnvironment: Datei ")));
}

/// Writes the container file to a folder beside the executable's folder. The destructor removes that folder.
class CContainerPlace : public INonCopyable
{
public:
    ~CContainerPlace() { LbFileSystem::RemoveTree(getSources()); }

    bool IsEmpty() const { return !LbFileSystem::Exists(getSources()); }

    void Write(const std::string& bytes) const
    {
        const std::wstring folder = getSources() + LbPath::ToNative(L"/Development/LuTestSuite/");
        ASSERT_TRUE(LbFileSystem::AssertDirectory(folder));
        LuStreamWriteBinaryFile file(folder + L"LuTestSuite.xml");
        file.Write(bytes.data(), bytes.size());
        file.Close();
    }

private:
    static std::wstring getSources()
    {
        return LbPath::GetParent(LbPath::WithoutSeparator(LbFileSystem::GetDirectory(LbFileSystem::eDK_Executable))) +
               L"Sources";
    }
};

/// Returns whether modules find a container, and whether it has the service "Uhr".
std::pair<bool, bool> findContainerAndClock()
{
    const LuTestSuiteEnvironment environment;
    const IOC::CContainer* const container = IOC::CContainer::GetCurrent();
    return {container != nullptr, container != nullptr && container->HasService(L"Uhr")};
}

// A single test, because all processes of this program share the path of the file.
TEST(LuTestSuiteEnvironment, ProvidesTheContainerOfItsFileOrADefaultContainer)
{
    const CContainerPlace place;
    ASSERT_TRUE(place.IsEmpty());
    EXPECT_EQ(findContainerAndClock(), std::pair(true, false));

    place.Write("<Container><Service name='Uhr' class='CUhr'/></Container>");
    EXPECT_EQ(findContainerAndClock(), std::pair(true, true));
    EXPECT_EQ(IOC::CContainer::GetCurrent(), nullptr) << "the container has ended with its environment";

    for (const char* const broken : {"<Container>", ""})
    {
        place.Write(broken);
        EXPECT_EQ(findContainerAndClock(), std::pair(true, false)) << broken;
    }
}

} // namespace
