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

    /// Bool: itself; numbers: not zero; texts: exactly "true" or "false". Nothing for null and all other texts.
    std::optional<bool> ToBool() const;

    /// Numbers within the range of the result, without a fraction; bools as 0 and 1; texts of decimal digits only,
    /// within the range. Nothing for all else.
    std::optional<std::uint32_t> ToUInt32() const;

    friend bool operator==(const LbVariant&, const LbVariant&) = default;

private:
    std::variant<std::monostate, bool, std::int32_t, std::uint32_t, std::int64_t, std::uint64_t, double, std::wstring>
        m_value;
};
