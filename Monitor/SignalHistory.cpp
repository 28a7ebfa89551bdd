#include "SignalHistory.h"

#include <algorithm>

namespace {

const std::deque<SignalHistory::Change> s_NoChanges;

}  // namespace

SignalHistory::SignalHistory(double windowMs) : m_WindowMs(kMinWindowMs)
{
    SetWindowMs(windowMs);
}

void SignalHistory::SetLines(const QStringList& names)
{
    m_Names = names;
    m_Changes.assign(static_cast<std::size_t>(names.size()), std::deque<Change>());
    m_Marks.clear();
}

void SignalHistory::SetWindowMs(double windowMs)
{
    // NaN fails both comparisons and ends up at the minimum.
    if (!(windowMs >= kMinWindowMs))
        windowMs = kMinWindowMs;
    m_WindowMs = std::min(windowMs, kMaxWindowMs);
}

void SignalHistory::AddSample(double timeMs, unsigned long long levels)
{
    for (int line = 0; line < m_Names.size() && line < 64; ++line)
        AddLevel(line, timeMs, (levels >> line) & 1ULL);
}

void SignalHistory::AddLevel(int line, double timeMs, bool high)
{
    if (line < 0 || line >= static_cast<int>(m_Changes.size()))
        return;
    m_LatestMs = std::max(m_LatestMs, timeMs);
    std::deque<Change>& changes = m_Changes[static_cast<std::size_t>(line)];
    if (changes.empty())
        changes.push_back(Change{timeMs, high, false});
    else if (changes.back().high != high)
        changes.push_back(Change{timeMs, high, true});
    if (changes.size() > kMaxEntries)
        changes.pop_front();
    Trim();
}

void SignalHistory::AddMark(MarkKind kind, double timeMs)
{
    m_LatestMs = std::max(m_LatestMs, timeMs);
    m_Marks.push_back(Mark{timeMs, kind});
    if (m_Marks.size() > kMaxEntries)
        m_Marks.pop_front();
    Trim();
}

const std::deque<SignalHistory::Change>& SignalHistory::Changes(int line) const
{
    if (line < 0 || line >= static_cast<int>(m_Changes.size()))
        return s_NoChanges;
    return m_Changes[static_cast<std::size_t>(line)];
}

int SignalHistory::RisingEdges(int line) const
{
    const double start = WindowStartMs();
    int edges = 0;
    for (const Change& change : Changes(line)) {
        if (change.edge && change.high && change.timeMs >= start)
            ++edges;
    }
    return edges;
}

int SignalHistory::MarkCount(MarkKind kind) const
{
    return static_cast<int>(
        std::count_if(m_Marks.begin(), m_Marks.end(), [kind](const Mark& mark) { return mark.kind == kind; }));
}

bool SignalHistory::LevelAt(int line, double timeMs) const
{
    bool high = false;
    for (const Change& change : Changes(line)) {
        if (change.timeMs > timeMs)
            break;
        high = change.high;
    }
    return high;
}

void SignalHistory::Clear()
{
    SetLines(m_Names);
    m_LatestMs = 0.0;
}

void SignalHistory::Trim()
{
    const double start = WindowStartMs();
    // The last change before the window stays: it is the level at the start.
    for (std::deque<Change>& changes : m_Changes) {
        while (changes.size() >= 2 && changes[1].timeMs <= start)
            changes.pop_front();
    }
    while (!m_Marks.empty() && m_Marks.front().timeMs < start)
        m_Marks.pop_front();
}
