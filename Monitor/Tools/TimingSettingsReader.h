#ifndef TIMINGSETTINGSREADER_H
#define TIMINGSETTINGSREADER_H

#include "TimingSettings.h"

#include <QStringList>

class FeatureManager;

// Reads the settings of a timing sketch from the camera, with selector round
// trips that leave every selector where it was.
class TimingSettingsReader {
public:
    explicit TimingSettingsReader(FeatureManager& manager);

    TimingSettings Read() const;
    // The features of the camera whose change changes the sketch.
    QStringList WatchedFeatures() const;

private:
    FeatureManager& m_Manager;
};

#endif
