#include "testing/lutestsuite/lutestsuiteout.h"

#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "base/lbcriticalsection.h"
#include "base/lbdiagnostics.h"
#include "base/lbencoding.h"
#include "base/os/console.h"
#include "testing/lutestsuite/output/outputbatch.h"

namespace
{

constexpr std::uint32_t c_Utf8CodePage = 65001;

/// Sets the code page of the console to UTF-8 while the library is loaded.
class CConsoleCodePage
{
public:
    CConsoleCodePage() : m_saved(LbOs::GetConsoleCodePage()) { LbOs::SetConsoleCodePage(c_Utf8CodePage); }
    ~CConsoleCodePage() { LbOs::SetConsoleCodePage(m_saved); }
    CConsoleCodePage(const CConsoleCodePage&) = delete;
    CConsoleCodePage& operator=(const CConsoleCodePage&) = delete;

private:
    std::uint32_t m_saved;
};

const CConsoleCodePage s_CodePage;
LbCriticalSection s_OutputLock;
bool s_bConsoleOut = true;
std::vector<LuTestSuiteOut::LuCustomOut*> s_CustomOuts;
std::uint32_t s_uiBatches = 0; ///< number of open batches of the thread that holds the lock
std::string s_Batch;           ///< the output collected by open and deferred batches

void writeBatch()
{
    if (!s_Batch.empty())
    {
        LbOs::WriteStandardOutput(s_Batch);
        s_Batch.clear();
    }
}

void writeToConsole(const std::wstring& text)
{
    s_Batch += LbEncoding::ToUtf8(text);
    // If there are custom outputs, writes each line at once: custom outputs may write to the same console, and the
    // lines must keep their order.
    if (s_uiBatches == 0 || !s_CustomOuts.empty())
    {
        writeBatch();
    }
}

/// Ignores exceptions of the custom output, because the destructor that calls this must not throw.
void outputTo(LuTestSuiteOut::LuCustomOut& out, const LuTestSuiteOut& line) noexcept
{
    try
    {
        out.Output(line);
    }
    catch (const std::exception& exception)
    {
        LbDiagnostics::Trace(LbFormat(L"LuTestSuiteOut: custom output threw: %S", exception.what()));
    }
    catch (...)
    {
        LbDiagnostics::Trace(L"LuTestSuiteOut: custom output threw");
    }
}

} // namespace

LuTestSuite::COutputBatch::COutputBatch(EBatchEnd end) : m_end(end)
{
    s_OutputLock.lock();
    ++s_uiBatches;
}

LuTestSuite::COutputBatch::~COutputBatch()
{
    if (--s_uiBatches == 0 && m_end == EBatchEnd::Write)
    {
        writeBatch();
    }
    s_OutputLock.unlock();
}

void LuTestSuite::WriteDeferredOutput()
{
    const LbCriticalSectionLock lock(s_OutputLock);
    writeBatch();
}

LuTestSuiteOut::LuCustomOut::~LuCustomOut() = default;

LuTestSuiteOut::LuTestSuiteOut() = default;

LuTestSuiteOut::LuTestSuiteOut(const LuTestSuiteOut& other) = default;

LuTestSuiteOut& LuTestSuiteOut::operator=(const LuTestSuiteOut& other) = default;

LuTestSuiteOut::~LuTestSuiteOut()
{
    writeOut();
}

LuTestSuiteOut& LuTestSuiteOut::Bold()
{
    m_isBold = true;
    return *this;
}

LuTestSuiteOut& LuTestSuiteOut::Underlined()
{
    m_isUnderlined = true;
    return *this;
}

LuTestSuiteOut& LuTestSuiteOut::Color(LuColor color)
{
    m_hasColor = true;
    m_color = color;
    return *this;
}

void LuTestSuiteOut::AddCustomOut(LuCustomOut* out)
{
    const LbCriticalSectionLock lock(s_OutputLock);
    s_CustomOuts.push_back(out);
}

void LuTestSuiteOut::SetConsoleOut(bool on)
{
    const LbCriticalSectionLock lock(s_OutputLock);
    s_bConsoleOut = on;
}

void LuTestSuiteOut::writeOut() const
{
    const LbCriticalSectionLock lock(s_OutputLock);
    if (s_bConsoleOut)
    {
        writeToConsole(m_text);
    }
    // Iterates by index, because an output may add another one while it prints.
    for (std::size_t index = 0; index < s_CustomOuts.size(); ++index)
    {
        outputTo(*s_CustomOuts[index], *this);
    }
}
