#ifndef PKOAPI_SRC_ARV_ARVNODEINFO_H
#define PKOAPI_SRC_ARV_ARVNODEINFO_H

#include <PkoAPI/PkoCommonTypes.h>

#include <arv.h>

#include <string>
#include <vector>

namespace ZMT::PkoAPI::Arv {

// What the backend knows about one feature node without asking the camera:
// its names, category path, SDK data type and, for enumerations, its
// entries. The node pointers belong to the device's ArvGc and are valid
// only while that device is open.
class ArvNodeInfo {
public:
    std::string name;
    std::string displayName;  // the name when the node has none
    std::string category;     // "/AcquisitionControl", "/Root" directly under Root
    PkoFeatureDataType type = PkoFeatureDataUnknown;
    ArvGcNode* node = nullptr;
    // Enumeration entries in document order, with their nodes.
    std::vector<std::string> entries;
    std::vector<ArvGcNode*> entryNodes;

    // The SDK type of a node. The tests run in this order on purpose: an
    // enumeration also passes the integer and string tests, a string
    // register also passes the register test.
    static PkoFeatureDataType TypeOf(ArvGcNode* node);
    // Every feature reachable from the "Root" category, in category order
    // (depth first, document order), each name once. Categories and
    // entries are not features. Empty when there is no "Root". Calls
    // Aravis: the caller holds the device lock.
    static std::vector<ArvNodeInfo> Walk(ArvGc* genicam);
};

}  // namespace ZMT::PkoAPI::Arv

#endif
