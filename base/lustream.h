/// Streams: text into memory or 8-bit files, bytes into and out of files.
///
/// A stream is used by one thread at a time. The destructor of a file stream closes the file and ignores failures; call
/// Close to notice them. Failures throw LbException with a German message naming the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/inoncopyable.h"
#include "base/lbexport.h"
#include "base/lbformat.h"
#include "base/os/files.h"

/// Accepts text. Adds no line feeds.
class LB_API LuStreamWriteText
{
public:
    virtual ~LuStreamWriteText();

    virtual void Write(std::wstring_view text) = 0;

    /// Formats like LbFormat, then writes. If a run-time format is invalid, writes a line that describes the mistake
    /// instead.
    template<typename... T>
    void WriteFormat(LbFormatString<T...> format, const T&... arguments)
    {
        Write(LbFormatLine(format.GetSource(), LbPackArguments(arguments...)));
    }
};

/// Collects text in memory.
class LB_API LuStreamWriteTextMemory : public LuStreamWriteText, public INonCopyable
{
public:
    void Write(std::wstring_view text) override { m_text.append(text); }

    const std::wstring& GetText() const noexcept { return m_text; }
    void Clear() noexcept { m_text.clear(); }

private:
    std::wstring m_text;
};

/// Writes bytes to a file, which the constructor creates or truncates. Buffered.
class LB_API LuStreamWriteBinaryFile : public INonCopyable
{
public:
    explicit LuStreamWriteBinaryFile(const std::wstring& path);
    ~LuStreamWriteBinaryFile();

    void Write(const void* data, std::size_t size);

    /// Writes all buffered bytes and closes the file; later writes throw. A second Close does nothing.
    void Close();

private:
    bool flush();

    std::wstring m_path;
    LbOs::FileHandle m_file;
    std::vector<char> m_buffer;
};

/// Writes text to a file in ISO-8859-1, one byte per character (see LbEncoding::ToLatin1); does not change line ends.
class LB_API LuStreamWriteASCIIFile : public LuStreamWriteText
{
public:
    explicit LuStreamWriteASCIIFile(const std::wstring& path) : m_file(path) {}

    void Write(std::wstring_view text) override;
    void Close() { m_file.Close(); }

private:
    LuStreamWriteBinaryFile m_file;
};

/// Reads bytes from a file.
class LB_API LuStreamReadBinaryFile : public INonCopyable
{
public:
    explicit LuStreamReadBinaryFile(const std::wstring& path);
    ~LuStreamReadBinaryFile();

    /// Size in bytes when the file was opened; 0 if it has no size, like a pipe.
    std::uint64_t GetSize() const noexcept { return m_size; }

    /// Reads `size` bytes, or fewer at the end of the file, and returns their number; 0 at the end. Throws after Close.
    std::size_t Read(void* buffer, std::size_t size);

    void Close();

private:
    std::wstring m_path;
    LbOs::FileHandle m_file;
    std::uint64_t m_size;
};
