#include "testing/lutestsuiterunner/reports/junit.h"

#include <algorithm>
#include <functional>

#include "base/lbformat.h"
#include "testing/lutestsuiterunner/reports/junitbudget.h"
#include "testing/lutestsuiterunner/reports/junitcase.h"
#include "testing/lutestsuiterunner/reports/junitcounts.h"
#include "testing/lutestsuiterunner/reports/junitproperties.h"
#include "testing/lutestsuiterunner/reports/junitsuites.h"
#include "testing/lutestsuiterunner/reports/redreasons.h"
#include "testing/lutestsuiterunner/reports/wholefile.h"
#include "testing/lutestsuiterunner/reports/xmltext.h"

namespace Runner
{

namespace
{

constexpr std::wstring_view c_RunSuite = L"LuTestSuiteRunner";

using UseCase = std::function<void(const SJunitCase& element)>;

void visitCases(const CRunState& state, const SOpenCases& open, const SJunitSuite& suite, const UseCase& use)
{
    for (const std::uint32_t index : suite.cases)
    {
        use(MakeJunitCase(state, open, index, suite.name));
    }
    for (const SDisabledCase* const disabled : suite.disabled)
    {
        use(MakeJunitCase(state.GetPlan(), *disabled, suite.name));
    }
}

/// Flaky cases have passed, so without this element a red run could have a green junit.xml.
void visitFlakyCases(const CRunState& state, const UseCase& use)
{
    const std::vector<std::uint32_t> cases = FindRedFlakyCases(state);
    if (cases.empty())
    {
        return;
    }
    std::wstring names;
    for (const std::uint32_t index : cases)
    {
        names += GetCaseName(state.GetPlan(), index) + L"\n";
    }
    use(MakeJunitProblem(L"Unzuverlässige Testfälle", DescribeRedFlakyCases(cases.size()), c_RunSuite, names));
}

void visitProblems(const CRunState& state, const UseCase& use)
{
    if (state.IsCanceled())
    {
        use(MakeJunitProblem(L"Abbruch", L"Der Lauf wurde abgebrochen: " + state.GetCancelReason(), c_RunSuite));
    }
    else if (!state.IsEnded())
    {
        use(MakeJunitProblem(L"Ende", L"Der Lauf ist nicht beendet", c_RunSuite));
    }
    for (std::size_t index = 0; index < state.GetProblems().size(); ++index)
    {
        use(MakeJunitProblem(LbFormat(L"Problem %u", index + 1), state.GetProblems()[index], c_RunSuite));
    }
    visitFlakyCases(state, use);
}

void write(LuStreamWriteBinaryFile& file, std::string_view text)
{
    file.Write(text.data(), text.size());
}

class CJunitWriter
{
public:
    CJunitWriter(const CRunState& state, const SOpenCases& open, std::size_t limit)
        : m_state(state), m_open(open), m_suites(state.GetPlan()), m_budget(limit), m_learned(limit / c_PropertyShare),
          m_written(limit / c_PropertyShare)
    {
        for (const SJunitSuite& suite : m_suites.Get())
        {
            learn([&](const UseCase& use) { visitCases(m_state, m_open, suite, use); }, suite);
        }
        learn([&](const UseCase& use) { visitProblems(state, use); }, m_runSuite);
        m_budget.LearnFrame(makeHead().size() + c_Foot.size());
        m_budget.Decide();
    }

    void Write(LuStreamWriteBinaryFile& file)
    {
        write(file, makeHead());
        std::size_t index = 0;
        for (const SJunitSuite& suite : m_suites.Get())
        {
            writeSuite(file, makeSuiteHead(suite, m_counts[index++], m_written),
                       [&](const UseCase& use) { visitCases(m_state, m_open, suite, use); });
        }
        if (m_counts[index].tests > 0)
        {
            writeSuite(file, makeSuiteHead(m_runSuite, m_counts[index], m_written),
                       [&](const UseCase& use) { visitProblems(m_state, use); });
        }
        write(file, c_Foot);
    }

private:
    static constexpr std::size_t c_PropertyShare = 4;
    static constexpr std::string_view c_Foot = "</testsuites>\n";
    static constexpr std::string_view c_SuiteFoot = "\t</testsuite>\n";

