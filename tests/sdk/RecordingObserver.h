#ifndef TESTS_SDK_RECORDINGOBSERVER_H
#define TESTS_SDK_RECORDINGOBSERVER_H

#include <PkoAPI/PkoAPI.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// Remembers every FeatureChanged call (feature name and calling thread) and
// can run a hook inside the callback. Safe to read while callbacks arrive.
class RecordingObserver : public ZMT::PkoAPI::IFeatureObserver {
public:
    struct Call {
        std::string feature;
        std::thread::id thread;
    };
    typedef std::function<void(const ZMT::PkoAPI::FeaturePtr&)> Hook;

    // destroyed, when given, is set when this object is deleted.
    explicit RecordingObserver(std::atomic<bool>* destroyed = nullptr);
    ~RecordingObserver() override;

    void FeatureChanged(const ZMT::PkoAPI::FeaturePtr& feature) override;

    // Runs inside every later callback, after the call is recorded.
    void SetHook(Hook hook);
    std::vector<Call> Calls() const;
    int Count() const;
    int CountFor(const std::string& feature) const;
    void Clear();

private:
    mutable std::mutex m_Mutex;
    std::vector<Call> m_Calls;
    Hook m_Hook;
    std::atomic<bool>* m_Destroyed;
};

#endif
