#ifndef SIGNALHISTORY_H
#define SIGNALHISTORY_H

#include <QString>
#include <QStringList>

#include <deque>
#include <vector>

// What the signal strip shows, without any drawing: per line the times at
// which its level changed, and marks (frames, software triggers), all kept
// only for the last WindowMs() of time. Times are milliseconds on one clock
// chosen by the caller; they must not go backwards. Not thread-safe (GUI
// thread only).
class SignalHistory {
public:
    enum class MarkKind { Frame, SoftwareTrigger };

    struct Change {
        double timeMs;
        bool high;
        // False for the first level seen of a line: it starts the trace but is no edge.
        bool edge;
    };
    struct Mark {
        double timeMs;
        MarkKind kind;
    };

    // Bounds the memory whatever the signals do: a line keeps at most this
    // many changes (the oldest go first), the marks as many again.
    static constexpr std::size_t kMaxEntries = 200000;
    static constexpr double kMinWindowMs = 1000.0;
    static constexpr double kMaxWindowMs = 60000.0;

    explicit SignalHistory(double windowMs = 10000.0);

    // Starts over with these lines (in bit order: line i is bit i of a sample).
    void SetLines(const QStringList& names);
    int LineCount() const { return m_Names.size(); }
    QString LineName(int line) const { return m_Names.value(line); }

    // Clamped to kMinWindowMs..kMaxWindowMs; a shorter window drops what
    // falls out of it at the next Add.
    void SetWindowMs(double windowMs);
    double WindowMs() const { return m_WindowMs; }

    // Records the levels of every line at timeMs (bit i = line i); only
    // changes are kept. Then drops what is older than the window.
    void AddSample(double timeMs, unsigned long long levels);
    // The same for one line; an unknown line is ignored.
    void AddLevel(int line, double timeMs, bool high);
    void AddMark(MarkKind kind, double timeMs);

    // The newest time seen (0 before the first Add).
    double LatestMs() const { return m_LatestMs; }
    double WindowStartMs() const { return m_LatestMs - m_WindowMs; }

    // Oldest first; the first change may lie before the window start: it
    // gives the level the line had when the window starts.
    const std::deque<Change>& Changes(int line) const;
    const std::deque<Mark>& Marks() const { return m_Marks; }

    // Edges from low to high inside the window.
    int RisingEdges(int line) const;
    int MarkCount(MarkKind kind) const;
    // Level of the line at timeMs; false before anything is known.
    bool LevelAt(int line, double timeMs) const;

    void Clear();

private:
    void Trim();

    QStringList m_Names;
    std::vector<std::deque<Change>> m_Changes;
    std::deque<Mark> m_Marks;
    double m_WindowMs;
    double m_LatestMs = 0.0;
};

#endif
