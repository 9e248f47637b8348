#include "base/lbencoding.h"
#include "base/luunittest.h"
#include "examples/support/bytes.h"
#include "examples/support/vectorfile.h"
#include "examples/support/zlibstreams.h"

/// Streams that violate the format are refused for the right reason. Vectors have the keys "container", "stream",
/// "status" (a text of GetStatusText) and "message" (zlib's own text, if there is one).
class CCorruptedStreams : public LuUnitTest
{
    LB_RTTI(CCorruptedStreams)

public:
    void InitSubtests() override
    {
        AddFileSubtests(L"*.vector", [this](const std::wstring& path) { checkVector(CVectorFile(path)); });
        for (const EContainer container : {EContainer::Zlib, EContainer::Gzip})
        {
            AddSubtest(LbFormat(L"flipped bits (%s)", GetContainerName(container)),
                       [this, container] { checkFlippedBits(container); });
        }
    }

private:
    void checkVector(const CVectorFile& vector)
    {
        CInflater inflater(ParseContainer(LbEncoding::FromUtf8(vector.GetText("container"))));
        const std::wstring status = GetStatusText(inflater.Feed(vector.GetBytes("stream")));
        const std::wstring expectedStatus = LbEncoding::FromUtf8(vector.GetText("status"));
        Check(status == expectedStatus, L"'%s' instead of '%s'", status, expectedStatus);
        const std::string message = inflater.GetErrorMessage();
        const std::string expectedMessage = vector.Has("message") ? vector.GetText("message") : std::string();
        Check(message == expectedMessage, L"zlib says '%S' instead of '%S'", message, expectedMessage);
    }

    /// A stream with a flipped bit is either refused or yields the same data. It yields the same data if the bit
    /// belongs to a header field that is only information, or fills the last byte of the compressed data.
    void checkFlippedBits(EContainer container)
    {
        constexpr int c_BitsPerByte = 8;
        const std::string data = MakeEveryByte() + MakeNoise(100) + MakeEveryByte();
        std::string stream = Deflate(data, {container});
        for (std::size_t offset = 0; offset < stream.size(); ++offset)
        {
            const char original = stream[offset];
            for (int bit = 0; bit < c_BitsPerByte; ++bit)
            {
                stream[offset] = static_cast<char>(original ^ (1 << bit));
                CInflater inflater(container);
                const bool isAccepted = inflater.Feed(stream) == Z_STREAM_END;
                Check(!isAccepted || inflater.GetOutput() == data, L"bit %d of byte %u: other data is accepted", bit,
                      offset);
            }
            stream[offset] = original;
        }
    }
};

LB_RTTI_CLASS(CCorruptedStreams, LuUnitTest)
