/// Finds the module of an instruction without the loader, whose lock a crashed thread may hold. Internal to the Linux
/// side.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace LbOs::Linux
{

/// One line of the kernel's list of mappings: "start-end rights offset device node   path".
struct SMapping
{
    std::uintptr_t start = 0;
    std::uintptr_t end = 0;
    std::string_view path; ///< part of the line; empty if no file is mapped
};

SMapping ParseMapping(std::string_view line) noexcept;

/// Finds the module of an instruction: its bare name, cut to the size of `module` and ended with a null, and the offset
/// of the instruction in it. Leaves `module` and `offset` unchanged if the address belongs to no mapping. Makes only
/// system calls.
void FindCrashPlace(std::uintptr_t address, std::span<char> module, std::uintptr_t& offset) noexcept;

} // namespace LbOs::Linux
