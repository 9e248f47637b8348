/// The exception of infrastructure failures.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "base/lbexport.h"
#include "base/lbsourcelocation.h"

/// Contains an optional message for the user, and the location where it was thrown: source file (name without folder
/// and extension), line, and function. The function is qualified, without result and arguments
/// ("LuTestSuiteTree::Build"); if the compiler has no std::source_location, it is the bare name ("Build").
class LB_API LbException : public std::exception
{
public:
    /// Uses the calling function's name as the compiler provides it.
    explicit LbException(std::wstring message = {}, LbSourceLocation where = LbSourceLocation::Current());

    /// Uses a given function name.
    LbException(const wchar_t* function, std::wstring message, LbSourceLocation where = LbSourceLocation::Current());

    /// Uses a given function name and source file (bare name), for classes whose operations are defined in many files.
    LbException(const wchar_t* function, std::wstring message, std::wstring sourceFile, std::uint32_t line);

    ~LbException() override;

    const std::wstring& GetMessageText() const noexcept { return m_message; }
    const std::wstring& GetSourceFile() const noexcept { return m_sourceFile; }
    std::uint32_t GetLine() const noexcept { return m_line; }
    const std::wstring& GetFunction() const noexcept { return m_function; }

    /// The complete text as one UTF-8 line: message, then "file(line): function" in parentheses.
    const char* what() const noexcept override;

private:
    std::wstring m_message;
    std::wstring m_sourceFile;
    std::wstring m_function;
    std::uint32_t m_line;
    std::string m_what;
};

/// Describes the current exception for users: message and location of an LbException, what() of other standard
/// exceptions, a thrown text (wide or narrow) itself, otherwise "Unbekannte Exception". Call it only inside a handler.
LB_API std::wstring LbDescribeCurrentException();
