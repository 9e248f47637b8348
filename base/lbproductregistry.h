/// The products that the process runs.
#pragma once

#include <optional>
#include <string>

#include "base/lbexport.h"

namespace LbProductRegistry
{

/// A product that the process runs.
struct SProduct
{
    std::wstring name;
    std::wstring version;
};

/// Registers a product, replacing one of the same name. Callable from any thread.
LB_API void Register(const std::wstring& name, const std::wstring& version);

/// The registered product of that name, if any.
LB_API std::optional<SProduct> Find(const std::wstring& name);

} // namespace LbProductRegistry
