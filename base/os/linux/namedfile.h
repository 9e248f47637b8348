/// Files that represent named objects shared by processes. Internal to the Linux side.
#pragma once

#include <string>
#include <utility>

#include "base/os/linux/keeper.h"

namespace LbOs::Linux
{

/// The path of the file that represents the object with this name; empty for an invalid name.
std::string ToObjectPath(const std::wstring& name);

/// Stores the failed step and the system's error text in `failure`, unless that is null.
void DescribeFailure(std::wstring* failure, const char* step);

/// Stores in `failure`, unless that is null, that no keeper runs or has a free entry. Without an entry, a killed
/// process would leave the file behind.
void DescribeMissingKeeper(std::wstring* failure);

/// A file that is removed by the destructor or, when the process is killed, by the keeper.
class CNamedFile
{
public:
    CNamedFile() = default;

    /// Runs `make(path)`, which must create a new file, return whether it succeeded, and store the reason of a failure.
    /// If no keeper takes the entry, does not run `make` and stores the reason in `failure`.
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
