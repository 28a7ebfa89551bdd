#ifndef PKOAPI_SRC_SIM_SIGNALCONFIG_H
#define PKOAPI_SRC_SIM_SIGNALCONFIG_H

#include <string>
#include <vector>

namespace ZMT::PkoAPI::Sim {

// What the camera's features say about its signals, read once after each
// change of them instead of on every edge: a pulse train at 100 kHz must not
// parse feature texts.
struct SignalConfig {
    // What drives an output line.
    enum class Source {
        Low,
        Stored,  // a user output, "GPO" bit or "Direct" level: stored
        ExposureActive,
        FrameTriggerWait,
        AcquisitionActive,
        AcquisitionTriggerWait,
        FrameReadout,
        FrameTrigger,
        Line,  // another line's level (an input passed through)
    };
    enum class Activation { Rising, Falling, Any, High, Low };

    struct Line {
        bool output = false;
        bool inverted = false;
        Source source = Source::Low;
        bool stored = false;  // Source::Stored
        int sourceLine = -1;  // Source::Line
        bool routed = false;  // "LineRouting" "Trigger": part of "InputLines"
    };

    struct Trigger {
        bool on = false;
        bool software = false;
        bool freeRun = false;    // "Freerun", "FixedRate": no trigger at all
        std::vector<int> lines;  // the trigger follows the first high one (OR)
        std::string name;        // the source as frames report it
        Activation activation = Activation::Rising;
        long long delayNs = 0;
        bool width = false;  // exposes while active
    };

    std::vector<Line> lines;
    Trigger frame;
    Trigger acquisition;
    long long exposureNs = 10000000;
    long long readoutNs = 5000000;
    long long periodNs = 33333333;
    unsigned long long frameLimit = 0;  // frames per acquisition, 0: no limit
};

}  // namespace ZMT::PkoAPI::Sim

#endif
