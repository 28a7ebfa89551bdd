#include <PkoAPI/PkoCommonTypes.h>

namespace ZMT::PkoAPI {

const char* PkoErrorName(int errorCode)
{
    switch (errorCode) {
        case PkoErrorSuccess:
            return "PkoErrorSuccess";
        case PkoErrorInternal:
            return "PkoErrorInternal";
        case PkoErrorNotStarted:
            return "PkoErrorNotStarted";
        case PkoErrorNotFound:
            return "PkoErrorNotFound";
        case PkoErrorBadHandle:
            return "PkoErrorBadHandle";
        case PkoErrorDeviceNotOpen:
            return "PkoErrorDeviceNotOpen";
        case PkoErrorInvalidAccess:
            return "PkoErrorInvalidAccess";
        case PkoErrorBadParameter:
            return "PkoErrorBadParameter";
        case PkoErrorMoreData:
            return "PkoErrorMoreData";
        case PkoErrorWrongType:
            return "PkoErrorWrongType";
        case PkoErrorInvalidValue:
            return "PkoErrorInvalidValue";
        case PkoErrorTimeout:
            return "PkoErrorTimeout";
        case PkoErrorOther:
            return "PkoErrorOther";
        case PkoErrorResources:
            return "PkoErrorResources";
        case PkoErrorAlreadyRegistered:
            return "PkoErrorAlreadyRegistered";
        case PkoErrorNotRegistered:
            return "PkoErrorNotRegistered";
        case PkoErrorConnectionLost:
            return "PkoErrorConnectionLost";
        case PkoErrorBadDescription:
            return "PkoErrorBadDescription";
        default:
            return "PkoErrorUnknown";
    }
}

}  // namespace ZMT::PkoAPI
