#include "ArvDiscovery.h"

#include "ArvErrors.h"
#include "ArvScopedError.h"

#include <PkoAPI/PkoCommonTypes.h>

#include <cstdlib>
#include <string>

namespace ZMT::PkoAPI::Arv {

namespace {

std::string Text(const char* text)
{
    return text != nullptr ? std::string(text) : std::string();
}

// The address of a GigE Vision device on the loopback interface ("" when id
// is not one): id itself, or the address Aravis found for that device id.
// Global lock held.
std::string LoopbackAddressOf(const std::string& id)
{
    const auto isLoopback = [](const std::string& address) { return address.rfind("127.", 0) == 0; };
    if (isLoopback(id))
        return id;
    for (int round = 0; round < 2; ++round) {
        const unsigned int count = arv_get_n_devices();
        for (unsigned int i = 0; i < count; ++i) {
            if (Text(arv_get_device_id(i)) != id)
                continue;
            const std::string address = Text(arv_get_device_address(i));
            return Text(arv_get_device_protocol(i)) == "GigEVision" && isLoopback(address) ? address : std::string();
        }
        if (round == 0)
            arv_update_device_list();
    }
    return std::string();
}

}  // namespace

std::mutex& ArvDiscovery::GlobalMutex()
{
    static std::mutex mutex;
    return mutex;
}

std::vector<ArvDiscovery::Device> ArvDiscovery::Discover()
{
    std::vector<Device> devices;
    // Discovery broadcasts on every network interface; where that is not
    // wanted (test machines without their own network) it can be switched off.
    const char* discovery = std::getenv("PKO_GENICAM_DISCOVERY");
    if (discovery != nullptr && std::string(discovery) == "off")
        return devices;
    std::lock_guard<std::mutex> lock(GlobalMutex());
    arv_update_device_list();
    const unsigned int count = arv_get_n_devices();
    for (unsigned int i = 0; i < count; ++i) {
        Device device;
        device.id = Text(arv_get_device_id(i));
        if (device.id.empty())
            continue;
        device.vendor = Text(arv_get_device_vendor(i));
        device.model = Text(arv_get_device_model(i));
        device.serial = Text(arv_get_device_serial_nbr(i));
        device.address = Text(arv_get_device_address(i));
        devices.push_back(std::move(device));
    }
    return devices;
}

::ArvDevice* ArvDiscovery::Open(const std::string& id, int& errorCode)
{
    std::lock_guard<std::mutex> lock(GlobalMutex());
    ArvScopedError error;
    ::ArvDevice* device = nullptr;
    const std::string loopback = LoopbackAddressOf(id);
    if (!loopback.empty()) {
        // Aravis ties a device to the interface whose discovery it answered
        // first; for a camera on loopback that can be another interface,
        // whose address the camera cannot stream to from 127.0.0.1.
        GInetAddress* address = g_inet_address_new_from_string(loopback.c_str());
        if (address != nullptr) {
            device = arv_gv_device_new(address, address, error.Out());
            g_object_unref(address);
        }
    }
    if (device == nullptr && !error)
        device = arv_open_device(id.c_str(), error.Out());
    if (error || device == nullptr) {
        if (device != nullptr)
            g_object_unref(device);
        errorCode = error ? ArvErrors::ToCode(error.Get()) : PkoErrorNotFound;
        if (errorCode == PkoErrorSuccess)
            errorCode = PkoErrorNotFound;
        return nullptr;
    }
    errorCode = PkoErrorSuccess;
    return device;
}

}  // namespace ZMT::PkoAPI::Arv
