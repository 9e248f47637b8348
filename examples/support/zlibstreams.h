/// zlib as the example tests use it: bytes go in, bytes come out, and zlib's status codes say how it went.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <zlib.h>

#include "base/inoncopyable.h"

/// What stands around the compressed data.
enum class EContainer
{
    Raw,  ///< nothing
    Zlib, ///< two bytes in front, Adler-32 behind
    Gzip, ///< at least ten bytes in front, CRC-32 and length behind
};

inline constexpr EContainer c_AllContainers[] = {EContainer::Raw, EContainer::Zlib, EContainer::Gzip};

/// "raw", "zlib" or "gzip".
const wchar_t* GetContainerName(EContainer container);

/// The reverse. Throws LbException for any other name.
EContainer ParseContainer(std::wstring_view name);

/// A zlib status code in words.
const wchar_t* GetStatusText(int status);

struct SDeflateSettings
{
    EContainer container = EContainer::Zlib;
    int level = Z_DEFAULT_COMPRESSION; ///< 0 stores, 1 is fastest, 9 is smallest
    int strategy = Z_DEFAULT_STRATEGY;
    std::string_view dictionary = {}; ///< preset dictionary, when not empty
};

/// Compresses all of `data` into one stream. Throws LbException when zlib refuses the settings.
std::string Deflate(std::string_view data, const SDeflateSettings& settings);

/// Decompresses one stream that arrives in pieces.
class CInflater : public INonCopyable
{
public:
    explicit CInflater(EContainer container);
    ~CInflater();

    /// Takes the next piece of the stream. Returns Z_OK as long as the stream goes on, Z_STREAM_END at its end,
    /// Z_NEED_DICT when it asks for a dictionary, and an error code when it is corrupted.
    int Feed(std::string_view piece);

    /// The answer to Z_NEED_DICT; what was not consumed has to be fed again. False when it is the wrong dictionary.
    bool SetDictionary(std::string_view dictionary);

    const std::string& GetOutput() const { return m_output; }

    /// Number of bytes taken so far; what follows the end of the stream is left alone.
    std::size_t GetConsumed() const { return m_consumed; }

    /// zlib's own words about an error, empty without one.
    std::string GetErrorMessage() const { return m_stream.msg == nullptr ? std::string() : m_stream.msg; }

private:
    z_stream m_stream = {};
    std::string m_output;
    std::size_t m_consumed = 0;
};
