#include "testing/lutestsuiterunner/settings/optionreader.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include <CLI/CLI.hpp>

#include "base/lbencoding.h"
#include "base/lbformat.h"

namespace Runner
{

namespace
{

using LbEncoding::FromUtf8;
using LbEncoding::ToUtf8;

/// The usage line in German.
class CGermanFormatter : public CLI::Formatter
{
public:
    explicit CGermanFormatter(bool takesLibraryOptions) : m_takesLibraryOptions(takesLibraryOptions) {}

    std::string make_usage(const CLI::App* app, std::string /*name*/) const override
    {
        std::string usage = "Aufruf: LuTestSuiteRunner " + app->get_name() + " [Optionen]";
        for (const CLI::Option* argument : app->get_options([](const CLI::Option* o) { return o->get_positional(); }))
        {
            usage += " " + argument->get_name(true, false) + (argument->get_items_expected_max() > 1 ? "..." : "");
        }
        return usage + (m_takesLibraryOptions ? " -- [Optionen von LuTestSuiteCLI]\n" : "\n");
    }

    /// Omits the blank before the value if only "=" can introduce the value.
    std::string make_option_opts(const CLI::Option* option) const override
    {
        const std::string text = CLI::Formatter::make_option_opts(option);
        return text.starts_with(" [=") ? text.substr(1) : text;
    }

private:
    bool m_takesLibraryOptions;
};

/// Throws the message as std::wstring. CLI11 lets the message pass, because it catches only its own exceptions.
[[noreturn]] void refuse(const char* name, const std::string& value, const std::wstring& expected)
{
    throw LbFormat(L"Der Wert '%s' der Option '%s' ist falsch: erwartet wird %s", FromUtf8(value), FromUtf8(name),
                   expected);
}

std::uint32_t readNumber(const char* name, const std::string& value, std::uint32_t least)
{
    std::uint32_t number = 0;
    const char* const end = value.data() + value.size();
    const auto [place, error] = std::from_chars(value.data(), end, number);
    if (error != std::errc() || place != end || number < least)
    {
        refuse(name, value, LbFormat(L"eine ganze Zahl ab %u", least));
    }
    return number;
}

auto getAppender(std::vector<std::wstring>& target)
{
    return [&target](const std::vector<std::string>& values) {
        std::ranges::transform(values, std::back_inserter(target), FromUtf8);
    };
}

/// The name of the option at the beginning of a message of CLI11.
std::wstring getOptionOf(const CLI::Error& error)
{
    const std::string text = error.what();
    const std::string name = text.substr(0, text.find_first_of(": "));
    return FromUtf8(name.starts_with('-') ? name : "--" + name);
}

std::wstring join(const std::vector<std::string>& arguments)
{
    std::wstring text;
    for (const std::string& argument : arguments)
    {
        text += (text.empty() ? L"'" : L", '") + FromUtf8(argument) + L"'";
    }
    return text;
}

} // namespace

COptionReader::COptionReader(const std::wstring& command, const std::wstring& purpose, bool takesLibraryOptions)
    : m_app(std::make_unique<CLI::App>(ToUtf8(purpose) + "\n", ToUtf8(command))),
      m_takesLibraryOptions(takesLibraryOptions)
{
    const auto formatter = std::make_shared<CGermanFormatter>(takesLibraryOptions);
    formatter->label("Positionals", "Argumente");
    m_app->formatter(formatter);
    m_app->option_defaults()->group("Optionen");
    m_app->set_help_flag("-h,--help", "Diese Hilfe");
    // Leaves unknown arguments to refuseExtras, which reports them in German.
    m_app->allow_extras();
    m_app->allow_windows_style_options(false);
}

COptionReader::~COptionReader() = default;

void COptionReader::AddSwitch(const SOptionText& text, bool& target)
{
    m_app->add_flag(text.name, target, ToUtf8(text.help))->disable_flag_override();
}

void COptionReader::AddHiddenSwitch(const char* name, bool& target)
{
    m_app->add_flag(name, target)->disable_flag_override()->group("");
}

void COptionReader::AddText(const SOptionText& text, std::wstring& target)
{
    m_app
        ->add_option_function<std::string>(
            text.name, [&target](const std::string& value) { target = FromUtf8(value); }, ToUtf8(text.help))
        ->type_name(ToUtf8(text.value))
        ->take_last();
}

void COptionReader::AddTexts(const SOptionText& text, std::vector<std::wstring>& target)
{
    m_app->add_option_function<std::vector<std::string>>(text.name, getAppender(target), ToUtf8(text.help))
        ->option_text(ToUtf8(text.value))
        ->allow_extra_args(false);
}

void COptionReader::AddNumber(const SOptionText& text, std::uint32_t least, std::uint32_t& target)
{
    const auto read = [name = text.name, least, &target](const std::string& value) {
        target = readNumber(name, value, least);
    };
    m_app->add_option_function<std::string>(text.name, read, ToUtf8(text.help))
        ->type_name(ToUtf8(text.value))
        ->take_last();
}

void COptionReader::AddValue(const SOptionText& text, const std::wstring& expected, const ReadValue& read)
{
    const auto check = [name = text.name, expected, read](const std::string& value) {
        if (!read(FromUtf8(value)))
        {
            refuse(name, value, expected);
        }
    };
    m_app->add_option_function<std::string>(text.name, check, ToUtf8(text.help))
        ->type_name(ToUtf8(text.value))
        ->take_last();
}

void COptionReader::AddSwitchOrNumber(const SOptionText& text, std::uint32_t plain, std::uint32_t& target)
{
    // Defined as a flag, so that CLI11 does not read the next argument as the number.
    const auto read = [name = text.name, plain, &target](const CLI::results_t& values) {
        target = values.back() == "true" ? plain : readNumber(name, values.back(), 1);
        return true;
    };
    addSwitchWithValue(text, read);
}

void COptionReader::AddSwitchOrText(const SOptionText& text, bool& target, std::wstring& value)
{
    const auto read = [&target, &value](const CLI::results_t& values) {
        target = true;
        value = values.back() == "true" ? std::wstring() : FromUtf8(values.back());
        return true;
    };
    addSwitchWithValue(text, read);
}

void COptionReader::addSwitchWithValue(const SOptionText& text, const ReadTexts& read)
{
    m_app->add_option(text.name, read, ToUtf8(text.help))->expected(0)->option_text(ToUtf8(text.value))->take_last();
    m_switchesWithValue.emplace_back(text.name);
}

void COptionReader::AddArgument(const SOptionText& text, std::wstring& target)
{
    m_app->add_option_function<std::string>(
        text.name, [&target](const std::string& value) { target = FromUtf8(value); }, ToUtf8(text.help));
    m_app->get_option(text.name)->type_name("");
}

void COptionReader::AddArguments(const SOptionText& text, std::vector<std::wstring>& target)
{
    m_app->add_option_function<std::vector<std::string>>(text.name, getAppender(target), ToUtf8(text.help))
        ->type_name("");
}

void COptionReader::SetFooter(const std::wstring& footer)
{
    m_app->footer(ToUtf8(footer));
}

bool COptionReader::Read(const std::vector<std::wstring>& arguments)
{
    std::vector<std::string> reversed;
    std::transform(arguments.rbegin(), arguments.rend(), std::back_inserter(reversed), ToUtf8);
    try
    {
        m_app->parse(std::move(reversed));
    }
    catch (const CLI::CallForHelp&)
    {
        return false;
    }
    catch (const CLI::ArgumentMismatch& error)
    {
        const bool isSwitch = std::string(error.what()).find("flag override") != std::string::npos;
        throw LbFormat(
            LbRuntimeFormat(isSwitch ? L"Die Option '%s' hat keinen Wert" : L"Der Option '%s' fehlt ihr Wert"),
            getOptionOf(error));
    }
    catch (const CLI::Error& error)
    {
        throw LbFormat(L"Die Option '%s' kann nicht gelesen werden", getOptionOf(error));
    }
    refuseExtras();
    return true;
}

void COptionReader::refuseExtras() const
{
    const std::vector<std::string> extras = m_app->remaining();
    if (extras.empty())
    {
        return;
    }
    const auto given = std::ranges::find_if(m_switchesWithValue, [this](const std::string& name) {
        return m_app->get_option(name)->results() == CLI::results_t{"true"};
    });
    if (m_takesLibraryOptions &&
        std::ranges::any_of(extras, [](const std::string& one) { return one.starts_with('-'); }))
    {
        throw LbFormat(L"Unbekannte Argumente: %s; Optionen von LuTestSuiteCLI stehen hinter '--'", join(extras));
    }
    throw given == m_switchesWithValue.end()
        ? LbFormat(L"Unbekannte Argumente: %s", join(extras))
        : LbFormat(L"Unbekannte Argumente: %s; ein Wert von '%s' steht hinter '='", join(extras), FromUtf8(*given));
}

std::wstring COptionReader::GetHelp() const
{
    return FromUtf8(m_app->help());
}

} // namespace Runner
