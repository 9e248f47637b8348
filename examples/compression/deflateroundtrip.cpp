#include "base/idebugging.h"
#include "base/lbfilesystem.h"
#include "base/luunittest.h"
#include "examples/support/bytes.h"
#include "examples/support/zlibstreams.h"

namespace
{

constexpr int c_Levels[] = {Z_NO_COMPRESSION, Z_BEST_SPEED, Z_DEFAULT_COMPRESSION, Z_BEST_COMPRESSION};
constexpr int c_Strategies[] = {Z_DEFAULT_STRATEGY, Z_FILTERED, Z_HUFFMAN_ONLY, Z_RLE, Z_FIXED};

} // namespace

/// Inflate restores the bytes that deflate has compressed, in each container, at each level and with each strategy. The
/// bytes are those of each file of the data directory. With verbose output, a case reports the sizes.
class CDeflateRoundTrip : public LuUnitTest, public IDebugging
{
    LB_RTTI(CDeflateRoundTrip)

public:
    bool IsOptionSupported(EOption option) const override { return option == eO_VerboseOutput; }
    void SetOption(EOption /*option*/, bool value) override { m_isVerbose = value; }

    void InitSubtests() override
    {
        AddFileSubtests(L"*", [this](const std::wstring& path) { checkAllSettings(LbFileSystem::ReadFile8Bit(path)); });
        AddSubtest(L"no bytes", [this] { checkAllSettings({}); });
        AddSubtest(L"every byte value", [this] { checkAllSettings(MakeEveryByte()); });
        AddSubtest(L"noise", [this] { checkAllSettings(MakeNoise(c_NoiseSize)); });
        AddSubtest(L"noise grows by no more than a thousandth", [this] { checkGrowthOfNoise(); });
        AddSubtest(L"zeros shrink to a thousandth", [this] { checkZeros(); });
        AddSubtest(L"stream in pieces of one byte", [this] { checkPieces(); });
    }

private:
    static constexpr std::size_t c_NoiseSize = 40'000;

    void checkAllSettings(const std::string& data)
    {
        for (const EContainer container : c_AllContainers)
        {
            for (const int level : c_Levels)
            {
                for (const int strategy : c_Strategies)
                {
                    checkRoundTrip(data, {container, level, strategy});
                }
            }
        }
    }

    void checkRoundTrip(const std::string& data, const SDeflateSettings& settings)
    {
        const std::wstring place = LbFormat(L"%s, level %d, strategy %d", GetContainerName(settings.container),
                                            settings.level, settings.strategy);
        const std::string stream = Deflate(data, settings);
        CInflater inflater(settings.container);
        const int status = inflater.Feed(stream);
        Check(status == Z_STREAM_END, L"%s: %s", place, GetStatusText(status));
        const std::wstring difference = DescribeDifference(data, inflater.GetOutput());
        Check(difference.empty(), L"%s: %s", place, difference);
        if (m_isVerbose)
        {
            Info(L"%s: %u bytes become %u", place, data.size(), stream.size());
        }
    }

    void checkGrowthOfNoise()
    {
        const std::string noise = MakeNoise(c_NoiseSize);
        const std::size_t size = Deflate(noise, {}).size();
        Check(size > noise.size(), L"noise became smaller: %u of %u bytes", size, noise.size());
        Check(size <= noise.size() + noise.size() / 1000, L"%u bytes became %u", noise.size(), size);
    }

    void checkZeros()
    {
        const std::string zeros(1'000'000, '\0');
        const SDeflateSettings smallest = {EContainer::Zlib, Z_BEST_COMPRESSION};
        const std::size_t size = Deflate(zeros, smallest).size();
        Check(size <= zeros.size() / 1000, L"%u zeros became %u bytes", zeros.size(), size);
        checkRoundTrip(zeros, smallest);
    }

    void checkPieces()
    {
        const std::string data = MakeEveryByte() + MakeNoise(1000) + MakeEveryByte();
        const std::string stream = Deflate(data, {EContainer::Gzip});
        CInflater inflater(EContainer::Gzip);
        for (std::size_t offset = 0; offset < stream.size(); ++offset)
        {
            const int status = inflater.Feed(std::string_view(stream).substr(offset, 1));
            const int expected = offset + 1 < stream.size() ? Z_OK : Z_STREAM_END;
            if (!Check(status == expected, L"%s after byte %u of %u", GetStatusText(status), offset, stream.size()))
            {
                return;
            }
        }
        const std::wstring difference = DescribeDifference(data, inflater.GetOutput());
        Check(difference.empty(), L"%s", difference);
    }

    bool m_isVerbose = false;
};

LB_RTTI_CLASS(CDeflateRoundTrip, LuUnitTest)
