#ifndef MONITORLINE_H
#define MONITORLINE_H

#include <QString>

// One I/O line as the monitor shows it in its lamp row.
struct MonitorLine {
    QString name;
    bool output = false;
    // The signal that drives an output ("" for an input).
    QString source;
    // LineInverter on, or polarity "Invert".
    bool inverted = false;
    // Bit of the line in its family's level mask.
    int bit = 0;
    // Which of the family's two masks holds the bit (inputs or outputs); 0
    // for the single LineStatusAll mask.
    int mask = 0;
};

#endif
