/// The executable parts of library files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Offsets of the first byte and of the byte after the last one.
struct SFunction
{
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// An executable section of a file.
struct SCodeSection
{
    std::uint64_t address = 0;
    std::vector<std::uint8_t> bytes;
    std::vector<std::size_t> entries; ///< offsets of exported functions; only for Windows libraries
    std::vector<SFunction> functions; ///< functions in the unwind table; only for Windows libraries
};

/// The code sections of an ELF or PE library for x86-64; empty for other files.
std::vector<SCodeSection> ReadCodeSections(const std::string& path);
