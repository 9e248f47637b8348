/// The properties of a suite in junit.xml.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Runner
{

/// The elements that list cases of special kinds. Their lists are cut at a part of the file's size.
class CJunitProperties
{
public:
    explicit CJunitProperties(std::size_t room) : m_room(room) {}

    void Add(const char* property, const std::wstring& name);

    /// The lines since the last call, and how many names are left out.
    std::string Take();

private:
    std::size_t m_room;
    std::uint64_t m_leftOut = 0;
    std::string m_lines;
};

} // namespace Runner
