#ifndef TABBENCHMARK_H
#define TABBENCHMARK_H

#include <PkoAPI/PkoAPI.h>

#include <QString>
#include <QtGlobal>

class TransactionCounter;

// Times what the viewer does with the "Trigger IO" tab on one camera, step by
// step, and counts the register transactions of each step when it is given a
// counter. Runs on the GUI thread and never spins the event loop, so that the
// tab's own one-second timer cannot tick inside a step.
class TabBenchmark {
public:
    enum Step {
        OpenCamera,  // Open() and GetFeatures(), as the viewer does
        CreateTab,   // the plug-in's CreateTabWidget
        Show,        // show(): the tab watches and refreshes everything
        FirstTick,   // the first tick after show (hands over all names again)
        IdleTick,    // a tick with nothing changed
        Preset,      // a click on "Edge"
        PresetTick,  // the tick that shows what the preset changed
        StepCount
    };

    struct Figure {
        qint64 nanoseconds = 0;
        long long transactions = -1;  // -1: not counted
        long long writes = -1;
        long long registers = -1;  // distinct addresses the transactions touched
    };

    struct Result {
        Figure steps[StepCount];
        // Transactions per second while the tab is shown and nothing
        // happens (the SDK's polling of watched features, heartbeat); -1
        // when not counted.
        double backgroundPerSecond = -1;
        // The same without Aravis's heartbeat.
        double pollingPerSecond = -1;
        QString error;  // empty on success
    };

    static const char* StepName(Step step);

    // Runs every step on the closed camera and closes it again. Counts
    // transactions only with a counter, and measures the background for two
    // seconds when asked to.
    static Result Run(const ZMT::PkoAPI::CameraPtr& camera, const TransactionCounter* counter, bool background);
};

#endif  // TABBENCHMARK_H
