#include "testing/lutestsuite/lutestsuiterun.h"

std::vector<std::wstring> LuTestSuite::SUnitTest::GetDataSetFiles() const
{
    std::vector<std::wstring> files;
    for (const STestCase& testCase : cases)
    {
        if (!testCase.dataSetFile.empty())
        {
            files.push_back(testCase.dataSetFile);
        }
    }
    return files;
}
