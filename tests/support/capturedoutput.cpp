#include "tests/support/capturedoutput.h"

#include <mutex>
#include <ostream>
#include <stdexcept>
#include <utility>

#include "base/lbencoding.h"
#include "base/lbformat.h"

namespace
{

/// Tests switch this recorder on and off. The process has only one recorder, because an added output cannot be removed.
class CRecorder : public LuTestSuiteOut::LuCustomOut
{
public:
    static CRecorder& GetInstance()
    {
        // Never destroyed: lines may be printed until the end of the process.
        static CRecorder* const s_recorder = make();
        return *s_recorder;
    }

    void Output(const LuTestSuiteOut& line) override
    {
        if (const std::function<void()> function = record(line))
        {
            function();
        }
    }

    /// Starts or stops recording and discards all lines. False if recording is already on or off as requested.
    bool Listen(bool on)
    {
        const std::lock_guard lock(m_mutex);
        m_lines.clear();
        m_function = nullptr;
        return std::exchange(m_isListening, on) != on;
    }

    std::vector<CapturedOutput::SLine> GetLines() const
    {
        const std::lock_guard lock(m_mutex);
        return m_lines;
    }

    void Clear()
    {
        const std::lock_guard lock(m_mutex);
        m_lines.clear();
    }

    void OnLine(const std::wstring& text, std::function<void()> function)
    {
        const std::lock_guard lock(m_mutex);
        m_awaited = text;
        m_function = std::move(function);
    }

private:
    /// Records the line if recording is on; returns the function to call for it, if any.
    std::function<void()> record(const LuTestSuiteOut& line)
    {
        const std::lock_guard lock(m_mutex);
        if (!m_isListening)
        {
            return nullptr;
        }
        m_lines.push_back({line.GetText(), line.IsBold(), line.IsUnderlined(), line.HasColor(), line.GetColor()});
        return m_function && line.GetText() == m_awaited ? std::exchange(m_function, nullptr) : nullptr;
    }

    static CRecorder* make()
    {
        auto* const recorder = new CRecorder;
        LuTestSuiteOut::AddCustomOut(recorder);
        return recorder;
    }

    mutable std::mutex m_mutex;
    std::vector<CapturedOutput::SLine> m_lines;
    bool m_isListening = false;
    std::wstring m_awaited;
    std::function<void()> m_function;
};

} // namespace

CapturedOutput::CapturedOutput()
{
    if (!CRecorder::GetInstance().Listen(true))
    {
        throw std::logic_error("Output is captured already");
    }
    LuTestSuiteOut::SetConsoleOut(false);
}

CapturedOutput::~CapturedOutput()
{
    LuTestSuiteOut::SetConsoleOut(true);
    CRecorder::GetInstance().Listen(false);
}

std::vector<CapturedOutput::SLine> CapturedOutput::GetLines() const
{
    return CRecorder::GetInstance().GetLines();
}

std::wstring CapturedOutput::GetText() const
{
    std::wstring text;
    for (const SLine& line : GetLines())
    {
        text += line.text;
    }
    return text;
}

void CapturedOutput::Clear()
{
    CRecorder::GetInstance().Clear();
}

void CapturedOutput::OnLine(const std::wstring& text, std::function<void()> function)
{
    CRecorder::GetInstance().OnLine(text, std::move(function));
}

CapturedOutput::SLine CapturedOutput::Plain(std::wstring text)
{
    return {std::move(text), false, false, false, LuColor()};
}

CapturedOutput::SLine CapturedOutput::Bold(std::wstring text)
{
    return {std::move(text), true, false, false, LuColor()};
}

CapturedOutput::SLine CapturedOutput::Colored(std::wstring text, LuColor color)
{
    return {std::move(text), false, false, true, color};
}

CapturedOutput::SLine CapturedOutput::BoldColored(std::wstring text, LuColor color)
{
    return {std::move(text), true, false, true, color};
}

void PrintTo(const CapturedOutput::SLine& line, std::ostream* stream)
{
    *stream << '"' << LbEncoding::ToUtf8(line.text) << '"' << (line.isBold ? " bold" : "")
            << (line.isUnderlined ? " underlined" : "");
    if (line.hasColor)
    {
        *stream << LbEncoding::ToUtf8(LbFormat(L" #%06x", line.color.GetValue() & 0xFFFFFFU));
    }
}
