#ifndef PKOAPI_SRC_TEXTPROTOCOL_H
#define PKOAPI_SRC_TEXTPROTOCOL_H

#include <PkoAPI/PkoCommonTypes.h>

#include <cstring>
#include <string>

namespace ZMT::PkoAPI {

// The SDK's side of the two-call text protocol, the same for every backend:
// a null buffer asks for the length; a buffer of length bytes gets the text
// (and a NUL when there is room); a smaller one is left untouched.
inline int CopyText(const std::string& text, char* buffer, unsigned int& length)
{
    const auto size = static_cast<unsigned int>(text.size());
    if (buffer == nullptr) {
        length = size;
        return PkoErrorSuccess;
    }
    if (length < size)
        return PkoErrorMoreData;
    std::memcpy(buffer, text.data(), size);
    if (length > size)
        buffer[size] = '\0';
    length = size;
    return PkoErrorSuccess;
}

}  // namespace ZMT::PkoAPI

#endif
