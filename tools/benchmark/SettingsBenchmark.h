#ifndef SETTINGSBENCHMARK_H
#define SETTINGSBENCHMARK_H

#include <PkoAPI/PkoAPI.h>

#include <QString>
#include <QtGlobal>

class TransactionCounter;

// Times saving all features of a camera to a settings document and loading
// that document back (check, keeping the current values, write and read
// back of each value), and counts the register transactions of each when
// given a counter. The minimum a save needs is one read per value, a load
// one write and one read per value. The check alone (what a dry run does)
// is measured too: a load makes it first.
class SettingsBenchmark {
public:
    struct Figure {
        qint64 nanoseconds = 0;
        long long transactions = -1;  // -1: not counted
        long long writes = -1;
    };

    struct Result {
        int values = 0;         // entries saved (and loaded)
        int selectorMoves = 0;  // selector writes of the save
        Figure save;
        Figure check;  // the check alone, as a dry run makes it
        Figure load;
        int applied = 0;  // entries the load applied or adjusted
        QString error;    // empty on success
    };

    // Runs on the open camera. Fails (error set) when the save fails or the
    // camera is lost during the load.
    static Result Run(const ZMT::PkoAPI::CameraPtr& camera, const TransactionCounter* counter);
};

#endif  // SETTINGSBENCHMARK_H
