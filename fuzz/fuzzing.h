/// Shared by the fuzzers.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <span>
#include <string>
#include <string_view>

#include "base/inoncopyable.h"

namespace Fuzzing
{

/// Ends the process unless the condition is true; libFuzzer reports that as a finding.
inline void Check(bool isGood)
{
    if (!isGood)
    {
        std::abort();
    }
}

inline std::string_view GetText(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), size};
}

/// Removes the text up to the next line feed, or all of it, from the front of the input and returns it.
inline std::string_view TakeLine(std::string_view& input)
{
    const std::string_view line = input.substr(0, input.find('\n'));
    input.remove_prefix(line.size() < input.size() ? line.size() + 1 : line.size());
    return line;
}

/// A file for readers that take a path. scripts/fuzz gives each fuzzer its own folder for temporary files, in memory.
class CInputFile : public INonCopyable
{
public:
    /// `name` may begin with a folder, which is created.
    explicit CInputFile(const std::string& name) : m_path(std::filesystem::temp_directory_path() / name)
    {
        std::filesystem::create_directories(m_path.parent_path());
    }

    void Write(std::string_view bytes) const
    {
        std::ofstream file(m_path, std::ios::binary | std::ios::trunc);
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        Check(file.good());
    }

    std::wstring GetPath() const { return m_path.wstring(); }

    /// The folder of the file, with trailing separator.
    std::wstring GetFolder() const { return (m_path.parent_path() / "").wstring(); }

private:
    std::filesystem::path m_path;
};

} // namespace Fuzzing
