#ifndef TIMINGSETTINGS_H
#define TIMINGSETTINGS_H

#include <QString>
#include <QVector>

// The camera settings a timing sketch is drawn from, as read from the
// camera; times in microseconds.
struct TimingSettings {
    // One output line: what drives it and whether it is inverted.
    struct Output {
        QString line;
        QString source;
        bool inverted = false;
        bool userValue = false;  // the value a user output or "GPO" bit drives
    };

    bool triggerOn = false;     // a frame trigger is on
    QString triggerSelector;    // the frame trigger's entry when on
    QString triggerSource;      // "Line0", "Software", "Freerun", ...
    QString triggerActivation;  // "RisingEdge", "LevelHigh", ...
    double triggerDelayUs = 0.0;
    QString exposureMode;  // "Timed", "TriggerWidth" or "" without the feature
    QString exposureAuto;  // "" without the feature
    double exposureUs = 0.0;
    double readoutUs = -1.0;  // < 0: the camera does not say
    QVector<Output> outputs;
};

#endif
