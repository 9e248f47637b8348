#include "base/os/durablefiles.h"

#include <fcntl.h>
#include <unistd.h>

#include "base/os/linux/descriptor.h"
#include "base/os/linux/systempath.h"

using LbOs::Linux::Retry;
using LbOs::Linux::ToSystemPath;

LbOs::FileHandle LbOs::CreateForAppending(const std::wstring& path)
{
    const std::string name = ToSystemPath(path);
    constexpr int c_Flags = O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC;
    Linux::CDescriptor file = Linux::AboveStandard(Retry([&name] { return open(name.c_str(), c_Flags, 0666); }));
    const FileHandle handle = file.IsOpen() ? file.Get() : c_InvalidFile;
    file.Release();
    return handle;
}

LbOs::FileHandle LbOs::OpenForReadingFrom(const std::wstring& path, std::uint64_t offset)
{
    const FileHandle file = OpenForReading(path);
    if (file != c_InvalidFile && lseek(static_cast<int>(file), static_cast<off_t>(offset), SEEK_SET) == -1)
    {
        CloseFile(file);
        return c_InvalidFile;
    }
    return file;
}

bool LbOs::SynchroniseFile(FileHandle file)
{
    return Retry([file] { return fdatasync(static_cast<int>(file)); }) == 0;
}

bool LbOs::SynchroniseDirectory(const std::wstring& path)
{
    const std::string name = ToSystemPath(path);
    const Linux::CDescriptor directory(
        Retry([&name] { return open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    return directory.IsOpen() && Retry([&directory] { return fsync(directory.Get()); }) == 0;
}
