#ifndef TIMINGSKETCHVIEW_H
#define TIMINGSKETCHVIEW_H

#include "TimingSketch.h"

#include <QStringList>
#include <QWidget>

class FeatureManager;

// Draws the timing sketch of the camera's current settings: trigger input,
// exposure, readout and each output over one cycle. Refresh reads the
// settings again; the host calls it when one of WatchedFeatures changes.
class TimingSketchView : public QWidget {
    Q_OBJECT

public:
    TimingSketchView(FeatureManager* manager, QWidget* parent);

    QStringList WatchedFeatures() const;
    // What is drawn now.
    const TimingSketch& Sketch() const { return m_Sketch; }
    QSize minimumSizeHint() const override;

public slots:
    void Refresh();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QString TrackTitle(const TimingSketch::Track& track) const;
    QString TrackCaption(const TimingSketch::Track& track) const;
    int CaptionWidth() const;

    FeatureManager* m_FeatureManager;
    TimingSketch m_Sketch;
};

#endif
