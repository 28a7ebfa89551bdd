#ifndef MONITORBENCHMARK_H
#define MONITORBENCHMARK_H

#include <QStringList>

// The I/O Monitor's costs. On the GUI thread: a poll and the strip's
// repaint at 100 Hz with a full 60 s history, on the simulated models and
// on an eight-line camera built for the benchmark, on the manual clock,
// with pulse trains on their inputs. On the wire: the register transactions
// of a poll on a fake GigE Vision camera of each naming generation.
class MonitorBenchmark {
public:
    // Polls counted per run on each GigE camera.
    static const int kLevelPolls = 100;

    // The GUI-thread report as Markdown table rows (with a header); an
    // error line per camera that could not be measured.
    static QStringList Run(int runs);
    // The transactions report as Markdown table rows (with a header), or
    // the reason why it was not measured: only inside a loopback-only
    // network namespace, where the fake cameras' discovery reaches nothing
    // but 127.0.0.1.
    static QStringList RunGigE(int runs);
    // True when every network interface that is up is a loopback one.
    static bool LoopbackOnly();
};

#endif
