#include <cstdint>
#include <string>

#include "base/luunittest.h"
#include "examples/support/bytes.h"
#include "examples/support/zlibstreams.h"

namespace
{

uLong getCrc(const std::string& data)
{
    return crc32(0, reinterpret_cast<const Bytef*>(data.data()), static_cast<uInt>(data.size()));
}

/// The bytes of a CRC in the order in which they must be appended to the data.
std::string toLittleEndian(uLong value)
{
    std::string bytes;
    for (unsigned shift = 0; shift < 32; shift += 8)
    {
        bytes += static_cast<char>(value >> shift);
    }
    return bytes;
}

} // namespace

/// Tests properties of the checksums of any data. The class needs no data, but a folder with its name must exist.
class CChecksumProperties : public LuUnitTest
{
    LB_RTTI(CChecksumProperties)

public:
    void InitSubtests() override
    {
        AddSubtest(L"crc-32 of data with its own crc-32 behind it is a constant", [this] { checkResidue(); });
        AddSubtest(L"crc-32 notices every burst of up to 32 bits", [this] { checkBursts(); });
        AddSubtest(L"adler-32 notices exchanged bytes", [this] { checkExchange(); });
        AddSubtest(L"adler-32 wraps at 65521", [this] { checkModulus(); });
    }

private:
    void checkResidue()
    {
        constexpr uLong c_Residue = 0x2144DF1C;
        for (std::size_t size = 0; size < 300; ++size)
        {
            const std::string data = MakeNoise(size);
            const uLong residue = getCrc(data + toLittleEndian(getCrc(data)));
            Check(residue == c_Residue, L"%u bytes: %08X instead of %08X", size, residue, c_Residue);
        }
    }

    /// Flips the first and the last bit of each burst, and every third bit between them. The CRC must notice that.
    void checkBursts()
    {
        const std::string data = MakeNoise(64);
        const uLong crc = getCrc(data);
        constexpr std::size_t c_LongestBurst = 32;
        for (std::size_t first = 0; first + c_LongestBurst <= data.size() * 8; ++first)
        {
            for (std::size_t length = 1; length <= c_LongestBurst; ++length)
            {
                std::string damaged = data;
                flipBit(damaged, first);
                for (std::size_t bit = first + 1; bit + 1 < first + length; bit += 3)
                {
                    flipBit(damaged, bit);
                }
                if (length > 1)
                {
                    flipBit(damaged, first + length - 1);
                }
                Check(getCrc(damaged) != crc, L"%u bits from bit %u go unnoticed", length, first);
            }
        }
    }

    static void flipBit(std::string& data, std::size_t bit)
    {
        data[bit / 8] = static_cast<char>(data[bit / 8] ^ (1 << (bit % 8)));
    }

    void checkExchange()
    {
        const uLong start = adler32(0, nullptr, 0);
        const uLong inOrder = adler32(start, reinterpret_cast<const Bytef*>("ab"), 2);
        const uLong exchanged = adler32(start, reinterpret_cast<const Bytef*>("ba"), 2);
        Check(inOrder != exchanged, L"both are %08X", inOrder);
    }

    /// The lower half is 1 plus the sum of the bytes, modulo 65521. 257 bytes of 254 and one of 242 add up to 65520, so
    /// the lower half is 0.
    void checkModulus()
    {
        constexpr uLong c_LowerHalf = 0xFFFF;
        const std::string data = std::string(257, '\xFE') + '\xF2';
        const uLong checksum = adler32(1, reinterpret_cast<const Bytef*>(data.data()), static_cast<uInt>(data.size()));
        Check((checksum & c_LowerHalf) == 0, L"the lower half is %u", checksum & c_LowerHalf);
    }
};

LB_RTTI_CLASS(CChecksumProperties, LuUnitTest)
