#include "base/lbencoding.h"
#include "base/luunittest.h"
#include "examples/support/bytes.h"
#include "examples/support/vectorfile.h"
#include "examples/support/zlibstreams.h"

/// Streams of other encoders and settings are decompressed to the known data, in one piece and byte by byte. Vectors
/// have the keys "container", "stream" and the plain data.
class CDeflateVectors : public LuUnitTest
{
    LB_RTTI(CDeflateVectors)

public:
    void InitSubtests() override
    {
        AddFileSubtests(L"*.vector", [this](const std::wstring& path) { checkVector(CVectorFile(path)); });
        AddSubtest(L"bytes behind the end are left alone", [this] { checkBytesBehind(); });
    }

private:
    void checkVector(const CVectorFile& vector)
    {
        const EContainer container = ParseContainer(LbEncoding::FromUtf8(vector.GetText("container")));
        const std::string stream = vector.GetBytes("stream");
        const std::string data = vector.GetPlainData();
        checkPieces(container, stream, data, stream.size());
        checkPieces(container, stream, data, 1);
    }

    void checkPieces(EContainer container, std::string_view stream, const std::string& data, std::size_t pieceSize)
    {
        CInflater inflater(container);
        int status = Z_OK;
        for (std::size_t offset = 0; offset < stream.size() && status == Z_OK; offset += pieceSize)
        {
            status = inflater.Feed(stream.substr(offset, pieceSize));
        }
        Check(status == Z_STREAM_END, L"pieces of %u: %s after byte %u: %S", pieceSize, GetStatusText(status),
              inflater.GetConsumed(), inflater.GetErrorMessage());
        Check(inflater.GetConsumed() == stream.size(), L"pieces of %u: %u of %u bytes belong to the stream", pieceSize,
              inflater.GetConsumed(), stream.size());
        const std::wstring difference = DescribeDifference(data, inflater.GetOutput());
        Check(difference.empty(), L"pieces of %u: %s", pieceSize, difference);
    }

    void checkBytesBehind()
    {
        const std::string data = MakeEveryByte();
        for (const EContainer container : c_AllContainers)
        {
            const std::string stream = Deflate(data, {container});
            CInflater inflater(container);
            const int status = inflater.Feed(stream + "what follows");
            Check(status == Z_STREAM_END, L"%s: %s", GetContainerName(container), GetStatusText(status));
            Check(inflater.GetConsumed() == stream.size(), L"%s: %u bytes taken, the stream has %u",
                  GetContainerName(container), inflater.GetConsumed(), stream.size());
        }
    }
};

LB_RTTI_CLASS(CDeflateVectors, LuUnitTest)
