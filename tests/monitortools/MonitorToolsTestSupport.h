#ifndef MONITORTOOLSTESTSUPPORT_H
#define MONITORTOOLSTESTSUPPORT_H

// What the timing sketch and wiring tests share: the I/O settings of a
// simulated camera at every selector entry, read from the camera itself.

#include "SimTestSupport.h"

#include <QStringList>

namespace MonitorToolsTest {

// "Feature[entry]=value" for every line setting, user output and selector
// of the camera, as the camera holds them (not through the code under test).
inline QStringList IoSnapshot(const TestSupport::SimCameraPtr& camera)
{
    struct Selected {
        const char* feature;
        QStringList entries;
    };
    const QStringList lines = {"Line0", "Line1", "Line2", "Line3"};
    const QStringList syncOuts = {"SyncOut1", "SyncOut2", "SyncOut3", "SyncOut4"};
    const QStringList lineOuts = {"LineOut1", "LineOut2", "LineOut3", "LineOut4"};
    const QStringList userOutputs = {"UserOutput0", "UserOutput1", "UserOutput2"};
    const Selected selected[] = {{"LineMode", lines},
                                 {"LineSource", lines},
                                 {"LineInverter", lines},
                                 {"LineStatus", lines},
                                 {"UserOutputValue", userOutputs},
                                 {"SyncOutSource", syncOuts},
                                 {"SyncOutPolarity", syncOuts},
                                 {"LineOutSource", lineOuts},
                                 {"LineOutPolarity", lineOuts},
                                 {"TriggerMode", {"FrameStart", "AcquisitionStart"}}};
    QStringList snapshot;
    for (const Selected& feature : selected) {
        for (const QString& entry : feature.entries) {
            const std::string value = camera->ValueText(feature.feature, entry.toStdString());
            if (!value.empty())
                snapshot << QString("%1[%2]=%3").arg(feature.feature, entry, QString::fromStdString(value));
        }
    }
    for (const char* plain :
         {"LineSelector", "UserOutputSelector", "SyncOutSelector", "LineOutSelector", "SyncOutLevels", "LineOutLevels",
          "SyncInLevels", "LineInLevels", "TriggerSelector", "AcquisitionStatusSelector"}) {
        const std::string value = camera->ValueText(plain);
        if (!value.empty())
            snapshot << QString("%1=%2").arg(plain, QString::fromStdString(value));
    }
    return snapshot;
}

}  // namespace MonitorToolsTest

#endif
