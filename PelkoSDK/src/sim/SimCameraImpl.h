#ifndef PKOAPI_SRC_SIMCAMERAIMPL_H
#define PKOAPI_SRC_SIMCAMERAIMPL_H

#include "DeviceAnchor.h"
#include "Notifier.h"
#include "SimState.h"

#include <PkoAPI/Sim/SimCamera.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace ZMT::PkoAPI::Sim {

class SimFeature;

// A simulated camera: its state behind one lock, and while it is open two
// threads of its own, one delivering notifications and one playing its
// signals on the real clock (pulses, exposures, frames).
class SimCameraImpl final : public SimCamera {
public:
    // state must have been initialised successfully.
    SimCameraImpl(std::string id, std::string model, SimState state);
    // Cuts its features off (they fail with PkoErrorBadHandle from then on)
    // and closes.
    ~SimCameraImpl() override;

    int GetID(std::string& id) const override;
    int GetModel(std::string& model) const override;
    int GetName(std::string& name) const override;

    int Open() override;
    int Close() override;
    bool IsOpen() const override;

    int GetFeatures(std::vector<FeaturePtr>& features) override;
    int GetFeatureByName(const char* name, FeaturePtr& feature) override;

    int StartAcquisition() override;
    int StopAcquisition() override;
    bool IsAcquiring() const override;
    unsigned long long FramesDelivered() const override;
    int GetLatestFrame(Frame& frame) override;
    bool IsConnectionLost() const override;

    std::vector<JournalEntry> Journal() const override;
    void ClearJournal() override;
    void InjectFault(const std::string& feature, Operation op, int errorCode) override;
    void InjectNaN(const std::string& feature) override;
    void ClearFaults() override;
    int ChangeFromCamera(const std::string& feature, const std::string& valueText,
                         const std::string& selectorEntry) override;
    std::string ValueText(const std::string& feature, const std::string& selectorEntry) const override;
    unsigned long long SoftwareTriggers() const override;
    bool WaitForNotifications(int timeoutMs) override;
    unsigned long long JournalDropped() const override;
    void SetJournalCapacity(std::size_t entries) override;
    void JournalLevelChanges(bool on) override;

    std::vector<std::string> Lines() const override;
    int LineLevel(const std::string& line, bool& high) const override;
    int DriveInput(const std::string& line, bool high) override;
    int StartPulses(const std::string& line, double periodMs, double highMs, int count) override;
    int StopPulses(const std::string& line) override;
    int Wire(const std::string& outputLine, const std::string& inputLine) override;
    int Unwire(const std::string& outputLine, const std::string& inputLine) override;
    void UseManualClock() override;
    int AdvanceClock(double ms) override;
    long long ClockNs() const override;

    // Cables to other cameras (Sim::Wire): outputLine of this camera drives
    // inputLine of target from now on.
    int WireTo(SimCameraImpl& target, const std::string& outputLine, const std::string& inputLine);
    int UnwireFrom(SimCameraImpl& target, const std::string& outputLine, const std::string& inputLine);

    // Runs op(state) for a feature operation: PkoErrorBadHandle while the
    // camera is closed, else op's result; the changes it made are then
    // announced to observers and to the frame thread.
    template <class Op>
    int Access(Op&& op)
    {
        return Locked(PkoErrorBadHandle, [&] { return op(m_State); });
    }

private:
    // A cable from one of this camera's outputs to another camera.
    struct RemoteWire {
        std::string output;
        std::shared_ptr<DeviceAnchor<SimCameraImpl>> target;
        std::string input;
    };

    // Runs op under the lock on a state brought up to the camera's time
    // (closedResult while closed), then announces what changed: observers,
    // the signal thread, cables to other cameras.
    template <class Op>
    int Locked(int closedResult, Op&& op)
    {
        int result = PkoErrorSuccess;
        std::vector<SignalState::Edge> outgoing;
        bool wake = false;
        {
            std::lock_guard<std::mutex> lock(m_Mutex);
            if (!m_Open)
                return closedResult;
            CatchUpLocked();
            result = op();
            PostLocked();
            outgoing = m_State.TakeOutgoing();
            wake = m_State.TakeWake();
        }
        if (wake)
            m_FrameWake.notify_all();
        SendOutgoing(outgoing);
        return result;
    }

    int RunCommandByName(const char* name);
    long long RealClockNs() const;
    // Plays the state up to now on the real clock; nothing on a manual one.
    void CatchUpLocked();
    void PostLocked();
    void SendOutgoing(const std::vector<SignalState::Edge>& edges);
    // A level change from another camera's cable, at that camera's time.
    void ReceiveLevel(const std::string& input, bool high, long long time);
    void SignalLoop(unsigned long long session);
    // Remembers the newest frame's image size.
    void NoteFrameSizeLocked();

    const std::string m_Id;
    const std::string m_Model;
    std::shared_ptr<DeviceAnchor<SimCameraImpl>> m_Anchor;
    // Fixed after construction; index i is the state's feature i.
    std::vector<shared_ptr<SimFeature>> m_Features;

    mutable std::mutex m_Mutex;
    std::condition_variable m_FrameWake;
    SimState m_State;
    bool m_Open = false;
    // Each Open starts a session; a frame thread ends when its session is over.
    unsigned long long m_Session = 0;
    std::shared_ptr<Notifier> m_Notifier;
    std::thread m_FrameThread;
    bool m_ManualClock = false;
    unsigned long long m_FramesSeen = 0;
    std::vector<RemoteWire> m_RemoteWires;
    // Size of the newest frame; its pixels are made on request from its id.
    unsigned int m_FrameWidth = 0;
    unsigned int m_FrameHeight = 0;
};

}  // namespace ZMT::PkoAPI::Sim

#endif
