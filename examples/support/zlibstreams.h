/// zlib for the example tests: compresses and decompresses bytes and returns zlib's status codes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <zlib.h>

#include "base/inoncopyable.h"

/// The header and the trailer of the compressed data.
enum class EContainer
{
    Raw,  ///< nothing
    Zlib, ///< two bytes before the data, Adler-32 after it
    Gzip, ///< at least ten bytes before the data, CRC-32 and length after it
};

inline constexpr EContainer c_AllContainers[] = {EContainer::Raw, EContainer::Zlib, EContainer::Gzip};

/// "raw", "zlib" or "gzip".
const wchar_t* GetContainerName(EContainer container);

/// The container with one of these names. Throws LbException for any other name.
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

    /// Takes the next piece of the stream. Returns Z_OK if the stream continues, Z_STREAM_END at its end, Z_NEED_DICT
    /// if it needs a dictionary, and an error code if it is corrupted.
    int Feed(std::string_view piece);

    /// Call this after Z_NEED_DICT, then feed the bytes that were not consumed. False if the dictionary is wrong.
    bool SetDictionary(std::string_view dictionary);

    const std::string& GetOutput() const { return m_output; }

    /// Number of bytes taken so far; bytes after the end of the stream are not taken.
    std::size_t GetConsumed() const { return m_consumed; }

    /// zlib's own text for an error; empty if there is none.
    std::string GetErrorMessage() const { return m_stream.msg == nullptr ? std::string() : m_stream.msg; }

private:
    z_stream m_stream = {};
    std::string m_output;
    std::size_t m_consumed = 0;
};
