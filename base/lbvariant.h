/// A value of one of a few types, with conversions that report failure.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>

#include "base/lbexport.h"

/// Null, bool, 32- or 64-bit integer, double or wide text. A plain value; one thread at a time.
class LB_API LbVariant
{
public:
    LbVariant() = default;
    LbVariant(bool value) : m_value(value) {}
    LbVariant(std::int32_t value) : m_value(value) {}
    LbVariant(std::uint32_t value) : m_value(value) {}
    LbVariant(std::int64_t value) : m_value(value) {}
    LbVariant(std::uint64_t value) : m_value(value) {}
    LbVariant(double value) : m_value(value) {}
    LbVariant(std::wstring value) : m_value(std::move(value)) {}
    LbVariant(const wchar_t* value) : m_value(std::wstring(value)) {}

    bool IsNull() const noexcept { return std::holds_alternative<std::monostate>(m_value); }

    /// Converts bools, numbers (true unless zero), and the texts "true" and "false". Empty for null and all other
    /// texts.
    std::optional<bool> ToBool() const;

    /// Converts numbers without a fraction, texts of decimal digits only, and bools (to 0 or 1). Empty for all other
    /// values, and for values outside of the range of the result.
    std::optional<std::uint32_t> ToUInt32() const;

    friend bool operator==(const LbVariant&, const LbVariant&) = default;

private:
    std::variant<std::monostate, bool, std::int32_t, std::uint32_t, std::int64_t, std::uint64_t, double, std::wstring>
        m_value;
};
