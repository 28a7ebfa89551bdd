#include "ArvErrors.h"

#include <PkoAPI/PkoCommonTypes.h>

#include <arv.h>

namespace ZMT::PkoAPI::Arv {

int ArvErrors::ToCode(const GError* error)
{
    if (error == nullptr)
        return PkoErrorSuccess;
    if (error->domain == ARV_GC_ERROR) {
        switch (error->code) {
            case ARV_GC_ERROR_OUT_OF_RANGE:
            case ARV_GC_ERROR_ENUM_ENTRY_NOT_FOUND:
            case ARV_GC_ERROR_INVALID_LENGTH:
            case ARV_GC_ERROR_SET_FROM_STRING_UNDEFINED:
            case ARV_GC_ERROR_INVALID_SYNTAX:
                return PkoErrorInvalidValue;
            case ARV_GC_ERROR_READ_ONLY:
                return PkoErrorInvalidAccess;
            case ARV_GC_ERROR_NODE_NOT_FOUND:
                return PkoErrorNotFound;
            case ARV_GC_ERROR_NO_DEVICE_SET:
                return PkoErrorBadHandle;
            case ARV_GC_ERROR_GET_AS_STRING_UNDEFINED:
                return PkoErrorWrongType;
            default:
                return PkoErrorOther;
        }
    }
    if (error->domain == ARV_DEVICE_ERROR) {
        switch (error->code) {
            case ARV_DEVICE_ERROR_WRONG_FEATURE:
                return PkoErrorWrongType;
            case ARV_DEVICE_ERROR_FEATURE_NOT_FOUND:
            case ARV_DEVICE_ERROR_NOT_FOUND:
            case ARV_DEVICE_ERROR_GENICAM_NOT_FOUND:
                return PkoErrorNotFound;
            case ARV_DEVICE_ERROR_NOT_CONNECTED:
            case ARV_DEVICE_ERROR_TRANSFER_ERROR:
                return PkoErrorConnectionLost;
            case ARV_DEVICE_ERROR_TIMEOUT:
                return PkoErrorTimeout;
            case ARV_DEVICE_ERROR_INVALID_PARAMETER:
            case ARV_DEVICE_ERROR_PROTOCOL_ERROR_INVALID_PARAMETER:
                return PkoErrorBadParameter;
            case ARV_DEVICE_ERROR_NOT_CONTROLLER:
            case ARV_DEVICE_ERROR_PROTOCOL_ERROR_WRITE_PROTECT:
            case ARV_DEVICE_ERROR_PROTOCOL_ERROR_ACCESS_DENIED:
                return PkoErrorInvalidAccess;
            case ARV_DEVICE_ERROR_NO_STREAM_CHANNEL:
                return PkoErrorResources;
            default:
                return PkoErrorOther;
        }
    }
    return PkoErrorOther;
}

bool ArvErrors::MeansConnectionLost(const GError* error)
{
    return error != nullptr && error->domain == ARV_DEVICE_ERROR &&
           (error->code == ARV_DEVICE_ERROR_TIMEOUT || error->code == ARV_DEVICE_ERROR_NOT_CONNECTED ||
            error->code == ARV_DEVICE_ERROR_TRANSFER_ERROR);
}

}  // namespace ZMT::PkoAPI::Arv
