#ifndef COUNTINGFEATURE_H
#define COUNTINGFEATURE_H

#include <PkoAPI/PkoAPI.h>

#include <atomic>

// Passes every call on to a real SDK feature and counts the name and text
// reads, so that tests can see how often a feature was consulted.
class CountingFeature : public ZMT::PkoAPI::Feature {
public:
    explicit CountingFeature(const ZMT::PkoAPI::FeaturePtr& inner);

    // GetName calls so far, both steps of the text protocol counted.
    int NameReads() const { return m_NameReads.load(); }
    // GetValue(char*, unsigned int&) calls so far.
    int TextReads() const { return m_TextReads.load(); }

    int GetName(char* name, unsigned int& length) override;
    int GetDisplayName(char* displayName, unsigned int& length) override;
    int GetCategory(char* category, unsigned int& length) override;
    int GetDataType(ZMT::PkoAPI::PkoFeatureDataType& dataType) override;
    int GetValue(long long& value) override;
    int GetValue(double& value) override;
    int GetValue(bool& value) override;
    int GetValue(char* value, unsigned int& length) override;
    int SetValue(const long long& value) override;
    int SetValue(const double& value) override;
    int SetValue(bool value) override;
    int SetValue(const char* value) override;
    int GetRange(long long& minimum, long long& maximum) override;
    int GetRange(double& minimum, double& maximum) override;
    int GetIncrement(long long& increment) override;
    int GetIncrement(double& increment) override;
    int GetValues(const char** entries, unsigned int& count) override;
    int IsValueAvailable(const char* entry, bool& available) override;
    int IsWritable(bool& writable) override;
    int RunCommand() override;
    int RegisterObserver(const ZMT::PkoAPI::IFeatureObserverPtr& observer) override;
    int UnregisterObserver(const ZMT::PkoAPI::IFeatureObserverPtr& observer) override;

private:
    ZMT::PkoAPI::FeaturePtr m_Inner;
    std::atomic<int> m_NameReads{0};
    std::atomic<int> m_TextReads{0};
};

#endif
