#ifndef FEATURETEXT_H
#define FEATURETEXT_H

// Reading SDK texts (names, entries, strings) by the two-call protocol, shared
// by the feature access layer, the observer and the base widget.

#include <PkoAPI/Feature.h>

#include <QString>

#include <algorithm>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace FeatureText {

// Asks read(nullptr, length) for the length, then reads into a zeroed buffer
// one byte longer. Returns the SDK's code of the failing call, or
// PkoErrorResources when no buffer can be had; text is unchanged on failure.
template <class ReadCall>
int Read(ReadCall read, std::string& text)
{
    unsigned int length = 0;
    int error = read(nullptr, length);
    if (error != ZMT::PkoAPI::PkoErrorSuccess)
        return error;
    if (length == 0) {
        text.clear();
        return ZMT::PkoAPI::PkoErrorSuccess;
    }
    if (length == std::numeric_limits<unsigned int>::max())
        return ZMT::PkoAPI::PkoErrorResources;
    std::vector<char> buffer;
    try {
        buffer.assign(static_cast<std::size_t>(length) + 1, '\0');
    } catch (const std::bad_alloc&) {
        return ZMT::PkoAPI::PkoErrorResources;
    } catch (const std::length_error&) {
        return ZMT::PkoAPI::PkoErrorResources;
    }
    unsigned int size = length + 1;
    error = read(buffer.data(), size);
    if (error != ZMT::PkoAPI::PkoErrorSuccess)
        return error;
    text.assign(buffer.data(), std::min(size, length));
    return ZMT::PkoAPI::PkoErrorSuccess;
}

// The 8-bit SDK text as a QString.
inline QString ToQString(const std::string& text)
{
    return QString::fromLatin1(text.data(), static_cast<int>(text.size()));
}

// The feature's name; false (name unchanged) when it cannot be read.
inline bool ReadName(ZMT::PkoAPI::Feature& feature, QString& name)
{
    std::string text;
    if (Read([&](char* buffer, unsigned int& length) { return feature.GetName(buffer, length); }, text) !=
        ZMT::PkoAPI::PkoErrorSuccess)
        return false;
    name = ToQString(text);
    return true;
}

}  // namespace FeatureText

#endif
