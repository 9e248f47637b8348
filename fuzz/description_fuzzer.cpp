/// Reads any bytes as a description file. Checks that each parameter has a known name and the type that belongs to it,
/// and that disabled cases are omitted.
#include "base/luunittest.h"
#include "fuzz/fuzzing.h"
#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

class CFuzzed : public LuUnitTest
{
    LB_RTTI(CFuzzed)

public:
    void InitSubtests() override
    {
        // Short names, so that no expression takes long.
        for (const wchar_t* const name : {L"a", L"ab", L"a.txt", L"ä旧"})
        {
            AddSubtest(name, [] {});
        }
    }
};

LB_RTTI_CLASS(CFuzzed, LuUnitTest)

void checkParameter(const std::wstring& name, const LbVariant& value)
{
    if (name == L"Enable" || name == L"ReportMemLeak")
    {
        Fuzzing::Check(value.IsNull() || value == LbVariant(true) || value == LbVariant(false));
    }
    else if (name == L"TimeOutSec" || name == L"MessageReportMax")
    {
        Fuzzing::Check(value == LbVariant(value.ToUInt32().value()));
    }
    else
    {
        Fuzzing::Check(name == L"Parallel" || name == L"External" || name == L"Isolated");
        Fuzzing::Check(value == LbVariant(true) || value == LbVariant(false));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Fuzzing::CInputFile s_file("CFuzzed/#ExtraInfo.xml");
    LuTestSuiteOut::SetConsoleOut(false);
    s_file.Write(Fuzzing::GetText(data, size));
    for (const LuTestSuite::SUnitTest& test : LuTestSuiteUtils::ScanDirectoryForUnitTests(s_file.GetFolder(), true))
    {
        Fuzzing::Check(test.className == L"CFuzzed");
        for (const LuTestSuite::STestCase& testCase : test.cases)
        {
            for (const auto& [name, value] : testCase.parameters)
            {
                checkParameter(name, value);
                Fuzzing::Check(name != L"Enable" || value != LbVariant(false));
            }
        }
    }
    return 0;
}
