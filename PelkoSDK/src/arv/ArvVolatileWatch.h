#ifndef PKOAPI_SRC_ARV_ARVVOLATILEWATCH_H
#define PKOAPI_SRC_ARV_ARVVOLATILEWATCH_H

#include "ArvDescriptionMarks.h"
#include "ArvNodeInfo.h"

#include <arv.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ZMT::PkoAPI::Arv {

// The polling of a camera whose description is marked: only the nodes that
// may change by themselves (volatile, or with a polling time) are read, each
// at its own period, and a register several nodes share is read once per
// round. Everything else changes only through writes, which the dependency
// graph follows. Calls Aravis: every member runs under the device lock.
class ArvVolatileWatch {
public:
    typedef std::chrono::steady_clock Clock;

    ArvVolatileWatch(const std::vector<ArvNodeInfo>& features, const ArvDescriptionMarks& marks,
                     std::chrono::milliseconds defaultPeriod);

    // True when feature index reads a node that may change by itself.
    bool Watches(int feature) const;

    // Starts a round at now for the observed features: the watched nodes due
    // (their indices), and how long until the next one is due (the default
    // period when nothing is watched).
    std::vector<int> StartRound(const std::vector<int>& observed, Clock::time_point now,
                                std::chrono::milliseconds& untilNext);
    // Reads watched node index once (a register shared with a node read
    // earlier in the round is not read again) and, when its value differs
    // from the last one seen, adds the features that read it to changed,
    // each once a round. error is the failure of the read.
    void ReadLocked(int index, ArvDevice* device, std::vector<int>& changed, GError** error);
    // A write changed what feature reads: what its nodes read next is the
    // new start, not a change.
    void Forget(int feature);

private:
    struct Watched {
        ArvGcNode* node = nullptr;
        std::chrono::milliseconds period{0};
        Clock::time_point due;
        std::optional<std::string> last;
        std::vector<int> readers;
        // Set for a register on the device's port: read as raw memory.
        bool raw = false;
    };

    std::string ReadValue(Watched& watched, ArvDevice* device, GError** error);

    std::vector<Watched> m_Watched;
    // Per feature, the watched nodes it reads.
    std::vector<std::vector<int>> m_ByFeature;
    std::chrono::milliseconds m_DefaultPeriod;
    // What the round read so far, by address and length.
    std::map<std::pair<guint64, gint64>, std::string> m_Round;
    // The features the round found changed so far.
    std::vector<bool> m_Changed;
};

}  // namespace ZMT::PkoAPI::Arv

#endif
