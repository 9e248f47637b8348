/// Checks for any arguments that they are accepted, or refused with an error line, and that each value in the setup is
/// one of the arguments.
///
/// The input is text with an argument in each line.
#include <algorithm>
#include <vector>

#include "base/lbencoding.h"
#include "fuzz/fuzzing.h"
#include "testing/lutestsuite/lutestsuiteout.h"
#include "testing/lutestsuite/lutestsuiteutils.h"

namespace
{

using Texts = std::vector<std::wstring>;

class CRefusals : public LuTestSuiteOut::LuCustomOut
{
public:
    CRefusals()
    {
        LuTestSuiteOut::SetConsoleOut(false);
        LuTestSuiteOut::AddCustomOut(this);
    }

    void Output(const LuTestSuiteOut& line) override { m_isFound = m_isFound || line.GetText().starts_with(L"Fehler"); }

    bool Take() { return std::exchange(m_isFound, false); }

private:
    bool m_isFound = false;
};

Texts getArguments(std::string_view input)
{
    Texts arguments = {L"LuTestSuiteCLI"};
    while (!input.empty())
    {
        // An argument from the system ends at its first null character.
        const std::wstring line = LbEncoding::FromUtf8(Fuzzing::TakeLine(input));
        arguments.emplace_back(line.c_str());
    }
    return arguments;
}

/// True if the text equals an argument and is not an option.
bool isValue(const std::wstring& text, const Texts& arguments)
{
    return !text.starts_with(L'-') && std::ranges::find(arguments, text) != arguments.end();
}

void checkTexts(const LuTestSuiteSetup& setup, const Texts& arguments)
{
    for (const Texts* const texts : {&setup.includes, &setup.excludes, &setup.diffInputs, &setup.dlls})
    {
        Fuzzing::Check(std::ranges::all_of(*texts, [&](const std::wstring& text) { return isValue(text, arguments); }));
    }
    for (const std::wstring* const text :
         {&setup.includeConfig, &setup.xmlReport, &setup.htmlReport, &setup.diffOutput, &setup.archiveRun,
          &setup.memoryId, &setup.requestEventId, &setup.responseEventId})
    {
        Fuzzing::Check(text->empty() || isValue(*text, arguments));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static CRefusals s_refusals;
    const Texts arguments = getArguments(Fuzzing::GetText(data, size));
    std::vector<const wchar_t*> pointers;
    std::ranges::transform(arguments, std::back_inserter(pointers), &std::wstring::c_str);
    LuTestSuiteSetup setup;
    const bool isTaken =
        LuTestSuiteUtils::ProcessCommandLine(setup, static_cast<int>(pointers.size()), pointers.data());
    Fuzzing::Check(s_refusals.Take() == !isTaken);
    checkTexts(setup, arguments);
    return 0;
}
