/// Call stacks as records.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace LbOs
{

/// Unknown fields are empty or 0.
struct SStackFrame
{
    std::uint64_t address = 0; ///< of the next instruction: the one after the call, except in the innermost frame
    std::wstring module;       ///< file name without folder
    std::uint64_t offset = 0;  ///< of the address from the start of the loaded module
    std::wstring function;     ///< readable, with parameters
    std::wstring file;         ///< source file, as the compiler knew it
    std::uint32_t line = 0;
};

/// The calls of one thread.
struct SThreadStack
{
    static constexpr std::size_t sc_uiMostFrames = 32;

    std::uint64_t thread = 0; ///< the system's id
    bool isAtFault = false;
    std::vector<SStackFrame> frames; ///< the innermost first
};

} // namespace LbOs
