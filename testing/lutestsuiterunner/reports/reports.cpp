#include "testing/lutestsuiterunner/reports/reports.h"

#include "base/lbparallel.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/reports/junit.h"
#include "testing/lutestsuiterunner/reports/opencases.h"
#include "testing/lutestsuiterunner/reports/processlists.h"
#include "testing/lutestsuiterunner/reports/runreport.h"
#include "testing/lutestsuiterunner/reports/summary.h"

void Runner::WriteReports(const std::wstring& folder, const CRunState& state, bool isInProgress)
{
    const SOpenCases open = FindOpenCases(state, folder, isInProgress);
    LbParallel::Invoke({[&] {
                            WriteProcessLists(folder, state);
                            WriteSummary(folder, state, open);
                            WriteJunit(folder + c_JunitName, state, c_JunitLimit, open);
                        },
                        [&] { WriteRunReports(folder + c_XmlReportName, folder + c_HtmlReportName, state); }});
}
