#include "Models.h"

#include <PkoAPI/Sim/SimCamera.h>

namespace ZMT::PkoAPI::Sim {

namespace {

struct ModelEntry {
    const char* id;
    SimCameraPtr (*build)();
};

const ModelEntry kModels[] = {
    {"SIM-LINE-ROUTING", &BuildLineRoutingModel}, {"SIM-LINE-SFNC", &BuildLineSfncModel},
    {"SIM-SYNCOUT", &BuildSyncOutModel},          {"SIM-LINEOUT", &BuildLineOutModel},
    {"SIM-NO-TRIGGER", &BuildNoTriggerModel},
};

}  // namespace

std::vector<std::string> ModelIds()
{
    std::vector<std::string> ids;
    for (const ModelEntry& model : kModels)
        ids.emplace_back(model.id);
    return ids;
}

SimCameraPtr CreateModel(const std::string& id)
{
    for (const ModelEntry& model : kModels) {
        if (id == model.id)
            return model.build();
    }
    return SimCameraPtr();
}

}  // namespace ZMT::PkoAPI::Sim
