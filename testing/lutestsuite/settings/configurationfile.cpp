/// Configuration files, the readers of their values, and the history of data directories.

#include <span>

#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/xmlnode.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/output/warning.h"
#include "testing/lutestsuite/settings/valuereaders.h"

namespace
{

using Data = LuTestSuiteUtils::SConfigFileData;
using Params = LuTestSuiteRun::SParams;

void readValue(const XMLNode& node, bool& value)
{
    LuTestSuiteUtils::GetBool(node, value);
}

void readValue(const XMLNode& node, std::uint32_t& value)
{
    LuTestSuiteUtils::GetUInt32(node, value);
}

void readValue(const XMLNode& node, std::uint64_t& value)
{
    LuTestSuiteUtils::GetUInt64(node, value);
}

/// The name of an element, and the function that reads the element into its field.
template<typename Record>
struct SKey
{
    const char* element;
    void (*read)(const XMLNode& node, Record& record);
};

/// Reads the element of one field.
template<auto Member, typename Record>
void readField(const XMLNode& node, Record& record)
{
    readValue(node, record.*Member);
}

template<typename Record>
void readKeys(const XMLNode& node, std::span<const SKey<Record>> keys, Record& record)
{
    for (const SKey<Record>& key : keys)
    {
        key.read(node.GetChild(key.element), record);
    }
}

constexpr SKey<Data> c_Settings[] = {
    {"DEVerboseOutput", readField<&Data::DEVerboseOutput>},
    {"DEDebuggingSerialization", readField<&Data::DEDebuggingSerialization>},
    {"DEPredefinedBreakPoints", readField<&Data::DEPredefinedBreakPoints>},
    {"ExternalDebug", readField<&Data::ExternalDebug>},
    {"ExternalRelease", readField<&Data::ExternalRelease>},
    {"Isolated", readField<&Data::Isolated>},
    {"AssertDialog", readField<&Data::AssertDialog>},
    {"Parallel", readField<&Data::Parallel>},
    {"ThreadCount", readField<&Data::ThreadCount>},
    {"RepetitionCount", readField<&Data::RepetitionCount>},
    {"HTMLAuto", readField<&Data::HTMLAuto>},
    {"XMLAuto", readField<&Data::XMLAuto>},
    {"OpenReport", readField<&Data::OpenReport>},
    {"TrackHeap", readField<&Data::TrackHeap>},
    {"DumpHeap", readField<&Data::DumpHeap>},
    {"SelectedFailed", readField<&Data::SelectedFailed>},
    {"BreakAllocID", readField<&Data::BreakAllocID>},
    {"BreakAllocSize", readField<&Data::BreakAllocSize>},
};

/// Files that are used for Debug and Release builds contain "ExternalRelease" instead of "External".
constexpr SKey<Params> c_RunParameters[] = {
    {"TrackHeap", readField<&Params::trackHeap>},
    {"DumpHeap", readField<&Params::dumpHeap>},
    {"External", readField<&Params::external>},
    {"ExternalRelease", readField<&Params::external>},
    {"Isolated", readField<&Params::isolated>},
    {"AssertDialog", readField<&Params::assertDialog>},
    {"Verbose", readField<&Params::verbose>},
    {"DEVerboseOutput", readField<&Params::deVerboseOutput>},
    {"DEDebuggingSerialization", readField<&Params::deDebuggingSerialization>},
    {"DEPredefinedBreakPoints", readField<&Params::dePredefinedBreakPoints>},
    {"Parallel", readField<&Params::parallel>},
    {"ThreadCount", readField<&Params::workerThreads>},
    {"RepetitionCount", readField<&Params::repetitions>},
    {"TimeOutSec", readField<&Params::timeOutSec>},
    {"TestCaseMax", readField<&Params::testCaseMax>},
};

void readHistory(const XMLNode& root, Data& data)
{
    for (const XMLNode& directory : root.GetChild("DataDirHistory").GetChildren())
    {
        data.dataDirHistory.push_back(directory.GetAttribute("path"));
    }
}

void readTests(const XMLNode& root, Data& data)
{
    for (const XMLNode& test : root.GetChild("Tests").GetChildren())
    {
        const std::wstring className = test.GetAttribute("name");
        for (const XMLNode& testCase : test.GetChildren())
        {
            data.tests.insert(LbFormat(L"%s:%s", className, testCase.GetAttribute("name")));
        }
    }
}

} // namespace

void LuTestSuiteUtils::ReadConfigXML(const std::wstring& path, SConfigFileData& data)
{
    XMLDocument document;
    const XMLDocument::EResult result = document.Load(path, "Config");
    if (result == XMLDocument::EResult::Missing)
    {
        return;
    }
    if (result == XMLDocument::EResult::Unreadable)
    {
        throw LbFormat(L"Datei %s konnte nicht gelesen werden", path);
    }
    if (result == XMLDocument::EResult::Syntax)
    {
        throw std::wstring(L"XML-Syntax Fehler");
    }
    const XMLNode root = document.GetRoot();
    readHistory(root, data);
    readKeys<SConfigFileData>(root, c_Settings, data);
    readTests(root, data);
}

void LuTestSuiteUtils::GetBool(const XMLNode& node, bool& value)
{
    value = LuTestSuite::ReadBool(node.GetText()).value_or(value);
}

void LuTestSuiteUtils::GetUInt32(const XMLNode& node, std::uint32_t& value)
{
    if (node.HasText())
    {
        value = LuTestSuite::ReadUInt32(node.GetText());
    }
}

void LuTestSuiteUtils::GetUInt64(const XMLNode& node, std::uint64_t& value)
{
    if (node.HasText())
    {
        value = LuTestSuite::ReadUInt64(node.GetText());
    }
}

std::vector<std::wstring> LuTestSuiteUtils::GetDataDirHistory()
{
    SConfigFileData data;
    try
    {
        ReadConfigXML(GetLocalTestSuiteDir() + L"LastConfig.xml", data);
    }
    catch (const std::wstring& message)
    {
        LuTestSuite::WriteWarning(L"Fehler in Config-File: %s\n", message);
    }
    return std::move(data.dataDirHistory);
}

void LuTestSuiteUtils::PreprocessDataDir(std::wstring& dataDir)
{
    if (!LbFileSystem::Exists(dataDir))
    {
        // Reads the history only if the text is a number, because reading the history creates the per-user folder.
        if (const std::optional<std::uint32_t> index = LbVariant(dataDir).ToUInt32())
        {
            const std::vector<std::wstring> history = GetDataDirHistory();
            if (*index < history.size())
            {
                dataDir = history[*index];
            }
        }
    }
    if (!dataDir.empty())
    {
        dataDir = AddBackslash(dataDir);
    }
}

void LuTestSuiteUtils::GetRunParam(const XMLNode& node, LuTestSuiteRun::SParams& params)
{
    readKeys<LuTestSuiteRun::SParams>(node, c_RunParameters, params);
}
