#include "testing/lutestsuiterunner/reports/junitproperties.h"

#include <utility>

#include "testing/lutestsuiterunner/reports/xmltext.h"

namespace Runner
{

namespace
{

std::string make(const char* property, const std::string& value)
{
    return "\t\t\t<property name=\"" + std::string(property) + "\" value=\"" + value + "\"/>\n";
}

} // namespace

void CJunitProperties::Add(const char* property, const std::wstring& name)
{
    std::string line = make(property, ToXmlAttribute(name));
    if (line.size() > m_room)
    {
        m_room = 0;
        ++m_leftOut;
        return;
    }
    m_room -= line.size();
    m_lines += line;
}

std::string CJunitProperties::Take()
{
    const std::string rest = m_leftOut == 0 ? std::string() : make("left-out", std::to_string(m_leftOut));
    m_leftOut = 0;
    return std::exchange(m_lines, {}) + rest;
}

} // namespace Runner
