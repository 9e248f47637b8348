/// Reads any bytes as a configuration file and as the configuration of archive runs. Checks that the reader either
/// returns complete values or throws a message.
#include <algorithm>

#include "fuzz/fuzzing.h"
#include "testing/lutestsuite/archive/archive.h"
#include "testing/lutestsuite/lutestsuitesetup.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

bool isConfiguration(const std::wstring& path)
{
    LuTestSuiteUtils::SConfigFileData data;
    try
    {
        LuTestSuiteUtils::ReadConfigXML(path, data);
    }
    catch (const std::wstring& message)
    {
        Fuzzing::Check(!message.empty());
        Fuzzing::Check(data.tests.empty() && data.dataDirHistory.empty());
        return false;
    }
    Fuzzing::Check(std::ranges::all_of(data.tests,
                                       [](const std::wstring& test) { return test.find(L':') != std::wstring::npos; }));
    return true;
}

bool isArchiveConfiguration(const std::wstring& path)
{
    static const LuTestSuiteSetup s_setup;
    try
    {
        for (const LuTestSuite::SArchiveRun& run : LuTestSuite::ReadArchiveRuns(path, s_setup))
        {
            Fuzzing::Check(run.config == L"Debug" || run.config == L"Release");
            Fuzzing::Check(run.platform == L"Win32" || run.platform == L"x64");
            Fuzzing::Check(!LuTestSuite::GetArchiveRunArguments(run, {L"a.xml", L"a.html"}).empty());
        }
        return true;
    }
    catch (const std::wstring& message)
    {
        Fuzzing::Check(!message.empty());
        return false;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Fuzzing::CInputFile s_file("configuration.xml");
    s_file.Write(Fuzzing::GetText(data, size));
    // The two formats have different root elements.
    Fuzzing::Check(!isConfiguration(s_file.GetPath()) || !isArchiveConfiguration(s_file.GetPath()));
    return 0;
}
