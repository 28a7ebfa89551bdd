#ifndef PKOAPI_SRC_FEATUREDECL_H
#define PKOAPI_SRC_FEATUREDECL_H

#include <PkoAPI/PkoCommonTypes.h>
#include <PkoAPI/Sim/SimTypes.h>

#include <string>
#include <utility>
#include <vector>

namespace ZMT::PkoAPI::Sim {

// Everything declared about one simulated feature. Each camera built gets its
// own copy, so a builder can build several independent cameras.
struct FeatureDecl {
    std::string name;
    std::string displayName;
    std::string category = "/Root";
    int dataType = PkoFeatureDataUnknown;
    // Made by AddOfType: reports its data type and nothing else; every value
    // operation is refused as the wrong type.
    bool opaque = false;

    std::string value;  // initial value text in the journal's format
    long long intMinimum = 0;
    long long intMaximum = 0;
    long long intIncrement = 1;
    double floatMinimum = 0.0;
    double floatMaximum = 0.0;
    double floatIncrement = 0.0;
    std::vector<std::string> entries;

    bool readOnly = false;
    bool lockedWhileAcquiring = false;
    Predicate writableWhen;
    std::vector<std::pair<std::string, Predicate>> entryRules;
    std::vector<std::string> selects;
    std::vector<std::pair<std::string, std::string>> valuesAt;
    ValueRule computed;
    std::vector<std::string> notifies;

    // A misuse noticed while declaring (Build reports the first one).
    std::string error;
};

}  // namespace ZMT::PkoAPI::Sim

#endif
