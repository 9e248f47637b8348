#include "base/lbfilesystem.h"
#include "base/luunittest.h"
#include "examples/support/bytes.h"
#include "examples/support/zlibstreams.h"

/// Tests compression with a preset dictionary: streams of similar data are smaller and cannot be read without the
/// dictionary. The dictionary is the file "dictionary.bin" of the data directory; each "*.txt" is data that resembles
/// it.
class CPresetDictionary : public LuUnitTest
{
    LB_RTTI(CPresetDictionary)

public:
    void InitSubtests() override
    {
        AddFileSubtests(L"*.txt", [this](const std::wstring& path) { return runFile(path); });
        AddSubtest(L"wrong dictionary", [this] { return runWrongDictionary(); });
    }

    /// Reads the dictionary here and not in InitSubtests, because discovery lists sub-tests without running them.
    void PrepareSubtest() override
    {
        const std::wstring path = GetDataDirectory() + L"dictionary.bin";
        if (LbFileSystem::IsFile(path))
        {
            m_dictionary = LbFileSystem::ReadFile8Bit(path);
        }
    }

private:
    EResult runFile(const std::wstring& path)
    {
        if (m_dictionary.empty())
        {
            return eR_NoInput;
        }
        const std::string data = LbFileSystem::ReadFile8Bit(path);
        const std::string plainStream = Deflate(data, {});
        const std::string stream = makeStream(data);
        Check(stream.size() < plainStream.size(), L"%u bytes with the dictionary, %u without", stream.size(),
              plainStream.size());
        checkStream(data, stream);
        return GetResultByErrors();
    }

    void checkStream(const std::string& data, std::string_view stream)
    {
        CInflater inflater(EContainer::Zlib);
        const int firstStatus = inflater.Feed(stream);
        Check(firstStatus == Z_NEED_DICT, L"before the dictionary: %s", GetStatusText(firstStatus));
        Check(inflater.SetDictionary(m_dictionary), L"the right dictionary is refused");
        const int status = inflater.Feed(stream.substr(inflater.GetConsumed()));
        Check(status == Z_STREAM_END, L"with the dictionary: %s", GetStatusText(status));
        const std::wstring difference = DescribeDifference(data, inflater.GetOutput());
        Check(difference.empty(), L"%s", difference);
    }

    EResult runWrongDictionary()
    {
        if (m_dictionary.empty())
        {
            return eR_NoInput;
        }
        CInflater inflater(EContainer::Zlib);
        inflater.Feed(makeStream("any data"));
        Check(!inflater.SetDictionary(m_dictionary + "!"), L"a wrong dictionary is accepted");
        return GetResultByErrors();
    }

    std::string makeStream(std::string_view data) const
    {
        SDeflateSettings settings;
        settings.dictionary = m_dictionary;
        return Deflate(data, settings);
    }

    std::string m_dictionary;
};

LB_RTTI_CLASS(CPresetDictionary, LuUnitTest)
