/// The executable parts of library files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// Offsets of the first byte and of the one behind the last.
struct SFunction
{
    std::size_t begin = 0;
    std::size_t end = 0;
};

/// Bytes of a file that the processor would run.
struct SCodeSection
{
    std::uint64_t address = 0;
    std::vector<std::uint8_t> bytes;
    std::vector<std::size_t> entries; ///< offsets of exported functions; only for Windows libraries
    std::vector<SFunction> functions; ///< those that the table for unwinding tells of; only for Windows libraries
};

/// The sections of instructions of a Linux (ELF) or Windows (PE) library for x86-64; empty when the file is neither.
std::vector<SCodeSection> ReadCodeSections(const std::string& path);
