#include "testing/lutestsuite/lutestsuitedatasetfile.h"

#include <utility>

namespace LuTestSuite
{

LuDataSetFile::LuDataSetFile() noexcept = default;

LuDataSetFile::LuDataSetFile(std::wstring path)
    : m_path(path.empty() ? nullptr : std::make_unique<const std::wstring>(std::move(path)))
{
}

LuDataSetFile::LuDataSetFile(const wchar_t* path) : LuDataSetFile(std::wstring(path)) {}

LuDataSetFile::LuDataSetFile(std::shared_ptr<const LbFileListing> listing, std::uint32_t rank) noexcept
    : m_listing(std::move(listing)), m_rank(rank)
{
}

LuDataSetFile::LuDataSetFile(const LuDataSetFile& other)
    : m_listing(other.m_listing), m_rank(other.m_rank),
      // Does not copy a text that can be created again from the listing.
      m_path(other.m_listing || !other.m_path ? nullptr : std::make_unique<const std::wstring>(*other.m_path))
{
}

LuDataSetFile::LuDataSetFile(LuDataSetFile&& other) noexcept = default;

LuDataSetFile& LuDataSetFile::operator=(const LuDataSetFile& other)
{
    return *this = LuDataSetFile(other);
}

LuDataSetFile& LuDataSetFile::operator=(LuDataSetFile&& other) noexcept = default;

LuDataSetFile::~LuDataSetFile() = default;

const std::wstring& LuDataSetFile::GetPath() const
{
    static const std::wstring& s_empty = *new std::wstring;
    if (!m_path && m_listing)
    {
        std::wstring path(m_listing->GetDirectory());
        path += m_listing->GetName(m_rank);
        m_path = std::make_unique<const std::wstring>(std::move(path));
    }
    return m_path ? *m_path : s_empty;
}

} // namespace LuTestSuite
