#include "base/lbfilesystem.h"
#include "base/luunittest.h"
#include "examples/support/bytes.h"
#include "examples/support/zlibstreams.h"

/// A stream that is cut at any byte is neither complete nor corrupted. It yields the beginning of the data; if the
/// missing rest follows, it yields all data. Each file of the data directory is compressed and cut at every byte.
class CTruncatedStreams : public LuUnitTest
{
    LB_RTTI(CTruncatedStreams)

public:
    void InitSubtests() override
    {
        AddFileSubtests(L"*.txt", [this](const std::wstring& path) { checkAllCuts(LbFileSystem::ReadFile8Bit(path)); });
        AddSubtest(L"nothing at all", [this] { checkNothing(); });
        AddSubtest(L"checksum missing", [this] { checkMissingChecksum(); });
    }

private:
    void checkAllCuts(const std::string& data)
    {
        for (const EContainer container : c_AllContainers)
        {
            const std::string stream = Deflate(data, {container});
            for (std::size_t size = 0; size < stream.size(); ++size)
            {
                checkCut(container, data, stream, size);
            }
        }
    }

    void checkCut(EContainer container, const std::string& data, std::string_view stream, std::size_t size)
    {
        const std::wstring place = LbFormat(L"%s, %u of %u bytes", GetContainerName(container), size, stream.size());
        CInflater inflater(container);
        const int status = inflater.Feed(stream.substr(0, size));
        Check(status == Z_OK, L"%s: %s", place, GetStatusText(status));
        Check(data.starts_with(inflater.GetOutput()), L"%s: the output is not the beginning of the data", place);

        const int finalStatus = inflater.Feed(stream.substr(size));
        Check(finalStatus == Z_STREAM_END, L"%s, then the rest: %s", place, GetStatusText(finalStatus));
        const std::wstring difference = DescribeDifference(data, inflater.GetOutput());
        Check(difference.empty(), L"%s, then the rest: %s", place, difference);
    }

    void checkNothing()
    {
        for (const EContainer container : c_AllContainers)
        {
            CInflater inflater(container);
            const int status = inflater.Feed({});
            Check(status == Z_OK, L"%s: %s", GetContainerName(container), GetStatusText(status));
            Check(inflater.GetOutput().empty(), L"%s: output without input", GetContainerName(container));
        }
    }

    /// Without its checksum, the stream yields the complete data but must not count as complete.
    void checkMissingChecksum()
    {
        constexpr std::size_t c_AdlerSize = 4;
        const std::string data = MakeEveryByte();
        const std::string stream = Deflate(data, {EContainer::Zlib});
        CInflater inflater(EContainer::Zlib);
        const int status = inflater.Feed(std::string_view(stream).substr(0, stream.size() - c_AdlerSize));
        Check(status == Z_OK, L"%s", GetStatusText(status));
        const std::wstring difference = DescribeDifference(data, inflater.GetOutput());
        Check(difference.empty(), L"%s", difference);
    }
};

LB_RTTI_CLASS(CTruncatedStreams, LuUnitTest)
