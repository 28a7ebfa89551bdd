#ifndef TESTS_SDK_SDKTESTSUPPORT_H
#define TESTS_SDK_SDKTESTSUPPORT_H

// Small readers for the SDK's two-call protocols, shared by the SDK tests.

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <string>
#include <vector>

// The feature's name, "" when it cannot be read.
std::string NameOf(const ZMT::PkoAPI::FeaturePtr& feature);
// The current text of an enumeration or string feature, "" when unreadable.
std::string TextOf(const ZMT::PkoAPI::FeaturePtr& feature);
// Every entry of an enumeration, empty when unreadable.
std::vector<std::string> EntriesOf(const ZMT::PkoAPI::FeaturePtr& feature);
// The entries that IsValueAvailable reports as available.
std::vector<std::string> AvailableEntriesOf(const ZMT::PkoAPI::FeaturePtr& feature);
bool IsWritable(const ZMT::PkoAPI::FeaturePtr& feature);
// The first feature of that name of an open camera; null when missing.
ZMT::PkoAPI::FeaturePtr FeatureOf(const ZMT::PkoAPI::CameraPtr& camera, const std::string& name);
// A new camera of that model, already open; null when it cannot be made.
ZMT::PkoAPI::Sim::SimCameraPtr OpenModel(const std::string& id);
// Builds and opens; null when the builder refuses.
ZMT::PkoAPI::Sim::SimCameraPtr OpenBuilt(const ZMT::PkoAPI::Sim::CameraBuilder& builder);

#endif