    template<typename F>
    void learn(const F& visit, const SJunitSuite& suite)
    {
        SJunitCounts counts;
        visit([&](const SJunitCase& element) {
            counts.Add(element);
            m_budget.Learn(element);
        });
        m_budget.LearnFrame(makeSuiteHead(suite, counts, m_learned).size() + makeLeftOut(counts.tests).size() +
                            c_SuiteFoot.size());
        m_total.Add(counts);
        m_counts.push_back(counts);
    }

    std::string makeHead() const
    {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites name=\"LuTestSuite\"" +
               MakeJunitAttributes(m_total) + ">\n";
    }

    std::string makeSuiteHead(const SJunitSuite& suite, const SJunitCounts& counts, CJunitProperties& lists) const
    {
        std::wstring timestamp = m_state.GetStartTime();
        std::ranges::replace(timestamp, L' ', L'T');
        std::string head = "\t<testsuite name=\"" + ToXmlAttribute(suite.name) + "\"" + MakeJunitAttributes(counts) +
                           " skipped=\"" + std::to_string(counts.skipped) + "\" timestamp=\"" +
                           ToXmlAttribute(timestamp) + "\" hostname=\"" +
                           ToXmlAttribute(m_state.GetPlan().origin.machine) + "\">\n";
        const std::string properties = makeProperties(suite, lists);
        return properties.empty() ? head : head + "\t\t<properties>\n" + properties + "\t\t</properties>\n";
    }

    /// Lists the cases whose kind the usual elements cannot express.
    std::string makeProperties(const SJunitSuite& suite, CJunitProperties& lists) const
    {
        for (const std::uint32_t index : suite.cases)
        {
            const SPlannedCase& planned = m_state.GetPlan().cases[index];
            if (planned.isQuarantined)
            {
                lists.Add("quarantined", getName(planned));
            }
            const EVerdict verdict = m_state.GetVerdict(index);
            if (verdict == EVerdict::Flaky || verdict == EVerdict::FailedShared)
            {
                lists.Add(verdict == EVerdict::Flaky ? "flaky" : "failed-shared", getName(planned));
            }
        }
        return lists.Take();
    }

    std::wstring getName(const SPlannedCase& planned) const
    {
        const LuTestSuite::SUnitTest& unitTest = m_state.GetPlan().unitTests[planned.unitTest];
        return GetRunName(unitTest.cases[planned.testCase].name, planned.repetition);
    }

    static std::string makeLeftOut(std::uint64_t count)
    {
        return "\t\t<system-out>" + std::to_string(count) +
               " Testfälle sind ausgelassen, weil die Datei sonst zu groß würde; sie stehen im Journal.</system-out>\n";
    }

    template<typename F>
    void writeSuite(LuStreamWriteBinaryFile& file, const std::string& head, const F& visit)
    {
        write(file, head);
        std::uint64_t leftOut = 0;
        visit([&](SJunitCase element) {
            if (m_budget.Take(element))
            {
                write(file, element.start);
                write(file, element.text);
                write(file, element.end);
            }
            else
            {
                ++leftOut;
            }
        });
        write(file, leftOut == 0 ? std::string() : makeLeftOut(leftOut));
        write(file, c_SuiteFoot);
    }

    const CRunState& m_state;
    const SOpenCases& m_open;
    const CJunitSuites m_suites;
    const SJunitSuite m_runSuite = {std::wstring(c_RunSuite), {}, {}};
    std::vector<SJunitCounts> m_counts; ///< one element per suite, then one for the run itself
    SJunitCounts m_total;
    CJunitBudget m_budget;
    /// Both make the same lists: m_learned to learn their sizes, m_written for the file.
    CJunitProperties m_learned;
    CJunitProperties m_written;
};

} // namespace

void WriteJunit(const std::wstring& path, const CRunState& state, std::size_t limit, const SOpenCases& open)
{
    CJunitWriter writer(state, open, limit);
    WriteWholeFile(path, [&writer](LuStreamWriteBinaryFile& file) { writer.Write(file); });
}

} // namespace Runner
