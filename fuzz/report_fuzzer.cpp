/// Reads any bytes as an XML report. Checks that the reader refuses them or returns a valid record.
#include <cmath>

#include "fuzz/fuzzing.h"
#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuite/lutestsuitereport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Fuzzing::CInputFile s_file("report.xml");
    LuTestSuiteOut::SetConsoleOut(false);
    s_file.Write(Fuzzing::GetText(data, size));
    LuTestSuiteReport::SReportData report;
    if (!LuTestSuiteReport::LoadReportDataFromXMLFile(s_file.GetPath(), report))
    {
        Fuzzing::Check(report.Cases.empty() && report.Classes.empty());
        return 0;
    }
    for (const LuTestSuiteReport::SReportCase& each : report.Cases)
    {
        Fuzzing::Check(std::isfinite(each.Time));
        // Every result has a name that is read as the same result.
        Fuzzing::Check(LuTestSuiteReport::resultStringToType(LuTestSuiteReport::toResultString(each.Result)) ==
                       each.Result);
    }
    return 0;
}
