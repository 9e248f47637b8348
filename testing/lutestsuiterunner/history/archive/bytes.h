/// Values as bytes in a private file format, and back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "base/lbencoding.h"
#include "base/lbexception.h"

namespace Runner::History
{

class CByteWriter
{
public:
    template<typename T>
    void Write(const T& value)
    {
        static_assert(std::is_arithmetic_v<T>);
        m_bytes.append(reinterpret_cast<const char*>(&value), sizeof(value));
    }

    /// Writes the values without their count.
    template<typename T>
    void WriteAll(const std::vector<T>& values)
    {
        static_assert(std::is_arithmetic_v<T>);
        m_bytes.append(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(T));
    }

    void Write(std::string_view bytes)
    {
        Write(static_cast<std::uint64_t>(bytes.size()));
        m_bytes.append(bytes);
    }

    void Write(const std::wstring& text) { Write(std::string_view(LbEncoding::ToNative(text))); }

    const std::string& GetBytes() const { return m_bytes; }

private:
    std::string m_bytes;
};

/// A view of consecutive values of one type. The bytes must outlive it.
template<typename T>
class CByteColumn
{
public:
    explicit CByteColumn(std::string_view bytes) : m_bytes(bytes) {}

    T operator[](std::size_t index) const
    {
        T value;
        std::memcpy(&value, m_bytes.data() + index * sizeof(T), sizeof(T));
        return value;
    }

private:
    std::string_view m_bytes;
};

/// Throws LbException when the bytes end too early.
class CByteReader
{
public:
    explicit CByteReader(std::string_view bytes) : m_bytes(bytes) {}

    template<typename T>
    T Read()
    {
        static_assert(std::is_arithmetic_v<T>);
        T value;
        std::memcpy(&value, take(sizeof(value)).data(), sizeof(value));
        return value;
    }

    template<typename T>
    CByteColumn<T> ReadColumn(std::size_t count)
    {
        static_assert(std::is_arithmetic_v<T>);
        if (count > m_bytes.size() / sizeof(T))
        {
            throw LbException(L"Der Index endet zu früh");
        }
        return CByteColumn<T>(take(count * sizeof(T)));
    }

    /// The number of entries that follow, each of at least one byte.
    std::size_t ReadCount()
    {
        const auto count = Read<std::uint64_t>();
        if (count > m_bytes.size())
        {
            throw LbException(L"Der Index endet zu früh");
        }
        return static_cast<std::size_t>(count);
    }

    std::string_view ReadBytes() { return take(ReadCount()); }
    std::wstring ReadText() { return LbEncoding::FromNative(ReadBytes()); }

private:
    std::string_view take(std::size_t size)
    {
        if (size > m_bytes.size())
        {
            throw LbException(L"Der Index endet zu früh");
        }
        const std::string_view part = m_bytes.substr(0, size);
        m_bytes.remove_prefix(size);
        return part;
    }

    std::string_view m_bytes;
};

} // namespace Runner::History
