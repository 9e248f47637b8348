/// A place in source code; as a default argument, the place of the call.
#pragma once

#include <cstdint>
#include <string_view>
#include <version>

#ifdef __cpp_lib_source_location
#include <source_location>
#endif

/// Replaces std::source_location, which some compilers do not have. Its layout and its name in symbols are the same
/// with every compiler, so that modules and libraries built with different compilers work together. The texts live as
/// long as the module that they come from.
///
///     void Fail(LbSourceLocation where = LbSourceLocation::Current());
class LbSourceLocation
{
public:
    /// No location: line 0 and empty texts.
    constexpr LbSourceLocation() noexcept = default;
    constexpr LbSourceLocation(const char* file, const char* function, std::uint32_t line) noexcept
        : m_file(file), m_function(function), m_line(line)
    {
    }

#ifdef __cpp_lib_source_location
    static constexpr LbSourceLocation Current(std::source_location where = std::source_location::current()) noexcept
    {
        return {where.file_name(), where.function_name(), where.line()};
    }
#else
    static constexpr LbSourceLocation Current(const char* file = __builtin_FILE(),
                                              const char* function = __builtin_FUNCTION(),
                                              std::uint32_t line = __builtin_LINE()) noexcept
    {
        return {file, function, line};
    }
#endif

    /// The source file's path as passed to the compiler, in UTF-8.
    constexpr const char* GetFile() const noexcept
    {
        return m_file;
    }
    /// The file without its folders.
    constexpr std::string_view GetFileName() const noexcept
    {
        const std::string_view file = m_file;
        return file.substr(file.find_last_of("/\\") + 1);
    }
    /// The function as the compiler names it: the whole signature; without std::source_location the bare name.
    constexpr const char* GetFunction() const noexcept
    {
        return m_function;
    }
    /// The line, from 1; 0 if there is no location.
    constexpr std::uint32_t GetLine() const noexcept
    {
        return m_line;
    }

private:
    const char* m_file = "";
    const char* m_function = "";
    std::uint32_t m_line = 0;
};
