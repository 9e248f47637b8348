#include "testing/lutestsuite/environment/crashnotes.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

#include "base/lbencoding.h"
#include "base/os/platform.h"
#include "testing/lutestsuite/environment/crashtext.h"

namespace LuTestSuite
{

namespace
{

constexpr std::size_t c_Places = 512;

CCrashThread::SPlace s_places[c_Places];

std::atomic<ICrashReporter*> s_reporter = nullptr;

/// A static object, because the stack may have overflowed. One thread at a time reports a crash.
constinit CCrashText s_text;

/// The calling thread's place; null if it has none.
CCrashThread::SPlace* findOwnPlace()
{
    const std::uintptr_t thread = LbOs::GetThreadKey();
    auto* const place = std::ranges::find_if(s_places, [thread](const auto& entry) { return entry.thread == thread; });
    return place == std::end(s_places) ? nullptr : place;
}

/// Adds `before` and the activity of a thread. False, without adding anything, if the thread has no activity.
bool addActivity(CCrashText& text, std::string_view before, const CCrashThread::SPlace& place)
{
    const char16_t* const className = place.className.load(std::memory_order_acquire);
    const char16_t* const detail = place.detail;
    if (className == nullptr || detail == nullptr)
    {
        return false;
    }
    text.Add(before);
    text.Add("'");
    text.AddName(className, CUnderWay::sc_uiCapacity);
    text.Add(place.activity == EActivity::FindCases ? "' in '" : ":");
    text.AddName(detail, CUnderWay::sc_uiCapacity);
    text.Add("'");
    return true;
}

std::string_view getPreposition(EActivity activity)
{
    switch (activity)
    {
    case EActivity::RecreateCase:
        return " beim Neuerzeugen von ";
    case EActivity::FindCases:
        return " bei der Suche nach Testfällen von ";
    default:
        return " in ";
    }
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

/// Adds the activities of threads that have not crashed.
void addOtherActivities(CCrashText& text, const CCrashThread::SPlace* own, bool isFirstKnown)
{
    bool isFirst = true;
    for (const CCrashThread::SPlace& place : s_places)
    {
        const std::string_view before = !isFirst       ? ", "
                                        : isFirstKnown ? "Fehler: Zugleich in Arbeit: "
                                                       : "Fehler: In Arbeit: ";
        isFirst = (&place == own || !addActivity(text, before, place)) && isFirst;
    }
    text.Add(isFirst ? "" : "\n");
}

void report(const LbOs::SCrash& crash) noexcept
{
    const CCrashThread::SPlace* const own = findOwnPlace();
    CCrashText& text = s_text;
    text.Add("Fehler: Absturz");
    const bool isKnown = own != nullptr && addActivity(text, getPreposition(own->activity), *own);
    text.Add(": ");
    addKind(text, crash);
    addPlace(text, crash);
    text.Add("\n");
    addOtherActivities(text, own, isKnown);
    text.Write();
    if (ICrashReporter* const reporter = s_reporter.load())
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

CCrashNotes::CCrashNotes(ICrashReporter* reporter) : m_handler(&report)
{
    s_reporter = reporter;
}

CCrashNotes::~CCrashNotes()
{
    s_reporter = nullptr;
}

CCrashThread::CCrashThread() : m_place(findOwnPlace())
{
    if (m_place == nullptr)
    {
        m_place = takePlace();
        m_isOuter = m_place != nullptr;
    }
}

CCrashThread::~CCrashThread()
{
    if (m_isOuter)
    {
        m_place->thread = 0;
    }
}

CUnderWay::CUnderWay(CCrashThread& thread, EActivity activity, const char16_t* className,
                     const char16_t* detail) noexcept
    : m_place(thread.m_place)
{
    if (m_place != nullptr)
    {
        m_formerActivity = m_place->activity.load(std::memory_order_relaxed);
        m_formerClass = m_place->className.load(std::memory_order_relaxed);
        m_formerDetail = m_place->detail.load(std::memory_order_relaxed);
        set(activity, className, detail);
    }
}

CUnderWay::~CUnderWay()
{
    if (m_place != nullptr)
    {
        set(m_formerActivity, m_formerClass, m_formerDetail);
    }
}

void CUnderWay::set(EActivity activity, const char16_t* className, const char16_t* detail) noexcept
{
    m_place->activity.store(activity, std::memory_order_relaxed);
    m_place->detail.store(detail, std::memory_order_relaxed);
    m_place->className.store(className, std::memory_order_release);
}

CNamedUnderWay::CNamedUnderWay(EActivity activity, const std::wstring& className, const std::wstring& detail)
    : m_className(LbEncoding::ToUtf16(className)), m_detail(LbEncoding::ToUtf16(detail)),
      m_underWay(m_thread, activity, m_className.c_str(), m_detail.c_str())
{
}

void WriteUnfinishedEnd() noexcept
{
    const CCrashThread::SPlace* const own = findOwnPlace();
    CCrashText& text = s_text;
    text.Add("Fehler: Der Prozess wurde mitten im Aufruf beendet");
    const bool isKnown = own != nullptr && addActivity(text, ": ", *own);
    text.Add("\n");
    addOtherActivities(text, own, isKnown);
    text.Write();
}

} // namespace LuTestSuite
