/// The data that Windows stores for a symbolic link or a mount point. Internal to base/os. Only reads bytes, so that it
/// can be tested on systems without such links.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace LbOs
{

/// A little-endian unsigned number of `size` bytes; 0 if `bytes` does not contain all of them.
inline std::uint32_t ReadLinkNumber(std::string_view bytes, std::size_t offset, std::size_t size)
{
    constexpr unsigned c_BitsPerByte = 8;
    std::uint32_t number = 0;
    for (std::size_t index = 0; index < size && offset + size <= bytes.size(); ++index)
    {
        const auto byte = static_cast<unsigned char>(bytes[offset + index]);
        number |= std::uint32_t{byte} << (c_BitsPerByte * static_cast<unsigned>(index));
    }
    return number;
}

/// The target as stored in the link: relative, or with the system's own prefix. Empty if the bytes are incomplete.
inline std::wstring GetTargetOfLinkData(std::string_view bytes)
{
    constexpr std::uint32_t c_SymbolicLink = 0xA000000C;
    constexpr std::size_t c_TargetOffset = 8;
    constexpr std::size_t c_TargetSize = 10;
    constexpr std::size_t c_Names = 16;
    constexpr std::size_t c_Unit = 2;
    // Only symbolic links have a flags word before the names.
    const std::size_t names = c_Names + (ReadLinkNumber(bytes, 0, 4) == c_SymbolicLink ? 4 : 0);
    const std::size_t start = names + ReadLinkNumber(bytes, c_TargetOffset, c_Unit);
    const std::size_t size = ReadLinkNumber(bytes, c_TargetSize, c_Unit);
    std::wstring target;
    for (std::size_t offset = start; offset + c_Unit <= start + size && start + size <= bytes.size(); offset += c_Unit)
    {
        target.push_back(static_cast<wchar_t>(ReadLinkNumber(bytes, offset, c_Unit)));
    }
    return target;
}

} // namespace LbOs
