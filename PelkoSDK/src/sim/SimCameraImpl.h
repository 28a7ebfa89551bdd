#ifndef PKOAPI_SRC_SIMCAMERAIMPL_H
#define PKOAPI_SRC_SIMCAMERAIMPL_H

#include "DeviceAnchor.h"
#include "Notifier.h"
#include "SimState.h"

#include <PkoAPI/Sim/SimCamera.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace ZMT::PkoAPI::Sim {

class SimFeature;

// A simulated camera: its state behind one lock, and while it is open two
// threads of its own, one delivering notifications and one making frames.
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

    // Runs op(state) for a feature operation: PkoErrorBadHandle while the
    // camera is closed, else op's result; the changes it made are then
    // announced to observers and to the frame thread.
    template <class Op>
    int Access(Op&& op)
    {
        int result = PkoErrorSuccess;
        bool wake = false;
        {
            std::lock_guard<std::mutex> lock(m_Mutex);
            if (!m_Open)
                return PkoErrorBadHandle;
            result = op(m_State);
            PostLocked();
            wake = m_State.TakeWake();
        }
        if (wake)
            m_FrameWake.notify_all();
        return result;
    }

private:
    int RunCommandByName(const char* name);
    void PostLocked();
    void FrameLoop(unsigned long long session);
    // Counts one frame and remembers the image size it had.
    void DeliverFrameLocked();

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
    // Size of the newest frame; its pixels are made on request from its id.
    unsigned int m_FrameWidth = 0;
    unsigned int m_FrameHeight = 0;
};

}  // namespace ZMT::PkoAPI::Sim

#endif
