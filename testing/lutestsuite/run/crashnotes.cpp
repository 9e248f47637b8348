#include "testing/lutestsuite/run/crashnotes.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

#include "base/lbutf8.h"
#include "base/os/platform.h"

namespace LuTestSuiteRun
{

namespace
{

/// More than a run has workers.
constexpr std::size_t c_Places = 512;

CCrashThread::SPlace s_places[c_Places];

std::atomic<CCrashReporter*> s_reporter = nullptr;

/// Text without any memory of the heap.
class CCrashText
{
public:
    void Add(std::string_view text)
    {
        const std::size_t length = std::min(text.size(), sizeof(m_bytes) - m_size);
        std::copy_n(text.begin(), length, m_bytes + m_size);
        m_size += length;
    }

    void AddNumber(std::uint64_t number)
    {
        char digits[2 + 2 * sizeof(number)];
        char* digit = std::end(digits);
        do
        {
            *--digit = "0123456789abcdef"[number % 16];
            number /= 16;
        }
        while (number != 0);
        *--digit = 'x';
        *--digit = '0';
        Add({digit, static_cast<std::size_t>(std::end(digits) - digit)});
    }

    void AddCase(const SWorkBuffer& request)
    {
        Add("'");
        addName(request.className);
        Add(":");
        addName(request.caseName);
        Add("'");
    }

    /// What is there so far goes out: one line where it is short enough.
    void Write()
    {
        LbOs::WriteCrashText({m_bytes, m_size});
        m_size = 0;
    }

private:
    void addName(const char16_t (&name)[c_NameCapacity])
    {
        // Three bytes a unit, and the signs around them.
        constexpr std::size_t c_Most = 3 * c_NameCapacity + 16;
        if (sizeof(m_bytes) - m_size < c_Most)
        {
            Write();
        }
        const auto length = static_cast<std::size_t>(std::find(std::begin(name), std::end(name), u'\0') - name);
        char* const bytes = m_bytes + m_size;
        const std::size_t size = LbEncoding::ToUtf8({name, length}, {bytes, sizeof(m_bytes) - m_size});
        std::replace_if(
            bytes, bytes + size, [](unsigned char byte) { return byte < 0x20; }, ' ');
        m_size += size;
    }

    char m_bytes[8192] = {};
    std::size_t m_size = 0;
};

/// Not on the stack, which may have overflowed. One thread at a time reports a crash.
constinit CCrashText s_text;

/// The case that the calling thread runs; null without one.
const SWorkBuffer* findOwnCase()
{
    const std::uintptr_t thread = LbOs::GetThreadKey();
    const auto* const place =
        std::ranges::find_if(s_places, [thread](const auto& entry) { return entry.thread == thread; });
    return place == std::end(s_places) ? nullptr : place->request.load();
}

void addKind(CCrashText& text, const LbOs::SCrash& crash)
{
    text.Add(crash.kind.name);
    text.Add(" ");
    if (std::strlen(crash.kind.meaning) == 0)
    {
        text.AddNumber(crash.code);
        return;
    }
    text.Add("(");
    text.Add(crash.kind.meaning);
    text.Add(")");
}

void addPlace(CCrashText& text, const LbOs::SCrash& crash)
{
    if (crash.address == 0 && !crash.target)
    {
        return;
    }
    text.Add(" an der Adresse ");
    text.AddNumber(crash.address);
    if (std::strlen(crash.module) != 0)
    {
        text.Add(", ");
        text.Add(crash.module);
        text.Add("+");
        text.AddNumber(crash.offset);
    }
    if (crash.target)
    {
        text.Add(", beim Zugriff auf ");
        text.AddNumber(*crash.target);
    }
}

/// Of the threads that have not crashed.
void addOtherCases(CCrashText& text, const SWorkBuffer* own)
{
    bool isFirst = true;
    for (const CCrashThread::SPlace& place : s_places)
    {
        const SWorkBuffer* const request = place.request.load();
        if (request == nullptr || request == own)
        {
            continue;
        }
        text.Add(!isFirst ? ", " : own != nullptr ? "Fehler: Zugleich in Arbeit: " : "Fehler: In Arbeit: ");
        text.AddCase(*request);
        isFirst = false;
    }
    text.Add(isFirst ? "" : "\n");
}

void report(const LbOs::SCrash& crash) noexcept
{
    const SWorkBuffer* const own = findOwnCase();
    CCrashText& text = s_text;
    text.Add("Fehler: Absturz");
    if (own != nullptr)
    {
        text.Add(" in ");
        text.AddCase(*own);
    }
    text.Add(": ");
    addKind(text, crash);
    addPlace(text, crash);
    text.Add("\n");
    addOtherCases(text, own);
    text.Write();
    if (CCrashReporter* const reporter = s_reporter.load())
    {
        reporter->Report(crash);
    }
}

CCrashThread::SPlace* takePlace()
{
    for (CCrashThread::SPlace& place : s_places)
    {
        std::uintptr_t free = 0;
        if (place.thread.compare_exchange_strong(free, LbOs::GetThreadKey()))
        {
            return &place;
        }
    }
    return nullptr;
}

} // namespace

CCrashNotes::CCrashNotes(CCrashReporter* reporter) : m_handler(&report)
{
    s_reporter = reporter;
}

CCrashNotes::~CCrashNotes()
{
    s_reporter = nullptr;
}

CCrashThread::CCrashThread() : m_place(takePlace()) {}

CCrashThread::~CCrashThread()
{
    if (m_place != nullptr)
    {
        m_place->thread = 0;
    }
}

void CCrashThread::SetCase(const SWorkBuffer* request) noexcept
{
    if (m_place != nullptr)
    {
        m_place->request.store(request, std::memory_order_release);
    }
}

} // namespace LuTestSuiteRun
