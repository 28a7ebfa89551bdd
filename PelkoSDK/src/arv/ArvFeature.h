#ifndef PKOAPI_SRC_ARV_ARVFEATURE_H
#define PKOAPI_SRC_ARV_ARVFEATURE_H

#include "ArvNodeInfo.h"
#include "DeviceAnchor.h"
#include "FeatureBase.h"

#include <memory>
#include <string>

namespace ZMT::PkoAPI::Arv {

class ArvCameraImpl;
typedef DeviceAnchor<ArvCameraImpl> ArvAnchor;

// One feature of an Aravis camera, valid for the open session it was made
// in (after Close every operation fails with PkoErrorBadHandle). Every
// operation that reaches the camera runs on its device thread under its
// device lock; the checks Aravis
// leaves out (writability, increments, locks, entry availability) are made
// here before a write reaches the camera.
class ArvFeature final : public FeatureBase {
public:
    ArvFeature(std::shared_ptr<ArvAnchor> anchor, unsigned long long session, int index, ArvNodeInfo info);

    int GetName(char* name, unsigned int& length) override;
    int GetDisplayName(char* displayName, unsigned int& length) override;
    int GetCategory(char* category, unsigned int& length) override;
    int GetDataType(PkoFeatureDataType& dataType) override;

    int GetValue(long long& value) override;
    int GetValue(double& value) override;
    int GetValue(bool& value) override;
    int GetValue(char* value, unsigned int& length) override;

    int SetValue(const long long& value) override;
    int SetValue(const double& value) override;
    int SetValue(bool value) override;
    int SetValue(const char* value) override;

    int GetRange(long long& minimum, long long& maximum) override;
    int GetRange(double& minimum, double& maximum) override;
    int GetIncrement(long long& increment) override;
    int GetIncrement(double& increment) override;

    int GetValues(const char** entries, unsigned int& count) override;
    int IsValueAvailable(const char* entry, bool& available) override;
    int IsWritable(bool& writable) override;
    int RunCommand() override;

    const ArvNodeInfo& Info() const { return m_Info; }
    // A text that changes whenever the value, the writability or the entry
    // availability changes; "" when it cannot be read. Device lock held.
    std::string SignatureLocked(int& errorCode);

protected:
    int CheckObserverOperation(bool registering) override;

private:
    // Runs op(camera, out) on the camera's device thread (see
    // ArvCameraImpl::Access); out is copied to result on success. op holds
    // what it needs by value: it may run after the caller gave up.
    template <class Out, class Op>
    int Call(Out& result, Op op);
    // The same for an op(camera) without output.
    template <class Op>
    int Call(Op op);
    // The value read(error) gets from the camera, for a feature of type;
    // PkoErrorWrongType for any other.
    template <class Out, class Read>
    int ReadOne(Out& result, PkoFeatureDataType type, Read read);
    // The same for the two bounds of a range.
    template <class Out, class ReadMin, class ReadMax>
    int ReadRange(Out& minimum, Out& maximum, PkoFeatureDataType type, ReadMin readMin, ReadMax readMax);
    // op() after the session and reachability checks, for what the
    // description already tells; never waits for the camera.
    template <class Op>
    int Describe(Op&& op);
    // The writability rule, device lock held.
    int WritableLocked(bool& writable);
    // PkoErrorInvalidAccess unless writable now.
    int RequireWritableLocked();
    int EntryAvailableLocked(std::size_t entry, bool& available);
    int ReadTextLocked(std::string& text);

    std::shared_ptr<ArvAnchor> m_Anchor;
    const unsigned long long m_Session;
    const int m_Index;
    const ArvNodeInfo m_Info;
    // GetValues hands out pointers into m_Info.entries.
    const std::vector<const char*> m_EntryPointers;
};

}  // namespace ZMT::PkoAPI::Arv

#endif
