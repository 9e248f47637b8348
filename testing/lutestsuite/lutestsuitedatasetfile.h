/// The path of a data set's file, as case records hold it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "base/lbfilelisting.h"
#include "testing/lutestsuite/lutestsuiteexport.h"

namespace LuTestSuite
{

/// Can be read and assigned like a std::wstring. To save memory, a path from the listing of a folder refers to the
/// shared listing; its own text is created when it is first read. A plain value, which can be copied; used by one
/// thread at a time.
class LUTESTSUITE_API LuDataSetFile
{
public:
    LuDataSetFile() noexcept;
    LuDataSetFile(std::wstring path);
    LuDataSetFile(const wchar_t* path);

    /// The file with this rank in the listing.
    LuDataSetFile(std::shared_ptr<const LbFileListing> listing, std::uint32_t rank) noexcept;

    LuDataSetFile(const LuDataSetFile& other);
    LuDataSetFile(LuDataSetFile&& other) noexcept;
    LuDataSetFile& operator=(const LuDataSetFile& other);
    LuDataSetFile& operator=(LuDataSetFile&& other) noexcept;
    ~LuDataSetFile();

    /// The text is valid until the object is changed.
    const std::wstring& GetPath() const;
    operator const std::wstring&() const { return GetPath(); }
    operator std::wstring_view() const { return GetPath(); }

    bool empty() const noexcept { return !m_listing && !m_path; }
    std::size_t size() const { return GetPath().size(); }
    const wchar_t* c_str() const { return GetPath().c_str(); }

    friend bool operator==(const LuDataSetFile& a, const LuDataSetFile& b) { return a.GetPath() == b.GetPath(); }
    friend bool operator==(const LuDataSetFile& a, const std::wstring& b) { return a.GetPath() == b; }
    friend bool operator==(const LuDataSetFile& a, const wchar_t* b) { return a.GetPath() == b; }
    friend std::wstring operator+(const LuDataSetFile& a, const std::wstring& b) { return a.GetPath() + b; }
    friend std::wstring operator+(const std::wstring& a, const LuDataSetFile& b) { return a + b.GetPath(); }

private:
    std::shared_ptr<const LbFileListing> m_listing;
    std::uint32_t m_rank = 0;
    mutable std::unique_ptr<const std::wstring> m_path; ///< null for an empty path, and before the first read
};

} // namespace LuTestSuite
