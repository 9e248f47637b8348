#include "base/os/files.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/os/console.h"
#include "base/os/linux/descriptor.h"
#include "base/os/linux/systempath.h"

namespace
{

using LbOs::Linux::ToSystemPath;

int toDescriptor(LbOs::FileHandle file)
{
    return static_cast<int>(file);
}

LbOs::FileHandle openFile(const std::wstring& path, int flags)
{
    const std::string name = ToSystemPath(path);
    const int file = LbOs::Linux::Retry([&name, flags] { return open(name.c_str(), flags | O_CLOEXEC, 0666); });
    struct stat status = {};
    // Linux opens a directory for reading and fails only on read.
    if (file >= 0 && fstat(file, &status) == 0 && S_ISDIR(status.st_mode))
    {
        close(file);
        return LbOs::c_InvalidFile;
    }
    return file;
}

bool isDirectoryEntry(int directory, const dirent& entry)
{
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN)
    {
        return entry.d_type == DT_DIR;
    }
    struct stat status = {};
    return fstatat(directory, entry.d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

bool isLinkEntry(int directory, const dirent& entry)
{
    if (entry.d_type != DT_UNKNOWN)
    {
        return entry.d_type == DT_LNK;
    }
    struct stat status = {};
    return fstatat(directory, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(status.st_mode);
}

/// The parent of an absolute path without trailing separator; empty for the root. For a link it is the parent of the
/// target, which the path's text does not show.
std::wstring getParent(const std::wstring& path)
{
    const std::wstring target = LbOs::IsLink(path) ? LbOs::GetCanonicalPath(path + L"/..") : std::wstring();
    return target.empty() ? path.substr(0, std::min(path.rfind(L'/'), path.size())) : target == L"/" ? L"" : target;
}

LbOs::SFileStatus toFileStatus(const struct stat& status)
{
    constexpr std::int64_t c_StepsPerSecond = 1'000'000'000;
    return {{status.st_dev, status.st_ino},
            status.st_size,
            status.st_mtim.tv_sec * c_StepsPerSecond + status.st_mtim.tv_nsec,
            S_ISREG(status.st_mode),
            status.st_nlink > 1};
}

std::wstring withoutSeparators(std::wstring path)
{
    while (path.size() > 1 && path.back() == L'/')
    {
        path.pop_back();
    }
    return path;
}

/// Calls `read(buffer, size)`, which returns the text's length or 0 on failure, with growing buffers until the text
/// fits.
template<typename F>
std::wstring readText(const F& read)
{
    std::string buffer(256, '\0');
    while (true)
    {
        const std::size_t length = read(buffer.data(), buffer.size());
        if (length < buffer.size())
        {
            return LbEncoding::FromNative(std::string_view(buffer).substr(0, length));
        }
        buffer.resize(buffer.size() * 2);
    }
}

/// Throws if the working directory is unknown: otherwise relative paths would refer to the root.
std::wstring getStart(const std::wstring& path)
{
    const std::wstring directory = LbOs::GetWorkingDirectory();
    if (directory.empty())
    {
        throw LbException(L"Das Arbeitsverzeichnis für den Pfad " + path + L" ist nicht bekannt");
    }
    return directory + L"/";
}

std::wstring getHomeDirectory()
{
    std::wstring home = LbOs::GetEnvironmentText(L"HOME");
    if (!home.empty())
    {
        return home;
    }
    std::vector<char> buffer(16384);
    passwd entry = {};
    passwd* found = nullptr;
    const bool isKnown = getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr;
    return isKnown ? LbEncoding::FromNative(entry.pw_dir) : std::wstring();
}

} // namespace

bool LbOs::IsAbsolutePath(std::wstring_view path) noexcept
{
    return path.starts_with(L'/');
}

LbOs::EEntry LbOs::QueryEntry(const std::wstring& path)
{
    struct stat status = {};
    if (stat(ToSystemPath(path).c_str(), &status) != 0)
    {
        return EEntry::Missing;
    }
    return S_ISDIR(status.st_mode) ? EEntry::Directory : EEntry::File;
}

bool LbOs::IsMissing(const std::wstring& path)
{
    struct stat status = {};
    return stat(ToSystemPath(path).c_str(), &status) != 0 && (errno == ENOENT || errno == ENOTDIR || errno == ELOOP);
}

std::optional<LbOs::SFileStatus> LbOs::GetFileStatus(const std::wstring& path)
{
    struct stat status = {};
    return stat(ToSystemPath(path).c_str(), &status) == 0 ? std::optional(toFileStatus(status)) : std::nullopt;
}

std::optional<LbOs::SFileStatus> LbOs::GetPlaceStatus(const std::wstring& path)
{
    struct stat status = {};
    return lstat(ToSystemPath(path).c_str(), &status) == 0 ? std::optional(toFileStatus(status)) : std::nullopt;
}

bool LbOs::IsLink(const std::wstring& path)
{
    struct stat status = {};
    return lstat(ToSystemPath(path).c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

std::wstring LbOs::GetLinkTarget(const std::wstring& path)
{
    const std::string name = ToSystemPath(path);
    const std::wstring target = readText([&name](char* buffer, std::size_t size) {
        const ssize_t length = readlink(name.c_str(), buffer, size);
        return length < 0 ? 0 : static_cast<std::size_t>(length);
    });
    return target.empty() || IsAbsolutePath(target) ? target : path.substr(0, path.rfind(L'/') + 1) + target;
}

bool LbOs::IsRegularFile(const std::wstring& path)
{
    struct stat status = {};
    return stat(ToSystemPath(path).c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool LbOs::AreSameFile(const std::wstring& path, const std::wstring& otherPath)
{
    const std::optional<SFileStatus> status = GetFileStatus(path);
    const std::optional<SFileStatus> otherStatus = GetFileStatus(otherPath);
    return status && otherStatus && status->identity == otherStatus->identity;
}

bool LbOs::VisitDirectory(const std::wstring& directory, const std::function<void(const SDirectoryEntry&)>& visit)
{
    struct SClose
    {
        void operator()(DIR* stream) const { closedir(stream); }
    };
    const std::unique_ptr<DIR, SClose> stream(opendir(ToSystemPath(directory).c_str()));
    if (stream == nullptr)
    {
        return false;
    }
    const int descriptor = dirfd(stream.get());
    // Only errno distinguishes the end from a failure.
    const auto readNext = [&stream] {
        errno = 0;
        return readdir(stream.get());
    };
    std::wstring name;
    while (const dirent* const entry = readNext())
    {
        const std::string_view bytes = entry->d_name;
        if (bytes != "." && bytes != "..")
        {
            LbEncoding::FromNative(bytes, name);
            visit({name, isDirectoryEntry(descriptor, *entry), isLinkEntry(descriptor, *entry)});
        }
    }
    return errno == 0;
}

bool LbOs::MakeDirectory(const std::wstring& path)
{
    return mkdir(ToSystemPath(path).c_str(), 0777) == 0 || QueryEntry(path) == EEntry::Directory;
}

bool LbOs::RemoveFile(const std::wstring& path)
{
    return unlink(ToSystemPath(path).c_str()) == 0;
}

bool LbOs::RemoveEmptyDirectory(const std::wstring& path)
{
    return rmdir(ToSystemPath(path).c_str()) == 0;
}

std::wstring LbOs::GetWorkingDirectory()
{
    return readText([](char* buffer, std::size_t size) {
        if (getcwd(buffer, size) != nullptr)
        {
            return std::string_view(buffer).size();
        }
        return errno == ERANGE ? size : 0;
    });
}

bool LbOs::SetWorkingDirectory(const std::wstring& path)
{
    return chdir(ToSystemPath(path).c_str()) == 0;
}

std::wstring LbOs::GetFullPath(const std::wstring& path)
{
    if (path.empty())
    {
        return path;
    }
    const std::wstring full = IsAbsolutePath(path) ? path : getStart(path) + path;
    std::wstring result;
    std::wstring_view name;
    for (std::size_t start = 0; start < full.size(); start += name.size() + 1)
    {
        name = std::wstring_view(full).substr(start, full.find(L'/', start) - start);
        if (name == L"..")
        {
            result = getParent(result);
        }
        else if (!name.empty() && name != L".")
        {
            result.append(L"/").append(name);
        }
    }
    const bool isFolder = full.ends_with(L'/') || name == L"." || name == L"..";
    return isFolder || result.empty() ? result + L"/" : result;
}

std::wstring LbOs::GetCanonicalPath(const std::wstring& path)
{
    struct SFree
    {
        void operator()(char* text) const { std::free(text); }
    };
    const std::unique_ptr<char, SFree> canonical(realpath(ToSystemPath(path).c_str(), nullptr));
    return canonical ? LbEncoding::FromNative(canonical.get()) : std::wstring();
}

std::wstring LbOs::GetCanonicalPlace(const std::wstring& path)
{
    if (!IsLink(path))
    {
        return GetCanonicalPath(path);
    }
    const std::size_t name = path.rfind(L'/') + 1;
    const std::wstring folder = GetCanonicalPath(name == 0 ? L"." : path.substr(0, name));
    return folder.empty() ? folder : (folder == L"/" ? folder : folder + L"/") + path.substr(name);
}

std::wstring LbOs::GetExecutablePath()
{
    // Read once: if a build replaces the file, the name that the system returns gets the suffix " (deleted)".
    static const std::wstring& s_path = *new std::wstring(readText([](char* buffer, std::size_t size) {
        const ssize_t length = readlink("/proc/self/exe", buffer, size);
        return length < 0 ? 0 : static_cast<std::size_t>(length);
    }));
    return s_path;
}

std::wstring LbOs::GetUserDataDirectory()
{
    const std::wstring data = GetEnvironmentText(L"XDG_DATA_HOME");
    // The standard for this variable requires that relative paths be ignored.
    if (IsAbsolutePath(data))
    {
        return withoutSeparators(data);
    }
    const std::wstring home = withoutSeparators(getHomeDirectory());
    return home.empty() ? home : home + (home == L"/" ? L".local/share" : L"/.local/share");
}

std::wstring LbOs::GetTemporaryDirectory()
{
    const std::wstring directory = GetEnvironmentText(L"TMPDIR");
    return directory.empty() ? L"/tmp" : withoutSeparators(directory);
}

LbOs::FileHandle LbOs::OpenForReading(const std::wstring& path)
{
    return openFile(path, O_RDONLY);
}

LbOs::FileHandle LbOs::OpenForWriting(const std::wstring& path)
{
    return openFile(path, O_WRONLY | O_CREAT | O_TRUNC);
}

std::int64_t LbOs::ReadFileBytes(FileHandle file, void* buffer, std::size_t size)
{
    return LbOs::Linux::Retry([file, buffer, size] { return read(toDescriptor(file), buffer, size); });
}

bool LbOs::WriteFileBytes(FileHandle file, const void* data, std::size_t size)
{
    const char* bytes = static_cast<const char*>(data);
    while (size > 0)
    {
        const ssize_t count =
            LbOs::Linux::Retry([file, bytes, size] { return write(toDescriptor(file), bytes, size); });
        if (count <= 0)
        {
            return false;
        }
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

std::int64_t LbOs::GetFileSize(FileHandle file)
{
    struct stat status = {};
    const bool hasSize = fstat(toDescriptor(file), &status) == 0 && S_ISREG(status.st_mode);
    return hasSize ? status.st_size : -1;
}

bool LbOs::CloseFile(FileHandle file)
{
    // After EINTR the descriptor is closed and must not be closed again.
    return close(toDescriptor(file)) == 0 || errno == EINTR;
}
