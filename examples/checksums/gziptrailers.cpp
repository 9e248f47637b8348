#include <cstdint>

#include "base/lbfilesystem.h"
#include "base/luunittest.h"
#include "examples/support/zlibstreams.h"

namespace
{

constexpr std::size_t c_TrailerSize = 8;
constexpr std::size_t c_FieldSize = 4;

std::uint32_t readLittleEndian(std::string_view bytes)
{
    std::uint32_t value = 0;
    for (std::size_t index = c_FieldSize; index-- > 0;)
    {
        value = value << 8U | static_cast<std::uint8_t>(bytes[index]);
    }
    return value;
}

} // namespace

/// The last eight bytes of a gzip file are the CRC-32 and the length of the data. If they are wrong, the file is
/// refused. Each "*.gz" of the data directory is a gzip file with the right trailer.
class CGzipTrailers : public LuUnitTest
{
    LB_RTTI(CGzipTrailers)

public:
    void InitSubtests() override
    {
        AddFileSubtests(L"*.gz", [this](const std::wstring& path) { return runFile(path); });
    }

private:
    EResult runFile(const std::wstring& path)
    {
        const std::string file = LbFileSystem::ReadFile8Bit(path);
        if (file.size() < c_TrailerSize)
        {
            return eR_NoInput;
        }
        checkTrailer(file);
        for (std::size_t offset = file.size() - c_TrailerSize; offset < file.size(); ++offset)
        {
            checkDamage(file, offset);
        }
        return GetResultByErrors();
    }

    void checkTrailer(std::string_view file)
    {
        CInflater inflater(EContainer::Gzip);
        const int status = inflater.Feed(file);
        Check(status == Z_STREAM_END, L"%s: %S", GetStatusText(status), inflater.GetErrorMessage());

        const std::string& data = inflater.GetOutput();
        const std::string_view trailer = file.substr(file.size() - c_TrailerSize);
        const uLong crc = crc32(0, reinterpret_cast<const Bytef*>(data.data()), static_cast<uInt>(data.size()));
        Check(readLittleEndian(trailer) == crc, L"the file says %08X, the data has %08X", readLittleEndian(trailer),
              crc);
        const std::uint32_t length = readLittleEndian(trailer.substr(c_FieldSize));
        Check(length == data.size(), L"the file says %u bytes, the data has %u", length, data.size());
    }

    void checkDamage(std::string file, std::size_t offset)
    {
        file[offset] = static_cast<char>(~file[offset]);
        CInflater inflater(EContainer::Gzip);
        const int status = inflater.Feed(file);
        Check(status == Z_DATA_ERROR, L"byte %u of %u is wrong: %s", offset, file.size(), GetStatusText(status));
    }
};

LB_RTTI_CLASS(CGzipTrailers, LuUnitTest)
