/// Test vectors: inputs with their known results, one vector per file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A UTF-8 text file of lines "key: value". Empty lines and lines that begin with "#" are skipped. The values of a key
/// that occurs several times are joined.
class CVectorFile
{
public:
    /// Throws LbException when the file cannot be read or a line has no key.
    explicit CVectorFile(const std::wstring& path);

    bool Has(std::string_view key) const;

    /// The value as text. This and the operations below throw LbException if the key is missing or if its value has
    /// another format.
    std::string GetText(std::string_view key) const;

    /// A value of hexadecimal digits in pairs, blanks ignored.
    std::string GetBytes(std::string_view key) const;

    /// A value of up to eight hexadecimal digits.
    std::uint32_t GetHexNumber(std::string_view key) const;

    /// The plain data: the value of "text", or the bytes of "hex", repeated as often as "repeat" states.
    std::string GetPlainData() const;

private:
    std::vector<std::pair<std::string, std::string>> m_lines;
};
