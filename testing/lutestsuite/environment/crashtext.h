/// Text that a crashed process writes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace LuTestSuite
{

/// Builds and writes text without using the heap.
class CCrashText
{
public:
    void Add(std::string_view text);

    /// Adds the number in hexadecimal form with "0x".
    void AddNumber(std::uint64_t number);

    /// Adds a name that ends with a null or after `capacity` characters; `capacity` must be less than 2000. Control
    /// characters become spaces.
    void AddName(const char16_t* name, std::size_t capacity);

    /// Writes the text collected so far; a short line is written in one piece.
    void Write();

private:
    char m_bytes[8192] = {};
    std::size_t m_size = 0;
};

} // namespace LuTestSuite
