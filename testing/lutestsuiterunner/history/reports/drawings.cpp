#include "testing/lutestsuiterunner/history/reports/drawings.h"

#include <algorithm>
#include <cmath>

#include "testing/lutestsuiterunner/history/reports/germantext.h"

namespace Runner::History
{

namespace
{

constexpr std::size_t c_StripHeight = 16;
constexpr std::size_t c_LineWidth = 200;
constexpr std::size_t c_LineHeight = 28;
constexpr std::size_t c_TrendHeight = 120;

/// The width of a run in a strip: small if there are many runs, so that the strip fits beside the names.
std::size_t getRunWidth(std::size_t runCount)
{
    return runCount <= 25 ? 8 : runCount <= 50 ? 5 : runCount <= 100 ? 3 : 2;
}

/// The width of a run in the trend: large if there are few runs, so that the trend does not become too narrow.
std::size_t getTrendRunWidth(std::size_t runCount)
{
    constexpr std::size_t c_Wanted = 280;
    return std::clamp<std::size_t>(c_Wanted / runCount, 14, 48);
}

std::string number(std::size_t value)
{
    return std::to_string(value);
}

/// With one decimal. Zero has no sign. The text is the same on all platforms.
std::string number(double value)
{
    const auto tenths = static_cast<std::int64_t>(std::floor(value * 10.0 + 0.5));
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

std::string getBox(std::size_t left, std::size_t top, std::size_t width, std::size_t height)
{
    // Begins with a std::string, because GCC 12 wrongly warns of a literal before a temporary string.
    return std::string("M") + number(left) + " " + number(top) + "h" + number(width) + "v" + number(height) + "h-" +
           number(width) + "z";
}

/// A box for each run with this outcome; with `areJoined`, one for several such runs in succession.
std::string getBoxes(std::span<const EOutcome> outcomes, EOutcome wanted, std::size_t top, bool areJoined)
{
    const std::size_t width = getRunWidth(outcomes.size());
    std::string path;
    for (std::size_t run = 0; run < outcomes.size();)
    {
        const std::size_t start = run++;
        if (outcomes[start] != wanted)
        {
            continue;
        }
        for (; areJoined && run < outcomes.size() && outcomes[run] == wanted; ++run)
        {
        }
        path += getBox(start * width, top, (run - start) * width - (width > 2 ? 1 : 0), c_StripHeight - top);
    }
    return path;
}

std::string getPath(const char* style, const std::string& path)
{
    return path.empty() ? std::string() : std::string("<path class=\"") + style + "\" d=\"" + path + "\"/>";
}

/// Converts values to vertical positions: `highest` is at 0, the top, and `lowest` is at `height`.
class CScale
{
public:
    CScale(double lowest, double highest, double height)
        : m_lowest(lowest), m_span(highest > lowest ? highest - lowest : 1.0), m_height(height)
    {
    }

    double Get(double value) const { return m_height - (value - m_lowest) / m_span * m_height; }

private:
    double m_lowest;
    double m_span;
    double m_height;
};

} // namespace

std::string DrawOutcomes(std::span<const EOutcome> outcomes)
{
    constexpr std::size_t c_Low = 10;
    constexpr std::size_t c_Dot = 13;
    const std::size_t width = outcomes.size() * getRunWidth(outcomes.size());
    const auto passed = static_cast<std::size_t>(std::ranges::count(outcomes, EOutcome::Passed));
    const auto failed = static_cast<std::size_t>(std::ranges::count(outcomes, EOutcome::Failed));
    return "<svg class=\"strip\" role=\"img\" width=\"" + number(width) + "\" height=\"" + number(c_StripHeight) +
           "\" viewBox=\"0 0 " + number(width) + " " + number(c_StripHeight) + "\" aria-label=\"" + number(passed) +
           " bestanden, " + number(failed) + " fehlgeschlagen\">" +
           getPath("ok", getBoxes(outcomes, EOutcome::Passed, c_Low, true)) +
           getPath("bad", getBoxes(outcomes, EOutcome::Failed, 0, false)) +
           getPath("off", getBoxes(outcomes, EOutcome::Undecided, c_Dot, false)) + "</svg>";
}

std::string DrawLine(const SLine& line)
{
    double lowest = 0.0;
    double highest = 0.0;
    bool isFirst = true;
    for (const std::optional<double>& value : line.values)
    {
        if (value)
        {
            lowest = isFirst ? *value : std::min(lowest, *value);
            highest = isFirst ? *value : std::max(highest, *value);
            isFirst = false;
        }
    }
    const double step =
        static_cast<double>(c_LineWidth) / static_cast<double>(std::max<std::size_t>(1, line.values.size()));
    const auto getX = [step](std::size_t run) { return (static_cast<double>(run) + 0.5) * step; };
    const CScale scale(lowest, highest, static_cast<double>(c_LineHeight) - 4.0);
    std::string points;
    for (std::size_t run = 0; run < line.values.size(); ++run)
    {
        if (line.values[run])
        {
            points += number(getX(run)) + "," + number(scale.Get(*line.values[run]) + 2.0) + " ";
        }
    }
    std::string svg = "<svg class=\"line\" role=\"img\" width=\"" + number(c_LineWidth) + "\" height=\"" +
                      number(c_LineHeight) + "\" viewBox=\"0 0 " + number(c_LineWidth) + " " + number(c_LineHeight) +
                      "\" aria-label=\"" + line.label + "\">";
    if (line.intervalLast > line.intervalFirst)
    {
        svg += "<rect class=\"interval\" y=\"0\" height=\"" + number(c_LineHeight) + "\" x=\"" +
               number(static_cast<double>(line.intervalFirst) * step) + "\" width=\"" +
               number(static_cast<double>(line.intervalLast - line.intervalFirst + 1) * step) + "\"/>";
    }
    for (const std::size_t mark : line.marks)
    {
        svg += "<path class=\"mark\" d=\"M" + number(static_cast<double>(mark) * step) + " 0v" + number(c_LineHeight) +
               "\"/>";
    }
    return svg + "<polyline points=\"" + points + "\"/></svg>";
}

std::string DrawTrend(const STrend& trend)
{
    constexpr double c_TimeHeight = 64.0;
    constexpr double c_BarHeight = 44.0;
    const std::size_t runWidth = getTrendRunWidth(trend.seconds.size());
    const std::size_t width = trend.seconds.size() * runWidth;
    const double longest = std::max(1e-9, *std::ranges::max_element(trend.seconds));
    const double most = std::max(1.0, static_cast<double>(*std::ranges::max_element(trend.failed)));
    const CScale scale(0.0, longest, c_TimeHeight);
    std::string svg = "<svg class=\"trend\" role=\"img\" viewBox=\"0 0 " + number(width) + " " + number(c_TrendHeight) +
                      "\" width=\"" + number(width) + "\" aria-label=\"Gesamtzeit und Fehlschläge der Läufe\">";
    std::string points;
    for (std::size_t run = 0; run < trend.seconds.size(); ++run)
    {
        const double x = (static_cast<double>(run) + 0.5) * static_cast<double>(runWidth);
        points += number(x) + "," + number(scale.Get(trend.seconds[run]) + 4.0) + " ";
        const double height = c_BarHeight * static_cast<double>(trend.failed[run]) / most;
        svg += "<g><title>" + trend.titles[run] + "</title><rect class=\"cell\" x=\"" + number(run * runWidth) +
               "\" y=\"0\" width=\"" + number(runWidth) + "\" height=\"" + number(c_TrendHeight) +
               "\"/><rect class=\"bad\" x=\"" + number(run * runWidth + 2) + "\" width=\"" + number(runWidth - 4) +
               "\" y=\"" + number(static_cast<double>(c_TrendHeight) - height) + "\" height=\"" + number(height) +
               "\"/></g>";
    }
    return svg + "<polyline points=\"" + points + "\"/></svg>";
}

} // namespace Runner::History
