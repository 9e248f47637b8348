#include <algorithm>
#include <cstdint>

#include "base/luunittest.h"
#include "examples/support/vectorfile.h"
#include "examples/support/zlibstreams.h"

namespace
{

struct SChecksum
{
    const char* key;
    uLong (*update)(uLong checksum, const Bytef* data, uInt size);
    uLong (*combine)(uLong first, uLong second, z_off_t secondSize);
};

constexpr SChecksum c_Checksums[] = {
    {"crc32", crc32, crc32_combine},
    {"adler32", adler32, adler32_combine},
};

uLong getStart(const SChecksum& checksum)
{
    return checksum.update(0, nullptr, 0);
}

uLong update(const SChecksum& checksum, uLong start, std::string_view data)
{
    return checksum.update(start, reinterpret_cast<const Bytef*>(data.data()), static_cast<uInt>(data.size()));
}

} // namespace

/// Tests CRC-32 and Adler-32 of known data. Vectors have the plain data and the keys "crc32" and "adler32". The known
/// value must result from the whole data, from two parts one after the other, and from the combined checksums of two
/// parts.
class CChecksumVectors : public LuUnitTest
{
    LB_RTTI(CChecksumVectors)

public:
    void InitSubtests() override
    {
        AddFileSubtests(L"*.vector", [this](const std::wstring& path) { checkVector(CVectorFile(path)); });
    }

private:
    void checkVector(const CVectorFile& vector)
    {
        const std::string data = vector.GetPlainData();
        for (const SChecksum& checksum : c_Checksums)
        {
            const std::uint32_t expected = vector.GetHexNumber(checksum.key);
            const uLong whole = update(checksum, getStart(checksum), data);
            Check(whole == expected, L"%S of %u bytes is %08X instead of %08X", checksum.key, data.size(), whole,
                  expected);
            checkParts(checksum, data, whole);
        }
    }

    /// Splits long data at about 64 places and short data everywhere.
    void checkParts(const SChecksum& checksum, std::string_view data, uLong whole)
    {
        constexpr std::size_t c_Splits = 64;
        const std::size_t step = std::max<std::size_t>(1, data.size() / c_Splits);
        for (std::size_t split = 0; split <= data.size(); split += step)
        {
            const uLong first = update(checksum, getStart(checksum), data.substr(0, split));
            const uLong continued = update(checksum, first, data.substr(split));
            Check(continued == whole, L"%S in two steps, split at %u, is %08X instead of %08X", checksum.key, split,
                  continued, whole);
            const uLong second = update(checksum, getStart(checksum), data.substr(split));
            const uLong combined = checksum.combine(first, second, static_cast<z_off_t>(data.size() - split));
            Check(combined == whole, L"%S combined, split at %u, is %08X instead of %08X", checksum.key, split,
                  combined, whole);
        }
    }
};

LB_RTTI_CLASS(CChecksumVectors, LuUnitTest)
