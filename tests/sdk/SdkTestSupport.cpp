#include "SdkTestSupport.h"

using namespace ZMT::PkoAPI;

std::string NameOf(const FeaturePtr& feature)
{
    unsigned int length = 0;
    if (!feature || feature->GetName(nullptr, length) != PkoErrorSuccess)
        return std::string();
    std::string name(length, '\0');
    if (length != 0 && feature->GetName(&name[0], length) != PkoErrorSuccess)
        return std::string();
    return name;
}

std::string TextOf(const FeaturePtr& feature)
{
    unsigned int length = 0;
    if (!feature || feature->GetValue(nullptr, length) != PkoErrorSuccess)
        return std::string();
    std::string text(length, '\0');
    if (length != 0 && feature->GetValue(&text[0], length) != PkoErrorSuccess)
        return std::string();
    return text;
}

std::vector<std::string> EntriesOf(const FeaturePtr& feature)
{
    unsigned int count = 0;
    if (!feature || feature->GetValues(nullptr, count) != PkoErrorSuccess)
        return {};
    std::vector<const char*> entries(count);
    if (count != 0 && feature->GetValues(entries.data(), count) != PkoErrorSuccess)
        return {};
    return std::vector<std::string>(entries.begin(), entries.end());
}

std::vector<std::string> AvailableEntriesOf(const FeaturePtr& feature)
{
    std::vector<std::string> available;
    for (const std::string& entry : EntriesOf(feature)) {
        bool isAvailable = false;
        if (feature->IsValueAvailable(entry.c_str(), isAvailable) == PkoErrorSuccess && isAvailable)
            available.push_back(entry);
    }
    return available;
}

bool IsWritable(const FeaturePtr& feature)
{
    bool writable = false;
    return feature && feature->IsWritable(writable) == PkoErrorSuccess && writable;
}

FeaturePtr FeatureOf(const CameraPtr& camera, const std::string& name)
{
    FeaturePtr feature;
    if (camera)
        camera->GetFeatureByName(name.c_str(), feature);
    return feature;
}

Sim::SimCameraPtr OpenModel(const std::string& id)
{
    Sim::SimCameraPtr camera = Sim::CreateModel(id);
    if (!camera || camera->Open() != PkoErrorSuccess)
        return Sim::SimCameraPtr();
    return camera;
}

Sim::SimCameraPtr OpenBuilt(const Sim::CameraBuilder& builder)
{
    Sim::SimCameraPtr camera = builder.Build();
    if (!camera || camera->Open() != PkoErrorSuccess)
        return Sim::SimCameraPtr();
    return camera;
}
