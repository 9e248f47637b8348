/// Finds the module of an instruction without the loader, whose lock a crashed thread may hold. Internal to the Linux
/// side.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/os/crash.h"

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

/// Sets module and offset from the address. Makes only system calls.
void FindCrashPlace(SCrash& crash) noexcept;

} // namespace LbOs::Linux
