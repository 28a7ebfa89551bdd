#ifndef PKOAPI_SRC_SIM_SIGNALSTATE_H
#define PKOAPI_SRC_SIM_SIGNALSTATE_H

#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace ZMT::PkoAPI::Sim {

// The moving parts of a simulated camera's signals: time, line levels, the
// pulse trains and cables on them, the sensor's phase and what the
// acquisition waits for. Plain data; SimState runs it.
struct SignalState {
    static constexpr long long kNever = std::numeric_limits<long long>::max();

    struct PulseTrain {
        bool running = false;
        long long periodNs = 0;
        long long highNs = 0;
        int left = 0;  // pulses still to start, 0: endless
        bool endless = false;
        long long nextEdge = kNever;
    };
    enum class Phase { Idle, Delay, Exposing, Readout };
    enum class Acquisition { Off, Armed, Active };
    // A frame being made: when and why its exposure started.
    struct FrameInProgress {
        long long start = 0;
        std::string trigger;
        bool width = false;  // ends when the trigger lets go, not by time
    };

    long long now = 0;
    std::vector<char> drive;  // per line: the level applied to an input from outside
    std::vector<char> level;  // per line: the level now, as "LineStatus" shows it
    std::vector<PulseTrain> pulses;
    std::vector<std::pair<int, int>> wires;  // output line -> input line, this camera
    std::vector<char> remote;                // per line: wired to another camera
    std::vector<char> toggled;               // per line: changed since the last notification

    Phase phase = Phase::Idle;
    long long phaseEnd = kNever;
    FrameInProgress frame;
    Acquisition acquisition = Acquisition::Off;
    unsigned long long startedThisAcquisition = 0;
    long long nextFreeRun = 0;
    bool frameTrigger = false;        // the frame trigger's source level, last seen
    bool acquisitionTrigger = false;  // the same for the acquisition trigger
    bool frameTriggerHeld = false;    // a level or width trigger is active

    // Signal-driven features notify at most once per interval.
    long long lastNotify = std::numeric_limits<long long>::min() / 2;
    bool notifyDue = false;
    bool journalLevels = false;
    // Level changes of remotely wired lines, for the camera to pass on.
    struct Edge {
        int line;
        bool high;
        long long time;
    };
    std::vector<Edge> outgoing;
};

}  // namespace ZMT::PkoAPI::Sim

#endif
