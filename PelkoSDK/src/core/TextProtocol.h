#ifndef PKOAPI_SRC_TEXTPROTOCOL_H
#define PKOAPI_SRC_TEXTPROTOCOL_H

#include <PkoAPI/PkoCommonTypes.h>

#include <cstring>
#include <string>
#include <vector>

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

// The same protocol for the entries of an enumeration: a null array asks for
// the count; an array of count pointers gets them (pointing into from, via
// text); a smaller one is left untouched.
template <class Entry, class Text>
int CopyEntries(const std::vector<Entry>& from, Text text, const char** entries, unsigned int& count)
{
    const auto size = static_cast<unsigned int>(from.size());
    if (entries == nullptr) {
        count = size;
        return PkoErrorSuccess;
    }
    if (count < size)
        return PkoErrorMoreData;
    for (unsigned int i = 0; i < size; ++i)
        entries[i] = text(from[i]);
    count = size;
    return PkoErrorSuccess;
}

}  // namespace ZMT::PkoAPI

#endif
