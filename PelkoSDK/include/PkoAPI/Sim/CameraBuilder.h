#ifndef PKOAPI_SIM_CAMERABUILDER_H
#define PKOAPI_SIM_CAMERABUILDER_H

#include <PkoAPI/Sim/SimCamera.h>
#include <PkoAPI/Sim/SimTypes.h>

#include <memory>
#include <string>
#include <vector>

namespace ZMT {
namespace PkoAPI {
namespace Sim {

class CameraBuilderData;
struct FeatureDecl;

// Declares one feature of a camera under construction; every setter returns
// the builder for chaining. Valid until the CameraBuilder is destroyed.
class FeatureBuilder {
public:
    FeatureBuilder& DisplayName(const std::string& displayName);  // default: the name
    FeatureBuilder& Category(const std::string& category);        // default: "/Root"
    FeatureBuilder& ReadOnly();
    // Writable only while predicate holds (and not read-only).
    FeatureBuilder& WritableWhen(Predicate predicate);
    // Not writable while the camera acquires; observers hear of the change.
    FeatureBuilder& LockedWhileAcquiring();
    // The entry may be chosen only while predicate holds.
    FeatureBuilder& EntryAvailableWhen(const std::string& entry, Predicate predicate);
    // This feature is a selector: each of the named features keeps one value
    // per entry of this feature, and a change of this feature notifies them.
    FeatureBuilder& Selects(const std::vector<std::string>& features);
    // Initial value for one entry of this feature's selector (a selected
    // feature starts with its declared value for every entry otherwise).
    FeatureBuilder& ValueAt(const std::string& selectorEntry, const std::string& valueText);
    // Value derived from other features; the stored value is used where the
    // rule returns nothing.
    FeatureBuilder& ComputedBy(ValueRule rule);
    // A change of this feature also notifies the observers of these features
    // (whose value, writability or entries depend on it).
    FeatureBuilder& Notifies(const std::vector<std::string>& features);

private:
    friend class CameraBuilder;
    explicit FeatureBuilder(FeatureDecl* decl);
    FeatureDecl* m_Decl;
};

// Declares a simulated camera feature by feature, in the camera's order,
// then builds it. Names may repeat (to test clients with duplicate names).
// A declaration the builder cannot use (a selector naming an unknown feature,
// a value outside its range) makes Build return null and sets Error().
class CameraBuilder {
public:
    CameraBuilder(const std::string& id, const std::string& model);
    ~CameraBuilder();
    CameraBuilder(const CameraBuilder&) = delete;
    CameraBuilder& operator=(const CameraBuilder&) = delete;

    FeatureBuilder AddInteger(const std::string& name, long long value, long long minimum, long long maximum,
                              long long increment = 1);
    // increment 0: no increment.
    FeatureBuilder AddFloat(const std::string& name, double value, double minimum, double maximum,
                            double increment = 0.0);
    FeatureBuilder AddEnumeration(const std::string& name, const std::vector<std::string>& entries,
                                  const std::string& value);
    FeatureBuilder AddBoolean(const std::string& name, bool value);
    FeatureBuilder AddString(const std::string& name, const std::string& value);
    FeatureBuilder AddCommand(const std::string& name);
    FeatureBuilder AddRaw(const std::string& name, const std::string& bytes);
    // A feature that reports dataType as is (any value, also unknown ones).
    FeatureBuilder AddOfType(const std::string& name, int dataType);

    // A new, closed camera; null (see Error) when a declaration is unusable.
    SimCameraPtr Build() const;
    std::string Error() const;

private:
    std::unique_ptr<CameraBuilderData> m_Data;
};

}  // namespace Sim
}  // namespace PkoAPI
}  // namespace ZMT

#endif
