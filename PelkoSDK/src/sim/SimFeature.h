#ifndef PKOAPI_SRC_SIMFEATURE_H
#define PKOAPI_SRC_SIMFEATURE_H

#include "DeviceAnchor.h"
#include "FeatureBase.h"

#include <memory>
#include <string>
#include <vector>

namespace ZMT::PkoAPI::Sim {

class SimCameraImpl;
typedef DeviceAnchor<SimCameraImpl> CameraAnchor;

// One feature of a simulated camera. It holds no state of its own beyond its
// entry texts (GetValues hands out pointers into them, valid as long as this
// object lives); every operation goes to the camera through the anchor.
class SimFeature final : public FeatureBase {
public:
    SimFeature(std::shared_ptr<CameraAnchor> anchor, int index, std::vector<std::string> entries);

    int GetName(char* name, unsigned int& length) override;
    int GetDisplayName(char* displayName, unsigned int& length) override;
    int GetCategory(char* category, unsigned int& length) override;
    int GetDataType(PkoFeatureDataType& dataType) override;

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

protected:
    int CheckObserverOperation(bool registering) override;

private:
    template <class Op>
    int Call(Op&& op);

    std::shared_ptr<CameraAnchor> m_Anchor;
    const int m_Index;
    const std::vector<std::string> m_Entries;
};

}  // namespace ZMT::PkoAPI::Sim

#endif
