/// The exception of infrastructure failures.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "base/lbexport.h"
#include "base/lbsourcelocation.h"

/// Carries the place where it was raised: source file (its name without folder and extension), line, and function
/// ("LuTestSuiteTree::Build": qualified, without result and arguments; "Build" where the compiler has no
/// std::source_location), beside an optional message for the user.
class LB_API LbException : public std::exception
{
public:
    /// With the function's own name, as the compiler knows it.
    explicit LbException(std::wstring message = {}, LbSourceLocation where = LbSourceLocation::Current());

    /// With a function name of the caller's choice.
    LbException(const wchar_t* function, std::wstring message, LbSourceLocation where = LbSourceLocation::Current());

    /// With a function and a source file (bare name) of the caller's choice, for a class whose operations stand in many
    /// files.
    LbException(const wchar_t* function, std::wstring message, std::wstring sourceFile, std::uint32_t line);

    ~LbException() override;

    const std::wstring& GetMessageText() const noexcept { return m_message; }
    const std::wstring& GetSourceFile() const noexcept { return m_sourceFile; }
    std::uint32_t GetLine() const noexcept { return m_line; }
    const std::wstring& GetFunction() const noexcept { return m_function; }

    /// All of it in one UTF-8 line: message, then "file(line): function" in parentheses.
    const char* what() const noexcept override;

private:
    std::wstring m_message;
    std::wstring m_sourceFile;
    std::wstring m_function;
    std::uint32_t m_line;
    std::string m_what;
};

/// Inside a handler: the text of the exception that is being handled, for a person: an LbException's message and place,
/// other standard exceptions' what(), wide or narrow texts themselves, "Unbekannte Exception" for all else.
LB_API std::wstring LbDescribeCurrentException();
