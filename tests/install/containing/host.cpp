/// Runs its command line as LuTestSuiteCLI does.

#include <string>
#include <vector>

#include "base/os/process.h"
#include "testing/lutestsuite/lutestsuiteenvironment.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

int main(int argumentCount, char** arguments)
{
    const std::vector<std::wstring> texts = LbOs::GetArguments(argumentCount, arguments);
    std::vector<const wchar_t*> words;
    for (const std::wstring& text : texts)
    {
        words.push_back(text.c_str());
    }
    LuTestSuiteEnvironment environment;
    const int count = static_cast<int>(words.size());
    return LuTestSuiteUtils::RunCommandLine(environment, count, words.data()) ? 0 : 1;
}
