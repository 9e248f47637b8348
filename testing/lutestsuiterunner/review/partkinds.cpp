#include "testing/lutestsuiterunner/review/partkinds.h"

namespace Runner
{

void CPartKinds::Add(const SPartNames& part)
{
    SKind& kind = m_kinds[part.kind];
    kind.variants.insert(part.checksum);
    ++kind.places;
}

bool CPartKinds::AreOne(const std::wstring& kind) const
{
    // With more variants, the user would have to make too many decisions on one cause. If there are fewer variants, and
    // each occurs in several files, the variants may have different causes.
    constexpr std::size_t c_MostVariants = 15;
    const auto found = m_kinds.find(kind);
    if (found == m_kinds.end())
    {
        return false;
    }
    const std::size_t variants = found->second.variants.size();
    return variants > c_MostVariants || (variants > 1 && found->second.places < 2 * variants);
}

} // namespace Runner
