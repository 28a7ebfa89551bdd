#ifndef GATEOBSERVER_H
#define GATEOBSERVER_H

#include <PkoAPI/PkoAPI.h>

#include <condition_variable>
#include <mutex>

// An SDK observer that holds the SDK's notification thread inside its first
// callback until Open() (or a 5 s safety timeout), so that a test can decide
// what happens before the notifications queued behind it are delivered.
class GateObserver : public ZMT::PkoAPI::IFeatureObserver {
public:
    GateObserver() = default;

    void FeatureChanged(const ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>& feature) override;

    // Waits until a callback has entered the gate; false after timeoutMs.
    bool WaitUntilHeld(int timeoutMs);
    // Lets the held callback, and every later one, through.
    void Open();

private:
    std::mutex m_Lock;
    std::condition_variable m_Changed;
    bool m_Held = false;
    bool m_Open = false;
};

#endif
