/// The parser of command-line options.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "testing/lutestsuite/lutestsuiteutils.h"

/// Compares each argument with the options in order of registration and applies the first that matches. The value of an
/// option is the next argument; the form name=value is not supported.
class LuTestSuiteUtils::LuOptionParser
{
public:
    /// Copies all arguments except the first, the program's name.
    LuOptionParser(int argumentCount, const wchar_t* const* arguments);

    /// An argument that begins with one of these characters is an option.
    void SetPrefixes(std::wstring prefixes) { m_prefixes = std::move(prefixes); }

    /// Sets the list that receives the arguments that are neither options nor values. The list must outlive Parse.
    void SetStrayArguments(std::vector<std::wstring>* strayArguments) { m_strayArguments = strayArguments; }

    /// Registers a flag; blanks separate its names. Parse applies it by calling `action(target)`.
    template<typename Target>
    void RegisterOption(const std::wstring& names, Target& target, std::function<void(Target&)> action)
    {
        m_options.push_back(std::make_unique<SFlagHandler<Target>>(names, target, std::move(action)));
    }

    /// Registers an option that takes a value. Parse applies it by calling `action(target, value)`.
    template<typename Target>
    void RegisterOptionWithValue(const std::wstring& names, Target& target,
                                 std::function<void(Target&, const std::wstring&)> action)
    {
        m_options.push_back(std::make_unique<SValueHandler<Target>>(names, target, std::move(action)));
    }

    /// Applies the options in the order of the arguments. Throws a German message as std::wstring at the first unknown
    /// option or missing value; the options before it stay applied.
    void Parse() const;

private:
    /// One registered option.
    struct SFunctionHandler
    {
        SFunctionHandler(const std::wstring& nameList, bool withValue);
        virtual ~SFunctionHandler();
        virtual void Apply();
        virtual void Apply(const std::wstring& value);

        bool Matches(const std::wstring& argument) const;

        std::vector<std::wstring> names;
        bool takesValue;
    };

    template<typename Target>
    struct SFlagHandler : SFunctionHandler
    {
        SFlagHandler(const std::wstring& nameList, Target& optionTarget, std::function<void(Target&)> optionAction)
            : SFunctionHandler(nameList, false), target(&optionTarget), action(std::move(optionAction))
        {
        }
        void Apply() override { action(*target); }
        using SFunctionHandler::Apply;

        Target* target;
        std::function<void(Target&)> action;
    };

    template<typename Target>
    struct SValueHandler : SFunctionHandler
    {
        SValueHandler(const std::wstring& nameList, Target& optionTarget,
                      std::function<void(Target&, const std::wstring&)> optionAction)
            : SFunctionHandler(nameList, true), target(&optionTarget), action(std::move(optionAction))
        {
        }
        void Apply(const std::wstring& value) override { action(*target, value); }
        using SFunctionHandler::Apply;

        Target* target;
        std::function<void(Target&, const std::wstring&)> action;
    };

    bool isOption(const std::wstring& argument) const;
    SFunctionHandler& findOption(const std::wstring& argument) const;
    std::wstring getValueAfter(std::size_t index) const;

    std::wstring m_prefixes;
    std::vector<std::wstring> m_arguments;
    std::vector<std::unique_ptr<SFunctionHandler>> m_options;
    std::vector<std::wstring>* m_strayArguments = nullptr;
};
