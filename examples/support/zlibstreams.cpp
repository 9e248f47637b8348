#include "examples/support/zlibstreams.h"

#include <array>

#include "base/lbexception.h"
#include "base/lbformat.h"

namespace
{

/// zlib's default, for which its header has no name.
constexpr int c_MemoryLevel = 8;

struct SContainerRow
{
    EContainer container;
    const wchar_t* name;
    int windowBits; ///< zlib encodes the container in the window size
};

constexpr SContainerRow c_Containers[] = {
    {EContainer::Raw, L"raw", -MAX_WBITS},
    {EContainer::Zlib, L"zlib", MAX_WBITS},
    {EContainer::Gzip, L"gzip", MAX_WBITS + 16},
};

const SContainerRow& getRow(EContainer container)
{
    return c_Containers[static_cast<std::size_t>(container)];
}

/// zlib does not write through this pointer, although it is not const.
Bytef* toZlib(std::string_view bytes)
{
    return reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
}

void require(int status, const wchar_t* operation)
{
    if (status != Z_OK)
    {
        throw LbException(LbFormat(L"%s: %s", operation, GetStatusText(status)));
    }
}

/// Calls `function` (deflate or inflate) until the function has taken all of `input` or stops. Appends the bytes that
/// it produces to `output`. Returns the last status.
int pump(z_stream& stream, std::string_view input, int (*function)(z_streamp, int), int flush, std::string& output)
{
    std::array<char, 16 * 1024> buffer;
    stream.next_in = toZlib(input);
    stream.avail_in = static_cast<uInt>(input.size());
    int status = Z_OK;
    do
    {
        stream.next_out = reinterpret_cast<Bytef*>(buffer.data());
        stream.avail_out = static_cast<uInt>(buffer.size());
        status = function(&stream, flush);
        output.append(buffer.data(), buffer.size() - stream.avail_out);
    }
    while (status == Z_OK && stream.avail_out == 0);
    return status;
}

/// Frees zlib's stream even if an exception is thrown.
class CDeflateStream : public INonCopyable
{
public:
    explicit CDeflateStream(const SDeflateSettings& settings)
    {
        require(deflateInit2(&stream, settings.level, Z_DEFLATED, getRow(settings.container).windowBits, c_MemoryLevel,
                             settings.strategy),
                L"deflateInit2");
    }
    ~CDeflateStream() { deflateEnd(&stream); }

    z_stream stream = {};
};

} // namespace

const wchar_t* GetContainerName(EContainer container)
{
    return getRow(container).name;
}

EContainer ParseContainer(std::wstring_view name)
{
    for (const SContainerRow& row : c_Containers)
    {
        if (name == row.name)
        {
            return row.container;
        }
    }
    throw LbException(LbFormat(L"no container is called '%s'", name));
}

const wchar_t* GetStatusText(int status)
{
    switch (status)
    {
    case Z_OK:
        return L"unfinished";
    case Z_STREAM_END:
        return L"finished";
    case Z_NEED_DICT:
        return L"dictionary wanted";
    case Z_DATA_ERROR:
        return L"corrupted data";
    case Z_STREAM_ERROR:
        return L"invalid settings";
    case Z_BUF_ERROR:
        return L"no progress";
    case Z_MEM_ERROR:
        return L"out of memory";
    default:
        return L"unexpected status";
    }
}

std::string Deflate(std::string_view data, const SDeflateSettings& settings)
{
    CDeflateStream deflater(settings);
    z_stream& stream = deflater.stream;
    if (!settings.dictionary.empty())
    {
        require(
            deflateSetDictionary(&stream, toZlib(settings.dictionary), static_cast<uInt>(settings.dictionary.size())),
            L"deflateSetDictionary");
    }
    std::string result;
    const int status = pump(stream, data, deflate, Z_FINISH, result);
    require(status == Z_STREAM_END ? Z_OK : Z_BUF_ERROR, L"deflate");
    return result;
}

CInflater::CInflater(EContainer container)
{
    require(inflateInit2(&m_stream, getRow(container).windowBits), L"inflateInit2");
}

CInflater::~CInflater()
{
    inflateEnd(&m_stream);
}

int CInflater::Feed(std::string_view piece)
{
    const int status = pump(m_stream, piece, inflate, Z_NO_FLUSH, m_output);
    // Does not use total_in, because that does not count the bytes before a request for a dictionary.
    m_consumed += piece.size() - m_stream.avail_in;
    // zlib reports Z_BUF_ERROR if the piece was used up exactly.
    return status == Z_BUF_ERROR ? Z_OK : status;
}

bool CInflater::SetDictionary(std::string_view dictionary)
{
    return inflateSetDictionary(&m_stream, toZlib(dictionary), static_cast<uInt>(dictionary.size())) == Z_OK;
}
