/// How LbFormat prints numbers and addresses. Not for use outside of LbBase.
#pragma once

#include <string>

#include "base/lbformat.h"

namespace LbPrintf
{

/// Appends an argument that fits the conversion, one of "diouxXeEfFgGaAp" with each "*" already replaced.
void AppendNumber(std::wstring& result, const SConversion& conversion, const LbFormatArgument& argument);

} // namespace LbPrintf
