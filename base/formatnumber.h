/// How LbFormat prints numbers and addresses. Not for use outside of LbBase.
#pragma once

#include <cstdint>
#include <string>

#include "base/lbprintf.h"

namespace LbPrintf
{

/// A number or an address; its type determines which of the values is valid.
struct SNumberArgument
{
    SArgumentType type;
    std::uint64_t bits = 0; ///< of an integer or a character, sign-extended to 64 bits
    long double floating = 0;
    const void* address = nullptr;
};

/// Appends an argument that fits the conversion, one of "diouxXeEfFgGaAp" with each "*" already replaced.
void AppendNumber(std::wstring& result, const SConversion& conversion, const SNumberArgument& argument);

} // namespace LbPrintf
