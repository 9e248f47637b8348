/// A new file to which bytes are only appended.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/lbexception.h"
#include "base/os/files.h"

namespace Runner
{

/// A file could not be created because its name is taken.
class CNameTakenException : public LbException
{
public:
    using LbException::LbException;
};

/// Failures throw LbException with a German message that names the file. One thread at a time, but Synchronise may run
/// beside Append.
class CAppendFile
{
public:
    /// Throws CNameTakenException if something of this name exists.
    explicit CAppendFile(const std::wstring& path);
    ~CAppendFile();
    CAppendFile(const CAppendFile&) = delete;
    CAppendFile& operator=(const CAppendFile&) = delete;

    /// Writes with one system call, except when the disk becomes full.
    void Append(std::string_view bytes);

    /// Flushes all appended bytes to the disk. False on failure.
    bool Synchronise();

    /// Synchronises and closes.
    void Close();

    std::uint64_t GetSize() const { return m_size; }

private:
    std::wstring m_path;
    LbOs::FileHandle m_file;
    std::uint64_t m_size = 0;
};

} // namespace Runner
