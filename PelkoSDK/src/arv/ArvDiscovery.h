#ifndef PKOAPI_SRC_ARV_ARVDISCOVERY_H
#define PKOAPI_SRC_ARV_ARVDISCOVERY_H

#include <arv.h>

#include <mutex>
#include <string>
#include <vector>

namespace ZMT::PkoAPI::Arv {

// Aravis's process-wide calls: device discovery and opening. Aravis keeps
// one global device list that is not thread-safe, so every such call runs
// under one lock.
class ArvDiscovery {
public:
    struct Device {
        std::string id;  // Aravis's device id, e.g. "Aravis-Fake-GV01"
        std::string vendor;
        std::string model;
        std::string serial;
        std::string address;
    };

    // Every device Aravis finds now (a discovery round trip on each
    // network interface, about a second for GigE Vision). Empty on any
    // failure.
    static std::vector<Device> Discover();
    // Opens the device that Aravis knows by id (a device id, or what
    // arv_open_device accepts, such as an address). Null with the SDK error
    // code in errorCode on failure; the caller owns the reference.
    static ::ArvDevice* Open(const std::string& id, int& errorCode);
    // The lock of the global calls.
    static std::mutex& GlobalMutex();
};

}  // namespace ZMT::PkoAPI::Arv

#endif
