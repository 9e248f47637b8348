/// Test description files: contacts and per-case parameters of a unit test.

#include <algorithm>
#include <iterator>

#include "base/lbexception.h"
#include "base/luunittest.h"
#include "base/xmlnode.h"
#include "testing/lutestsuite/environment/buildinformation.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/output/warning.h"
#include "testing/lutestsuite/selection/elementnames.h"
#include "testing/lutestsuite/settings/parameters.h"
#include "testing/lutestsuite/settings/valuereaders.h"

namespace
{

using LuTestSuite::ParameterMap;

/// An invalid text makes the parameter null, even if an earlier element has set it.
void setFlagOrNull(const XMLNode& node, ParameterMap& parameters)
{
    const std::optional<bool> flag = LuTestSuite::ReadBool(node.GetText());
    LuTestSuite::GetParameter(parameters, node.GetName()) = flag ? LbVariant(*flag) : LbVariant();
}

/// An invalid text changes nothing: the parameter stays absent, or keeps the value of an earlier element.
void setFlag(const XMLNode& node, ParameterMap& parameters)
{
    if (const std::optional<bool> flag = LuTestSuite::ReadBool(node.GetText()))
    {
        LuTestSuite::GetParameter(parameters, node.GetName()) = *flag;
    }
}

void setNumber(const XMLNode& node, ParameterMap& parameters)
{
    if (node.HasText())
    {
        std::uint32_t number = 0;
        LuTestSuiteUtils::GetUInt32(node, number);
        LuTestSuite::GetParameter(parameters, node.GetName()) = number;
    }
}

struct SParameter
{
    const wchar_t* name;
    void (*set)(const XMLNode&, ParameterMap&);
};

constexpr SParameter c_Parameters[] = {
    {L"Enable", setFlagOrNull}, {L"ReportMemLeak", setFlagOrNull},
    {L"TimeOutSec", setNumber}, {L"MessageReportMax", setNumber},
    {L"Parallel", setFlag},     {L"External", setFlag},
    {L"Isolated", setFlag},
};

/// The "TestCase" elements that apply to each case.
struct SMatches
{
    std::vector<std::vector<std::size_t>> elements; ///< for each case the indices of its elements, in file order
    std::vector<std::wstring> messages;             ///< warnings about names that cannot be matched
};

bool countsInThisBuild(const XMLNode& node)
{
    return !node.HasAttribute("configuration") ||
           node.GetAttribute("configuration") == LuTestSuite::c_BuildConfigurationName;
}

std::vector<std::wstring> getElementNames(const std::vector<XMLNode>& elements)
{
    std::vector<std::wstring> names;
    for (const XMLNode& element : elements)
    {
        names.push_back(element.GetAttribute("name"));
    }
    return names;
}

SMatches findElements(const std::vector<LuTestSuite::STestCase>& cases, LuTestSuite::CElementNames& names,
                      const LuTestSuite::CStackLimit* limit)
{
    SMatches matches;
    if (limit != nullptr)
    {
        names.Compile(*limit, matches.messages);
    }
    matches.elements.reserve(cases.size());
    for (const LuTestSuite::STestCase& testCase : cases)
    {
        matches.elements.push_back(names.Find(testCase.name, matches.messages));
    }
    return matches;
}

SMatches matchElements(const std::vector<LuTestSuite::STestCase>& cases, const std::vector<XMLNode>& elements)
{
    LuTestSuite::CElementNames names(getElementNames(elements));
    if (!names.NeedEngine())
    {
        return findElements(cases, names, nullptr);
    }
    SMatches matches;
    try
    {
        LuTestSuite::RunOnExpressionStack(
            [&](const LuTestSuite::CStackLimit& limit) { matches = findElements(cases, names, &limit); });
    }
    catch (const LbException& exception)
    {
        // Without memory for the large stack, names that need that stack match nothing.
        matches = findElements(cases, names, nullptr);
        matches.messages.push_back(exception.GetMessageText());
    }
    return matches;
}

} // namespace

void LuTestSuiteUtils::processExtraInfoFile(LuTestSuite::SUnitTest& test)
{
    const std::wstring file = test.dataDirectory + LuUnitTest::sc_DescriptionFile;
    XMLDocument document;
    const XMLDocument::EResult result = document.Load(file, "ExtraInfo");
    if (result == XMLDocument::EResult::Missing)
    {
        return;
    }
    if (result == XMLDocument::EResult::Unreadable)
    {
        LuTestSuite::WriteWarning(L"Warnung: Datei %s konnte nicht gelesen werden.\n", file);
        return;
    }
    if (result == XMLDocument::EResult::Syntax)
    {
        LuTestSuite::WriteWarning(L"Warnung: XML-Syntax Fehler in Datei %s.\n", file);
        return;
    }
    std::vector<XMLNode> testCaseNodes;
    for (const XMLNode& node : document.GetRoot().GetChildren())
    {
        const std::wstring name = node.GetName();
        if (name == L"Contact")
        {
            test.contacts.push_back(
                {node.GetChild("Name").GetText(), node.GetChild("Email").GetText(), node.GetAttribute("role")});
        }
        else if (name == L"TestCase")
        {
            testCaseNodes.push_back(node);
        }
        else
        {
            LuTestSuite::WriteWarning(L"Warnung XML '%s': Unbekanntes Element '%s'.\n", file, name);
        }
    }
    processTestCaseNodes(test, testCaseNodes, file);
}

void LuTestSuiteUtils::processTestCaseNodes(LuTestSuite::SUnitTest& test, const std::vector<XMLNode>& nodes,
                                            const std::wstring& file)
{
    std::vector<XMLNode> elements;
    std::ranges::copy_if(nodes, std::back_inserter(elements), countsInThisBuild);
    if (elements.empty())
    {
        return;
    }
    const SMatches matches = matchElements(test.cases, elements);
    for (const std::wstring& message : matches.messages)
    {
        LuTestSuite::WriteWarning(L"Warnung XML '%s': %s.\n", file, message);
    }
    for (std::size_t index = 0; index < test.cases.size(); ++index)
    {
        for (const std::size_t element : matches.elements[index])
        {
            for (const XMLNode& node : elements[element].GetChildren())
            {
                processParamNode(node, test.cases[index].parameters, file);
            }
        }
    }
}

void LuTestSuiteUtils::processParamNode(const XMLNode& node, LuTestSuite::ParameterMap& parameters,
                                        const std::wstring& file)
{
    const std::wstring name = node.GetName();
    for (const SParameter& parameter : c_Parameters)
    {
        if (name == parameter.name)
        {
            parameter.set(node, parameters);
            return;
        }
    }
    LuTestSuite::WriteWarning(L"Warnung XML '%s': Unbekannter Parameter '%s'.\n", file, name);
}

void LuTestSuiteUtils::removeDisabledCases(LuTestSuite::SUnitTest& test)
{
    std::erase_if(test.cases, LuTestSuite::IsDisabled);
}
