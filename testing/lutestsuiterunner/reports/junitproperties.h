/// The properties of a suite in junit.xml.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace Runner
{

/// Makes the elements that list cases of special kinds, such as quarantined ones. Omits all names beyond `room` bytes.
class CJunitProperties
{
public:
    explicit CJunitProperties(std::size_t room) : m_room(room) {}

    void Add(const char* property, const std::wstring& name);

    /// Returns the lines added since the last call, and an element with the number of omitted names.
    std::string Take();

private:
    std::size_t m_room;
    std::uint64_t m_leftOut = 0;
    std::string m_lines;
};

} // namespace Runner
