#ifndef PKOAPI_SRC_FEATURELIST_H
#define PKOAPI_SRC_FEATURELIST_H

#include <PkoAPI/Feature.h>
#include <PkoAPI/PkoCommonTypes.h>

#include <new>
#include <vector>

namespace ZMT::PkoAPI {

// A backend's features as clients get them from Camera::GetFeatures: all of
// them in order, replacing features; PkoErrorResources (features unchanged)
// when memory runs out.
template <class BackendFeature>
int CopyFeatureList(const std::vector<shared_ptr<BackendFeature>>& from, std::vector<FeaturePtr>& features)
{
    try {
        std::vector<FeaturePtr> all(from.begin(), from.end());
        features.swap(all);
    } catch (const std::bad_alloc&) {
        return PkoErrorResources;
    }
    return PkoErrorSuccess;
}

}  // namespace ZMT::PkoAPI

#endif
