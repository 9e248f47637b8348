/// The options of one command, read by CLI11, with German help and German errors.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/inoncopyable.h"

namespace CLI
{
class App;
}

namespace Runner
{

/// How the help shows an option or an argument.
struct SOptionText
{
    const char* name;     ///< "--out"; for an argument a word in capitals, "DIR"
    const wchar_t* value; ///< the placeholder for the value in the help; null for a switch
    const wchar_t* help;
};

/// Add the options first, then call Read, which stores the values in the targets. The targets must outlive the object.
/// If an option is given several times, its last value counts.
class COptionReader : public INonCopyable
{
public:
    /// `takesLibraryOptions` affects only the help.
    COptionReader(const std::wstring& command, const std::wstring& purpose, bool takesLibraryOptions);
    ~COptionReader();

    void AddSwitch(const SOptionText& text, bool& target);
    /// A switch that the help does not show.
    void AddHiddenSwitch(const char* name, bool& target);
    void AddText(const SOptionText& text, std::wstring& target);
    /// An option that may be given several times; all values count.
    void AddTexts(const SOptionText& text, std::vector<std::wstring>& target);

    void AddNumber(const SOptionText& text, std::uint32_t least, std::uint32_t& target);

    /// `read` stores the value, or returns false if it is wrong; `expected` describes a correct value in German.
    using ReadValue = std::function<bool(const std::wstring& value)>;
    void AddValue(const SOptionText& text, const std::wstring& expected, const ReadValue& read);

    /// A switch that may have a number ("--name" or "--name=N"); `plain` is stored if the number is missing.
    void AddSwitchOrNumber(const SOptionText& text, std::uint32_t plain, std::uint32_t& target);

    /// A switch that may have a text ("--name" or "--name=text").
    void AddSwitchOrText(const SOptionText& text, bool& target, std::wstring& value);

    /// Arguments that are not options.
    void AddArgument(const SOptionText& text, std::wstring& target);
    void AddArguments(const SOptionText& text, std::vector<std::wstring>& target);

    /// Lines below the options in the help, without a line feed at their end.
    void SetFooter(const std::wstring& footer);

    /// False if the arguments ask for help. Throws a German message as std::wstring if they are wrong; a missing
    /// argument leaves its target unchanged.
    bool Read(const std::vector<std::wstring>& arguments);

    std::wstring GetHelp() const;

private:
    using ReadTexts = std::function<bool(const std::vector<std::string>& values)>;
    void addSwitchWithValue(const SOptionText& text, const ReadTexts& read);
    void refuseExtras() const;

    std::unique_ptr<CLI::App> m_app;
    bool m_takesLibraryOptions;
    std::vector<std::string> m_switchesWithValue; ///< names of the switches that may have a value
};

} // namespace Runner
