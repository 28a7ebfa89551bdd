#include "PluginFeatureObserver.h"

#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

using ZMT::PkoAPI::Feature;

namespace {

// Two-call text protocol: length first, then a zeroed buffer one byte longer.
// A buffer that cannot be had counts as exhausted resources.
template <class Read>
int ReadText(Read read, std::string& text)
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
    text.assign(buffer.data(), size < length ? size : length);
    return ZMT::PkoAPI::PkoErrorSuccess;
}

QString ToQString(const std::string& text)
{
    return QString::fromLatin1(text.data(), static_cast<int>(text.size()));
}

}  // namespace

PluginFeatureObserver::PluginFeatureObserver() : QObject(nullptr) {}

void PluginFeatureObserver::FeatureChanged(const ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>& feature)
{
    if (!feature)
        return;
    Feature& target = *feature;

    std::string name;
    if (ReadText([&](char* buffer, unsigned int& length) { return target.GetName(buffer, length); }, name) !=
        ZMT::PkoAPI::PkoErrorSuccess)
        return;
    const QString featureName = ToQString(name);

    ZMT::PkoAPI::PkoFeatureDataType dataType = ZMT::PkoAPI::PkoFeatureDataUnknown;
    if (target.GetDataType(dataType) != ZMT::PkoAPI::PkoErrorSuccess)
        return;

    // A value that cannot be read still announces the change, with an empty text.
    QString value("");
    switch (dataType) {
        case ZMT::PkoAPI::PkoFeatureDataInt: {
            long long number = 0;
            if (target.GetValue(number) == ZMT::PkoAPI::PkoErrorSuccess)
                value = QString::number(number, 10);
            break;
        }
        case ZMT::PkoAPI::PkoFeatureDataFloat: {
            double number = 0.0;
            if (target.GetValue(number) == ZMT::PkoAPI::PkoErrorSuccess)
                value = QString::number(number, 'g', 6);
            break;
        }
        case ZMT::PkoAPI::PkoFeatureDataEnum:
        case ZMT::PkoAPI::PkoFeatureDataString: {
            std::string text;
            if (ReadText([&](char* buffer, unsigned int& length) { return target.GetValue(buffer, length); }, text) ==
                ZMT::PkoAPI::PkoErrorSuccess)
                value = ToQString(text);
            break;
        }
        case ZMT::PkoAPI::PkoFeatureDataBool: {
            bool state = false;
            if (target.GetValue(state) == ZMT::PkoAPI::PkoErrorSuccess)
                value = state ? QString("true") : QString("false");
            break;
        }
        case ZMT::PkoAPI::PkoFeatureDataCommand:
            // Fixed texts, so that every type has something to display.
            value = QString("[COMMAND]");
            break;
        case ZMT::PkoAPI::PkoFeatureDataRaw:
            value = QString("Click here to open");
            break;
        default:
            break;
    }

    emit setChangedFeature(featureName, value);
}
