/// Test vectors: inputs with their known results, one vector a file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A UTF-8 text file of lines "key: value". Empty lines and those that begin with "#" are skipped. A key that stands
/// several times has the joined values.
class CVectorFile
{
public:
    /// Throws LbException when the file cannot be read or a line has no key.
    explicit CVectorFile(const std::wstring& path);

    bool Has(std::string_view key) const;

    /// The value as it stands. This and the readers below throw LbException when the key is missing or its value is not
    /// of the kind asked for.
    std::string GetText(std::string_view key) const;

    /// A value of hexadecimal digits in pairs, blanks ignored.
    std::string GetBytes(std::string_view key) const;

    /// A value of up to eight hexadecimal digits.
    std::uint32_t GetHexNumber(std::string_view key) const;

    /// The plain data: the key "text" (as it stands) or "hex" (bytes), as many times as "repeat" says.
    std::string GetPlainData() const;

private:
    std::vector<std::pair<std::string, std::string>> m_lines;
};
