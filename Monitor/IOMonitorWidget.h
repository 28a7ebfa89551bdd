#ifndef IOMONITORWIDGET_H
#define IOMONITORWIDGET_H

#include "BaseTabPluginWidget.h"
#include "CameraCounters.h"
#include "LineProbe.h"
#include "SignalHistory.h"

#include <PkoAPI/PkoAPI.h>

#include <QElapsedTimer>
#include <QSharedPointer>
#include <QVector>

#include <functional>
#include <memory>

class QCheckBox;
class QLabel;
class QMutex;
class QPushButton;
class QSpinBox;
class QTimer;
class QTranslator;
class SignalStripView;
class TimingSketchView;
class WiringSelfTestPanel;

// The "I/O Monitor" tab: a lamp per I/O line with its direction, source and
// inversion, a logic-analyser strip of every line's level over the last
// seconds with frame and software-trigger marks, and the camera's frame and
// trigger counters. It polls the line levels only while shown (20 Hz unless
// the user picks another rate), one read per poll where the camera has a
// level mask. It writes nothing but selector round trips and counter resets.
//
// Object names (tests find them by these): group boxes "gb_Lines",
// "gb_Counters", "gb_Strip"; line row i: "l_Line_<i>", "l_Direction_<i>",
// "l_Source_<i>", "l_Inverted_<i>", "lamp_<i>" (property "lit");
// counter values "value_Frames", "value_FrameTriggers", "value_MissedTriggers",
// "value_SoftwareTriggers", button "pb_ResetCounters"; "spin_PollRate" (Hz),
// "spin_Window" (s), "pb_Freeze", "l_Cursor", "strip", "l_Streaming";
// "w_Tools" holds the optional timing sketch and wiring self-test.
class IOMonitorWidget : public BaseTabPluginWidget {
    Q_OBJECT

public:
    // Throws TENotSupported (code 4) for a camera without line levels.
    IOMonitorWidget(QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> features, QWidget* parent);
    ~IOMonitorWidget() override;

    // The clock of the strip in milliseconds; by default the time since the
    // widget was made. Tests and the benchmark give the camera's time.
    void SetClock(std::function<double()> nowMs);

    const SignalHistory& History() const { return m_History; }
    const LineProbe& Probe() const { return m_Probe; }
    bool IsPolling() const;
    int PollIntervalMs() const;
    // Software triggers seen while the tab was shown.
    long long SoftwareTriggers() const { return m_SoftwareTriggers; }

public slots:
    // One poll: reads the levels (and, at most four times a second, the
    // counters), updates lamps, history and counters, repaints the strip once.
    void Poll();
    void camIsStreaming(bool streaming);

private slots:
    void OnSpinPollRateChanged(int hertz);
    void OnSpinWindowChanged(int seconds);
    void OnFreezeChanged(bool frozen);
    void OnResetCounters();
    void OnCursorMoved(double timeMs);
    void OnSoftwareTriggerChanged(const QString& name, const QString& value);

protected:
    void UpdateFromChangedFeatures() override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void BuildLayout();
    void RefreshLineRows();
    void ShowLevels(unsigned long long levels);
    void ReadCounters(double nowMs);
    void ShowCounters();
    double Now() const;

    // The base leaves these to its subclass.
    std::unique_ptr<FeatureManager> m_OwnedFeatureManager;
    std::unique_ptr<QStringList> m_OwnedChangedFeatures;
    std::unique_ptr<QTimer> m_OwnedUpdateTimer;
    std::unique_ptr<QMutex> m_OwnedMutex;
    std::unique_ptr<QTranslator> m_Translator;

    LineProbe m_Probe;
    CameraCounters m_Counters;
    SignalHistory m_History;
    QTimer* m_PollTimer = nullptr;
    QElapsedTimer m_Elapsed;
    std::function<double()> m_Clock;

    QVector<QLabel*> m_Lamps;
    QVector<QLabel*> m_SourceLabels;
    QVector<QLabel*> m_DirectionLabels;
    QVector<QLabel*> m_InvertedLabels;
    QLabel* m_ValueFrames = nullptr;
    QLabel* m_ValueFrameTriggers = nullptr;
    QLabel* m_ValueMissed = nullptr;
    QLabel* m_ValueSoftware = nullptr;
    QLabel* m_LabelCursor = nullptr;
    QLabel* m_LabelStreaming = nullptr;
    QPushButton* m_ButtonReset = nullptr;
    QPushButton* m_ButtonFreeze = nullptr;
    QSpinBox* m_SpinPollRate = nullptr;
    QSpinBox* m_SpinWindow = nullptr;
    SignalStripView* m_Strip = nullptr;
    QWidget* m_Tools = nullptr;
#ifdef PKO_MONITOR_TOOLS
    TimingSketchView* m_Sketch = nullptr;
    WiringSelfTestPanel* m_SelfTest = nullptr;
#endif

    // Software triggers: no camera counts them, so the monitor watches the
    // command's own notifications while shown.
    ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::IFeatureObserver> m_TriggerObserver;
    ZMT::PkoAPI::FeaturePtr m_TriggerSoftware;
    long long m_SoftwareTriggers = 0;

    bool m_Frozen = false;
    bool m_HaveCounters = false;
    double m_LastCounterMs = -1.0;
    long long m_LastFrames = -1;
    unsigned long long m_Levels = 0;
    bool m_LevelsKnown = false;
};

#endif
