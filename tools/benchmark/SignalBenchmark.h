#ifndef SIGNALBENCHMARK_H
#define SIGNALBENCHMARK_H

#include <QString>
#include <QStringList>

// One second of a 100 kHz pulse train on the first input of each simulated
// model with lines, on the manual clock: the CPU time the camera spends on
// it and the notifications its observers receive.
class SignalBenchmark {
public:
    // The report as Markdown table rows (with a header); an error line per
    // model that could not be measured.
    static QStringList Run(int runs);
};

#endif
