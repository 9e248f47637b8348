/// Files that carry the names of objects between processes. Internal to the Linux side.
#pragma once

#include <string>
#include <utility>

#include "base/os/linux/keeper.h"

namespace LbOs::Linux
{

/// Where the file of a name stands; empty for a name that is none.
std::string ToObjectPath(const std::wstring& name);

/// For the caller's `failure`, unless there is none: what has been tried, and what the system says to that.
void DescribeFailure(std::wstring* failure, const char* step);

/// The same where nobody would remove the file.
void DescribeMissingKeeper(std::wstring* failure);

/// A file that is removed with its object or, by the keeper, with the present process.
class CNamedFile
{
public:
    CNamedFile() = default;

    /// Runs `make(path)`, which makes a file that does not exist and says whether it could. It also says why not;
    /// without the keeper, `failure` is told here.
    template<typename F>
    CNamedFile(const std::string& path, std::wstring* failure, const F& make);
    CNamedFile(CNamedFile&& other) noexcept : m_kept(std::exchange(other.m_kept, nullptr)) {}
    CNamedFile& operator=(CNamedFile&& other) noexcept
    {
        std::swap(m_kept, other.m_kept);
        return *this;
    }
    ~CNamedFile();

    bool Exists() const noexcept { return m_kept != nullptr; }

private:
    SKeptFile* m_kept = nullptr;
};

template<typename F>
CNamedFile::CNamedFile(const std::string& path, std::wstring* failure, const F& make)
    : m_kept(path.empty() ? nullptr : KeepFile(path.c_str()))
{
    if (m_kept == nullptr)
    {
        DescribeMissingKeeper(failure);
    }
    else if (!make(path.c_str()))
    {
        ReleaseKeptFile(std::exchange(m_kept, nullptr));
    }
}

} // namespace LbOs::Linux
