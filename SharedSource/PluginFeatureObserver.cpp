#include "PluginFeatureObserver.h"

#include "FeatureText.h"

#include <string>

using ZMT::PkoAPI::Feature;

PluginFeatureObserver::PluginFeatureObserver() : QObject(nullptr) {}

void PluginFeatureObserver::FeatureChanged(const ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>& feature)
{
    if (!feature)
        return;
    Feature& target = *feature;

    std::string name;
    if (FeatureText::Read([&](char* buffer, unsigned int& length) { return target.GetName(buffer, length); }, name) !=
        ZMT::PkoAPI::PkoErrorSuccess)
        return;
    const QString featureName = FeatureText::ToQString(name);

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
            if (FeatureText::Read([&](char* buffer, unsigned int& length) { return target.GetValue(buffer, length); },
                                  text) == ZMT::PkoAPI::PkoErrorSuccess)
                value = FeatureText::ToQString(text);
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
