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

/// Appends a number or an address. Precondition: the conversion is one of "diouxXeEfFgGaAp", accepts the argument, and
/// already contains the values of "*" as width and precision.
void AppendNumber(std::wstring& result, const SConversion& conversion, const SNumberArgument& argument);

} // namespace LbPrintf
