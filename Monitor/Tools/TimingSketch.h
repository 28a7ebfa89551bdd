#ifndef TIMINGSKETCH_H
#define TIMINGSKETCH_H

#include "TimingSettings.h"

#include <QString>
#include <QVector>

// One cycle of the camera's signals worked out from its settings: the
// trigger input, the exposure, the readout and every output, each as a level
// at the start and the instants where it flips. Pure computation; times in
// microseconds from the start of the cycle.
class TimingSketch {
public:
    enum class TrackKind { Trigger, Exposure, Readout, Output };
    enum class TriggerKind { FreeRun, Software, Line };

    struct Track {
        TrackKind kind = TrackKind::Output;
        QString line;    // the output's line; the trigger's source
        QString source;  // what drives an output
        bool inverted = false;
        bool known = true;  // false: the sketch cannot say (drawn low)
        bool startLevel = false;
        QVector<double> edges;  // ascending

        bool LevelAt(double us) const;
        bool operator==(const Track& other) const;
        bool operator!=(const Track& other) const { return !(*this == other); }
    };

    explicit TimingSketch(const TimingSettings& settings = TimingSettings());

    const TimingSettings& Settings() const { return m_Settings; }
    TriggerKind Trigger() const { return m_Trigger; }
    // Exposure as long as the trigger holds ("TriggerWidth", "other").
    bool WidthExposure() const { return m_WidthExposure; }
    bool ReadoutKnown() const { return m_Settings.readoutUs >= 0.0; }
    // A second edge of an "AnyEdge" pulse arrives while the sensor is busy.
    bool SecondEdgeMissed() const { return m_SecondEdgeMissed; }

    double CycleUs() const { return m_CycleUs; }
    double TriggerUs() const { return m_TriggerUs; }
    double ExposureStartUs() const { return m_ExposureStartUs; }
    double ExposureEndUs() const { return m_ExposureEndUs; }
    double ReadoutEndUs() const { return m_ReadoutEndUs; }

    // Trigger, exposure and readout first, then one track per output.
    const QVector<Track>& Tracks() const { return m_Tracks; }
    bool operator==(const TimingSketch& other) const { return m_Tracks == other.m_Tracks; }
    bool operator!=(const TimingSketch& other) const { return !(*this == other); }

private:
    Track OutputTrack(const TimingSettings::Output& output, const Track& trigger) const;

    TimingSettings m_Settings;
    TriggerKind m_Trigger = TriggerKind::FreeRun;
    bool m_WidthExposure = false;
    bool m_SecondEdgeMissed = false;
    double m_CycleUs = 0.0;
    double m_TriggerUs = 0.0;
    double m_ExposureStartUs = 0.0;
    double m_ExposureEndUs = 0.0;
    double m_ReadoutEndUs = 0.0;
    QVector<Track> m_Tracks;
};

#endif
