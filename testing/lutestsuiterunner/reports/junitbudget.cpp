#include "testing/lutestsuiterunner/reports/junitbudget.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "testing/lutestsuiterunner/reports/fairshare.h"
#include "testing/lutestsuiterunner/reports/xmltext.h"

namespace Runner
{

namespace
{

constexpr std::string_view c_CutNote = "\n[... gekürzt, vollständig im Journal]\n";

} // namespace

void CJunitBudget::Learn(const SJunitCase& element)
{
    const std::size_t frame = element.start.size() + element.end.size();
    (element.IsRed() ? m_redFrames : m_otherFrames) += frame;
    m_texts.push_back(element.text.size());
}

void CJunitBudget::Decide()
{
    // Texts get the space that the frames of the elements leave. Frames of failed cases come first.
    const std::size_t room = m_limit - std::min(m_limit, m_fixed);
    m_redRoom = std::min(m_redFrames, room);
    m_otherRoom = std::min(m_otherFrames, room - m_redRoom);
    m_longestText = GetFairShare(std::move(m_texts), room - m_redRoom - m_otherRoom);
}

bool CJunitBudget::Take(SJunitCase& element)
{
    const std::size_t frame = element.start.size() + element.end.size();
    std::size_t& room = element.IsRed() ? m_redRoom : m_otherRoom;
    if (frame > room)
    {
        room = 0;
        return false;
    }
    room -= frame;
    if (element.text.size() > m_longestText)
    {
        CutXmlText(element.text, m_longestText - std::min(m_longestText, c_CutNote.size()));
        element.text += m_longestText < c_CutNote.size() ? std::string_view() : c_CutNote;
    }
    return true;
}

} // namespace Runner
