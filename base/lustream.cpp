#include "base/lustream.h"

#include <algorithm>
#include <utility>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbsourcelocation.h"

namespace
{

constexpr std::size_t c_BufferSize = 65536;

[[noreturn]] void fail(LbFormatString<std::wstring> format, const std::wstring& path,
                       LbSourceLocation where = LbSourceLocation::Current())
{
    throw LbException(LbFormat(format, path), where);
}

[[noreturn]] void failWriting(const std::wstring& path, LbSourceLocation where = LbSourceLocation::Current())
{
    fail(L"Datei %s konnte nicht geschrieben werden", path, where);
}

LbOs::FileHandle requireOpen(LbOs::FileHandle file, const std::wstring& path,
                             LbSourceLocation where = LbSourceLocation::Current())
{
    if (file == LbOs::c_InvalidFile)
    {
        fail(L"Datei %s konnte nicht geöffnet werden", path, where);
    }
    return file;
}

} // namespace

LuStreamWriteText::~LuStreamWriteText() = default;

LuStreamWriteBinaryFile::LuStreamWriteBinaryFile(const std::wstring& path)
    : m_path(path), m_file(requireOpen(LbOs::OpenForWriting(path), path))
{
    m_buffer.reserve(c_BufferSize);
}

LuStreamWriteBinaryFile::~LuStreamWriteBinaryFile()
{
    if (m_file != LbOs::c_InvalidFile)
    {
        flush();
        LbOs::CloseFile(m_file);
    }
}

void LuStreamWriteBinaryFile::Write(const void* data, std::size_t size)
{
    if (m_file == LbOs::c_InvalidFile || (size > m_buffer.capacity() - m_buffer.size() && !flush()))
    {
        failWriting(m_path);
    }
    if (size >= m_buffer.capacity())
    {
        if (!LbOs::WriteFileBytes(m_file, data, size))
        {
            failWriting(m_path);
        }
        return;
    }
    const char* bytes = static_cast<const char*>(data);
    m_buffer.insert(m_buffer.end(), bytes, bytes + size);
}

void LuStreamWriteBinaryFile::Close()
{
    if (m_file == LbOs::c_InvalidFile)
    {
        return;
    }
    const bool isFlushed = flush();
    const bool isClosed = LbOs::CloseFile(std::exchange(m_file, LbOs::c_InvalidFile));
    if (!isFlushed || !isClosed)
    {
        failWriting(m_path);
    }
}

bool LuStreamWriteBinaryFile::flush()
{
    const bool isWritten = m_buffer.empty() || LbOs::WriteFileBytes(m_file, m_buffer.data(), m_buffer.size());
    m_buffer.clear();
    return isWritten;
}

void LuStreamWriteASCIIFile::Write(std::wstring_view text)
{
    const std::string bytes = LbEncoding::ToLatin1(text);
    m_file.Write(bytes.data(), bytes.size());
}

LuStreamReadBinaryFile::LuStreamReadBinaryFile(const std::wstring& path)
    : m_path(path), m_file(requireOpen(LbOs::OpenForReading(path), path)),
      m_size(static_cast<std::uint64_t>(std::max<std::int64_t>(LbOs::GetFileSize(m_file), 0)))
{
}

LuStreamReadBinaryFile::~LuStreamReadBinaryFile()
{
    Close();
}

std::size_t LuStreamReadBinaryFile::Read(void* buffer, std::size_t size)
{
    std::size_t total = 0;
    while (total < size)
    {
        const std::int64_t count = m_file == LbOs::c_InvalidFile
                                       ? -1
                                       : LbOs::ReadFileBytes(m_file, static_cast<char*>(buffer) + total, size - total);
        if (count < 0)
        {
            fail(L"Datei %s konnte nicht gelesen werden", m_path);
        }
        if (count == 0)
        {
            break;
        }
        total += static_cast<std::size_t>(count);
    }
    return total;
}

void LuStreamReadBinaryFile::Close()
{
    if (m_file != LbOs::c_InvalidFile)
    {
        LbOs::CloseFile(std::exchange(m_file, LbOs::c_InvalidFile));
    }
}
