#include "testing/lutestsuiterunner/reports/junitcounts.h"

#include "testing/lutestsuiterunner/reports/xmltext.h"

namespace Runner
{

void SJunitCounts::Add(const SJunitCase& element)
{
    ++tests;
    failures += element.status == EJunitStatus::Failure ? 1U : 0U;
    errors += element.status == EJunitStatus::Error ? 1U : 0U;
    skipped += element.status == EJunitStatus::Skipped ? 1U : 0U;
    time += element.time;
}

void SJunitCounts::Add(const SJunitCounts& other)
{
    tests += other.tests;
    failures += other.failures;
    errors += other.errors;
    skipped += other.skipped;
    time += other.time;
}

std::string MakeJunitAttributes(const SJunitCounts& counts)
{
    return " tests=\"" + std::to_string(counts.tests) + "\" failures=\"" + std::to_string(counts.failures) +
           "\" errors=\"" + std::to_string(counts.errors) + "\" time=\"" + ToXmlSeconds(counts.time) + "\"";
}

} // namespace Runner
