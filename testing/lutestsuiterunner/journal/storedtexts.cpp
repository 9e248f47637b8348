#include "testing/lutestsuiterunner/journal/storedtexts.h"

#include <algorithm>
#include <array>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "base/os/files.h"
#include "testing/lutestsuiterunner/journal/checksum.h"
#include "testing/lutestsuiterunner/journal/filenames.h"
#include "testing/lutestsuiterunner/journal/numbertext.h"

namespace Runner
{

namespace
{

/// Texts are read in pieces, because their size comes from a file that may be damaged.
constexpr std::size_t c_Piece = 65536;

constexpr const wchar_t* c_Lost = L"(Text verloren)\n";

} // namespace

CStoredTexts::CStoredTexts(const std::wstring& folder, std::uint32_t journal)
    : m_name(GetOutputName(journal)), m_path(folder + LbPath::ToNative(LbEncoding::FromUtf8(m_name)))
{
}

std::string CStoredTexts::Load(const STextPlace& place)
{
    if (!m_file)
    {
        if (LbOs::QueryEntry(m_path) == LbOs::EEntry::Missing)
        {
            return LbEncoding::ToUtf8(c_Lost);
        }
        m_file = std::make_unique<LuStreamReadBinaryFile>(m_path);
    }
    if (place.file == m_name && place.offset >= m_position)
    {
        skip(place.offset - m_position);
        const std::string text = read(place.size);
        m_position = place.offset + text.size();
        const auto checksum = ToHexadecimal(GetChecksum(text));
        if (std::string_view(checksum.data(), checksum.size()) == place.checksum)
        {
            return text;
        }
        // After a crash, some file systems contain zeros in place of bytes that were not yet written.
        if (text.size() < place.size || (text.back() == '\0' && isRestZero()))
        {
            return LbEncoding::ToUtf8(c_Lost);
        }
    }
    throw LbException(LbFormat(L"Die Datei %s ist beschädigt: Text ab Byte %u", m_path, place.offset));
}

void CStoredTexts::skip(std::uint64_t size)
{
    for (std::array<char, c_Piece> bytes; size > 0;)
    {
        const std::size_t count = m_file->Read(bytes.data(), std::min<std::uint64_t>(size, bytes.size()));
        size = count == 0 ? 0 : size - count;
    }
}

std::string CStoredTexts::read(std::uint64_t size)
{
    std::string text;
    for (std::array<char, c_Piece> bytes; text.size() < size;)
    {
        const std::size_t count = m_file->Read(bytes.data(), std::min<std::uint64_t>(size - text.size(), bytes.size()));
        if (count == 0)
        {
            break;
        }
        text.append(bytes.data(), count);
    }
    return text;
}

bool CStoredTexts::isRestZero()
{
    for (std::array<char, c_Piece> bytes; true;)
    {
        const std::size_t count = m_file->Read(bytes.data(), bytes.size());
        if (std::any_of(bytes.begin(), bytes.begin() + count, [](char byte) { return byte != '\0'; }))
        {
            return false;
        }
        if (count == 0)
        {
            return true;
        }
    }
}

} // namespace Runner
