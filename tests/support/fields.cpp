#include "tests/support/fields.h"

#include <algorithm>
#include <cstdint>
#include <set>

#include "base/lbencoding.h"

namespace
{

class CFieldWriter
{
public:
    void Add(const char* name, bool value) { add(name, value ? "true" : "false"); }
    void Add(const char* name, std::int32_t value) { add(name, std::to_string(value)); }
    void Add(const char* name, std::uint32_t value) { add(name, std::to_string(value)); }
    void Add(const char* name, std::uint64_t value) { add(name, std::to_string(value)); }
    void Add(const char* name, const std::wstring& value) { add(name, LbEncoding::ToUtf8(value)); }

    void AddList(const std::string& name, const auto& values)
    {
        for (const std::wstring& value : values)
        {
            Add((name + "[]").c_str(), value);
        }
    }

    void AddParams(const LuTestSuiteRun::SParams& params)
    {
        Add("trackHeap", params.trackHeap);
        Add("dumpHeap", params.dumpHeap);
        Add("reportMemLeak", params.reportMemLeak);
        Add("external", params.external);
        Add("isolated", params.isolated);
        Add("assertDialog", params.assertDialog);
        Add("verbose", params.verbose);
        Add("deVerboseOutput", params.deVerboseOutput);
        Add("deDebuggingSerialization", params.deDebuggingSerialization);
        Add("dePredefinedBreakPoints", params.dePredefinedBreakPoints);
        Add("parallel", params.parallel);
        Add("workerThreads", params.workerThreads);
        Add("repetitions", params.repetitions);
        // -1 means "not set".
        Add("timeOutSec", static_cast<std::int32_t>(params.timeOutSec));
        Add("testCaseMax", static_cast<std::int32_t>(params.testCaseMax));
        Add("breakAllocId", params.breakAllocId);
        Add("breakAllocSize", params.breakAllocSize);
        Add("repetitionsGiven", params.repetitionsGiven);
    }

    Fields fields;

private:
    void add(const std::string& name, const std::string& value) { fields.push_back(name + "=" + value); }
};

} // namespace

Fields GetFields(const LuTestSuiteSetup& setup)
{
    CFieldWriter writer;
    writer.Add("dataDir", setup.dataDir);
    writer.AddList("includes", setup.includes);
    writer.AddList("excludes", setup.excludes);
    for (const LuTestSuite::SUnitTest& unitTest : setup.unitTests)
    {
        writer.Add("unitTests[]", unitTest.className);
    }
    writer.AddParams(setup.params);
    writer.Add("includeConfig", setup.includeConfig);
    writer.Add("xmlReport", setup.xmlReport);
    writer.Add("htmlReport", setup.htmlReport);
    writer.Add("autoXml", setup.autoXml);
    writer.Add("autoHtml", setup.autoHtml);
    writer.Add("openReports", setup.openReports);
    writer.Add("smallReport", setup.smallReport);
    writer.AddList("diffInputs", setup.diffInputs);
    writer.Add("diffOutput", setup.diffOutput);
    writer.Add("writeCss", setup.writeCss);
    writer.Add("writeJs", setup.writeJs);
    writer.Add("messageReportMax", setup.messageReportMax);
    writer.Add("tolerateWarnings", setup.tolerateWarnings);
    writer.Add("queryMode", setup.queryMode);
    writer.Add("archiveRun", setup.archiveRun);
    writer.Add("duplicateMode", static_cast<std::uint32_t>(setup.duplicateMode));
    writer.Add("listDisabled", setup.listDisabled);
    writer.AddList("dlls", setup.dlls);
    writer.Add("memoryId", setup.memoryId);
    writer.Add("requestEventId", setup.requestEventId);
    writer.Add("responseEventId", setup.responseEventId);
    writer.Add("noRegex", setup.noRegex);
    return writer.fields;
}

Fields GetFields(const LuTestSuiteRun::SParams& params)
{
    CFieldWriter writer;
    writer.AddParams(params);
    return writer.fields;
}

Fields GetFields(const LuTestSuiteUtils::SConfigFileData& data)
{
    CFieldWriter writer;
    writer.AddList("dataDirHistory", data.dataDirHistory);
    writer.AddList("tests", std::set<std::wstring>(data.tests.begin(), data.tests.end()));
    writer.Add("DEVerboseOutput", data.DEVerboseOutput);
    writer.Add("DEDebuggingSerialization", data.DEDebuggingSerialization);
    writer.Add("DEPredefinedBreakPoints", data.DEPredefinedBreakPoints);
    writer.Add("ExternalDebug", data.ExternalDebug);
    writer.Add("ExternalRelease", data.ExternalRelease);
    writer.Add("AssertDialog", data.AssertDialog);
    writer.Add("Isolated", data.Isolated);
    writer.Add("Parallel", data.Parallel);
    writer.Add("ThreadCount", data.ThreadCount);
    writer.Add("RepetitionCount", data.RepetitionCount);
    writer.Add("HTMLAuto", data.HTMLAuto);
    writer.Add("XMLAuto", data.XMLAuto);
    writer.Add("OpenReport", data.OpenReport);
    writer.Add("TrackHeap", data.TrackHeap);
    writer.Add("DumpHeap", data.DumpHeap);
    writer.Add("SelectedFailed", data.SelectedFailed);
    writer.Add("BreakAllocID", data.BreakAllocID);
    writer.Add("BreakAllocSize", data.BreakAllocSize);
    return writer.fields;
}

Fields GetOtherFields(const Fields& fields, const Fields& others)
{
    Fields result;
    std::ranges::copy_if(fields, std::back_inserter(result),
                         [&](const std::string& field) { return std::ranges::find(others, field) == others.end(); });
    return result;
}
