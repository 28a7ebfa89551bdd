#ifndef MONITORBENCHMARK_H
#define MONITORBENCHMARK_H

#include <QStringList>

// The I/O Monitor's GUI-thread cost: a poll and the strip's repaint at
// 100 Hz with a full 60 s history, on the simulated models on the manual
// clock, with pulse trains on their inputs.
class MonitorBenchmark {
public:
    // The report as Markdown table rows (with a header); an error line per
    // model that could not be measured.
    static QStringList Run(int runs);
};

#endif
