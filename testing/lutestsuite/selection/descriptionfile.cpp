/// Test description files: contacts and per-case parameters of a unit test.

#include "base/lbexception.h"
#include "base/luunittest.h"
#include "base/xmlnode.h"
#include "testing/lutestsuite/environment/buildinformation.h"
#include "testing/lutestsuite/lutestsuiteutils.h"
#include "testing/lutestsuite/output/warning.h"
#include "testing/lutestsuite/selection/expression.h"
#include "testing/lutestsuite/settings/parameters.h"
#include "testing/lutestsuite/settings/valuereaders.h"

namespace
{

using LuTestSuite::ParameterMap;

LbVariant& getEntry(ParameterMap& parameters, const std::wstring& name)
{
    if (parameters.empty())
    {
        parameters.max_load_factor(LuTestSuite::c_ParameterLoadFactor);
        parameters.rehash(LuTestSuite::c_ParameterBuckets);
    }
    return parameters[name];
}

/// A text that is no value makes the parameter null, also when an earlier element has set it.
void setFlagOrNull(const XMLNode& node, ParameterMap& parameters)
{
    const std::optional<bool> flag = LuTestSuite::ReadBool(node.GetText());
    getEntry(parameters, node.GetName()) = flag ? LbVariant(*flag) : LbVariant();
}

/// A text that is no value leaves the parameter as it is, absent or set by an earlier element.
void setFlag(const XMLNode& node, ParameterMap& parameters)
{
    if (const std::optional<bool> flag = LuTestSuite::ReadBool(node.GetText()))
    {
        getEntry(parameters, node.GetName()) = *flag;
    }
}

void setNumber(const XMLNode& node, ParameterMap& parameters)
{
    if (node.HasText())
    {
        std::uint32_t number = 0;
        LuTestSuiteUtils::GetUInt32(node, number);
        getEntry(parameters, node.GetName()) = number;
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

/// A "TestCase" element that counts in this build, with the expression of its name.
struct SAcceptedElement
{
    XMLNode node;
    LuTestSuite::CExpression expression;
};

/// What the names of "TestCase" elements say about the cases.
struct SMatches
{
    std::vector<std::vector<XMLNode>> elements; ///< for each case, in file order
    std::vector<std::wstring> invalidNames;     ///< names that are no expressions
};

bool countsInThisBuild(const XMLNode& node)
{
    return !node.HasAttribute("configuration") ||
           node.GetAttribute("configuration") == LuTestSuite::c_BuildConfigurationName;
}

std::vector<SAcceptedElement> acceptElements(const std::vector<XMLNode>& nodes, std::vector<std::wstring>& invalidNames)
{
    std::vector<SAcceptedElement> accepted;
    for (const XMLNode& node : nodes)
    {
        if (!countsInThisBuild(node))
        {
            continue;
        }
        const std::wstring name = node.GetAttribute("name");
        try
        {
            accepted.push_back({node, {LuTestSuiteUtils::GenerateWildcardRegex(name), name.size()}});
        }
        catch (const std::regex_error&)
        {
            invalidNames.push_back(name);
        }
    }
    return accepted;
}

SMatches matchElements(const std::vector<LuTestSuite::STestCase>& cases, const std::vector<XMLNode>& nodes)
{
    SMatches matches;
    const std::vector<SAcceptedElement> elements = acceptElements(nodes, matches.invalidNames);
    matches.elements.resize(cases.size());
    for (std::size_t index = 0; index < cases.size(); ++index)
    {
        for (const SAcceptedElement& element : elements)
        {
            if (element.expression.Matches(cases[index].name))
            {
                matches.elements[index].push_back(element.node);
            }
        }
    }
    return matches;
}

LuTestSuite::SExpressionSizes getSizes(const std::vector<LuTestSuite::STestCase>& cases,
                                       const std::vector<XMLNode>& nodes)
{
    LuTestSuite::SExpressionSizes sizes;
    for (const LuTestSuite::STestCase& testCase : cases)
    {
        sizes.AddName(testCase.name.size());
    }
    for (const XMLNode& node : nodes)
    {
        sizes.AddSource(node.GetAttribute("name").size());
    }
    return sizes;
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
    if (nodes.empty())
    {
        return;
    }
    SMatches matches;
    try
    {
        LuTestSuite::RunWithExpressionStack(getSizes(test.cases, nodes),
                                            [&] { matches = matchElements(test.cases, nodes); });
    }
    catch (const std::wstring& message)
    {
        LuTestSuite::WriteWarning(L"Warnung XML '%s': %s.\n", file, message);
        return;
    }
    catch (const LbException& exception)
    {
        // No memory for the stack: the description is lost, the search goes on.
        LuTestSuite::WriteWarning(L"Warnung XML '%s': %s.\n", file, exception.GetMessageText());
        return;
    }
    for (const std::wstring& name : matches.invalidNames)
    {
        LuTestSuite::WriteWarning(L"Warnung XML '%s': Ungültiger Name '%s'.\n", file, name);
    }
    for (std::size_t index = 0; index < test.cases.size(); ++index)
    {
        for (const XMLNode& element : matches.elements[index])
        {
            for (const XMLNode& node : element.GetChildren())
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
