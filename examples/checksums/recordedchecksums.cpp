#include <algorithm>
#include <cstdint>

#include <zlib.h>

#include "base/iunittestrecreate.h"
#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lustream.h"
#include "base/luunittest.h"
#include "examples/support/bytes.h"

namespace
{

/// Both checksums after each block, one line per block, so that a difference shows where it begins.
std::string describeChecksums(const std::string& data)
{
    constexpr std::size_t c_BlockSize = 256;
    std::string lines;
    uLong crc = crc32(0, nullptr, 0);
    uLong adler = adler32(0, nullptr, 0);
    for (std::size_t offset = 0; offset < data.size(); offset += c_BlockSize)
    {
        const auto* const block = reinterpret_cast<const Bytef*>(data.data() + offset);
        const auto size = static_cast<uInt>(std::min(c_BlockSize, data.size() - offset));
        crc = crc32(crc, block, size);
        adler = adler32(adler, block, size);
        lines += LbEncoding::ToUtf8(LbFormat(L"%u %08X %08X\n", offset + size, crc, adler));
    }
    return lines;
}

} // namespace

/// Compares the checksums of each file with the record of a trusted run in the folder "Reference". A host can have the
/// records created again.
class CRecordedChecksums : public LuUnitTest, public IUnitTestRecreate
{
    LB_RTTI(CRecordedChecksums)

public:
    void InitSubtests() override
    {
        AddFileSubtests(L"*", [this](const std::wstring& path) { return compare(path); });
        m_fileCount = GetSubtestCount();
        AddSubtest(L"no record without its file", [this] { checkRecords(); });
    }

    /// The sub-tests of files come first.
    bool IsRecreatable(std::uint32_t subtest) const override { return subtest < m_fileCount; }

    void Recreate(std::uint32_t subtest) override
    {
        const std::wstring name = GetSubtestName(subtest);
        if (!LbFileSystem::AssertDirectory(getFolder()))
        {
            throw LbException(LbFormat(L"%s: cannot be created", getFolder()));
        }
        const std::string lines = describeChecksums(LbFileSystem::ReadFile8Bit(GetDataDirectory() + name));
        LuStreamWriteBinaryFile file(getFolder() + name);
        file.Write(lines.data(), lines.size());
        file.Close();
    }

private:
    std::wstring getFolder() const { return GetDataDirectory() + L"Reference" + LbPath::c_Separator; }

    EResult compare(const std::wstring& path)
    {
        const std::wstring record = getFolder() + path.substr(GetDataDirectory().size());
        if (!LbFileSystem::IsFile(record))
        {
            Error(L"nothing is recorded");
            return eR_NoInput;
        }
        const std::wstring difference =
            DescribeDifference(LbFileSystem::ReadFile8Bit(record), describeChecksums(LbFileSystem::ReadFile8Bit(path)));
        return Check(difference.empty(), L"%s", difference) ? eR_Passed : eR_Different;
    }

    void checkRecords()
    {
        for (const std::wstring& name : LbFileSystem::GetFileNames(getFolder()))
        {
            Check(LbFileSystem::IsFile(GetDataDirectory() + name), L"%s", name);
        }
    }

    std::uint32_t m_fileCount = 0;
};

LB_RTTI_CLASS(CRecordedChecksums, LuUnitTest)
