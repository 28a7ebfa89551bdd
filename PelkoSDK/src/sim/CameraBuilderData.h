#ifndef PKOAPI_SRC_CAMERABUILDERDATA_H
#define PKOAPI_SRC_CAMERABUILDERDATA_H

#include "FeatureDecl.h"

#include <memory>
#include <string>
#include <vector>

namespace ZMT::PkoAPI::Sim {

// The builder's declarations. Held through unique_ptr so that the
// FeatureBuilders handed out keep pointing at the same declaration.
class CameraBuilderData {
public:
    std::string m_Id;
    std::string m_Model;
    std::vector<std::unique_ptr<FeatureDecl>> m_Decls;
    std::string m_Error;  // why the last Build failed
};

}  // namespace ZMT::PkoAPI::Sim

#endif
