#include "IOMonitorWidget.h"

#include "FeatureManager.h"
#include "PluginFeatureObserver.h"
#include "SignalStripView.h"
#include "TENotSupported.h"

#ifdef PKO_MONITOR_TOOLS
#include "TimingSketchView.h"
#include "WiringSelfTestPanel.h"
#endif

#include <QCoreApplication>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QMutex>
#include <QPushButton>
#include <QSpinBox>
#include <QTimer>
#include <QTranslator>
#include <QVBoxLayout>

#include <cmath>

namespace {

// Counters cost a selector round trip each; four reads a second keep the
// frame marks close to their frames without adding to every poll.
const double kCounterPeriodMs = 250.0;
const int kDefaultPollHz = 20;
const int kDefaultWindowS = 10;

QString LampStyle(bool lit)
{
    return lit ? "QLabel { background: rgb(80,220,100); border: 1px solid rgb(30,90,40); border-radius: 8px; }"
               : "QLabel { background: rgb(60,66,60); border: 1px solid rgb(30,30,30); border-radius: 8px; }";
}

}  // namespace

IOMonitorWidget::IOMonitorWidget(QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> features,
                                 QWidget* parent)
    : BaseTabPluginWidget(features, parent),
      m_OwnedFeatureManager(m_FeatureManager),
      m_OwnedChangedFeatures(m_ChangedFeatures),
      m_OwnedUpdateTimer(m_UpdateTimer),
      m_OwnedMutex(m_Mutex),
      m_Probe(m_FeatureManager),
      m_Counters(m_FeatureManager),
      m_History(kDefaultWindowS * 1000.0)
{
    m_Elapsed.start();
    m_Translator.reset(LoadTranslator("tabextensiontriggeriomonitor"));
    if (m_Translator && !m_Translator->isEmpty())
        QCoreApplication::installTranslator(m_Translator.get());

    if (!m_Probe.Probe()) {
        if (parent != nullptr)
            parent->setAccessibleName(QString());
        throw TENotSupported("IOMonitorWidget", "Line status not available, widget not constructed");
    }
    const QString tabName = tr("I/O Monitor");
    if (parent != nullptr)
        parent->setAccessibleName(tabName);
    setAccessibleName(tabName);

    m_HaveCounters = m_Counters.Probe();
    QStringList names;
    for (const MonitorLine& line : m_Probe.Lines())
        names << line.name;
    m_History.SetLines(names);

    m_ObservedFeatures << m_Probe.SetupFeatures();

    m_PollTimer = new QTimer(this);
    m_PollTimer->setInterval(1000 / kDefaultPollHz);
    connect(m_PollTimer, SIGNAL(timeout()), this, SLOT(Poll()));

    ZMT::PkoAPI::shared_ptr<PluginFeatureObserver> observer(new PluginFeatureObserver());
    m_TriggerObserver = observer;
    connect(observer.get(), SIGNAL(setChangedFeature(const QString&, const QString&)), this,
            SLOT(OnSoftwareTriggerChanged(const QString&, const QString&)));
    m_TriggerSoftware = m_FeatureManager->GetFeature("TriggerSoftware");

    BuildLayout();
    RefreshLineRows();
    ShowCounters();
    RegisterObservers(true);
}

IOMonitorWidget::~IOMonitorWidget()
{
    if (m_TriggerSoftware)
        m_TriggerSoftware->UnregisterObserver(m_TriggerObserver);
    // A notification still on its way may hold the observer's last reference
    // and delete it on the camera's thread once ours is gone: cut the
    // connection first, so that nothing of this widget refers to it then.
    if (QObject* observer = dynamic_cast<QObject*>(m_TriggerObserver.get()))
        QObject::disconnect(observer, nullptr, this, nullptr);
    m_TriggerObserver.reset();
    // The base's destructor does the same for its own observer.
    m_OwnedUpdateTimer.reset();
    m_UpdateTimer = nullptr;
    m_OwnedMutex.reset();
    m_Mutex = nullptr;
    m_OwnedChangedFeatures.reset();
    m_ChangedFeatures = nullptr;
}

void IOMonitorWidget::BuildLayout()
{
    QVBoxLayout* top = new QVBoxLayout(this);
    QHBoxLayout* upper = new QHBoxLayout();
    top->addLayout(upper);

    QGroupBox* lines = new QGroupBox(tr("Lines"), this);
    lines->setObjectName("gb_Lines");
    QGridLayout* grid = new QGridLayout(lines);
    const QStringList headers = {tr("Line"), tr("Direction"), tr("Source"), tr("Inverted"), tr("Level")};
    for (int c = 0; c < headers.size(); ++c) {
        QLabel* header = new QLabel("<b>" + headers.at(c) + "</b>", lines);
        grid->addWidget(header, 0, c);
    }
    for (int i = 0; i < m_Probe.Lines().size(); ++i) {
        QLabel* name = new QLabel(m_Probe.Lines().at(i).name, lines);
        name->setObjectName(QString("l_Line_%1").arg(i));
        QLabel* direction = new QLabel(lines);
        direction->setObjectName(QString("l_Direction_%1").arg(i));
        QLabel* source = new QLabel(lines);
        source->setObjectName(QString("l_Source_%1").arg(i));
        QLabel* inverted = new QLabel(lines);
        inverted->setObjectName(QString("l_Inverted_%1").arg(i));
        QLabel* lamp = new QLabel(lines);
        lamp->setObjectName(QString("lamp_%1").arg(i));
        lamp->setFixedSize(16, 16);
        lamp->setProperty("lit", false);
        lamp->setStyleSheet(LampStyle(false));
        grid->addWidget(name, i + 1, 0);
        grid->addWidget(direction, i + 1, 1);
        grid->addWidget(source, i + 1, 2);
        grid->addWidget(inverted, i + 1, 3);
        grid->addWidget(lamp, i + 1, 4, Qt::AlignCenter);
        m_DirectionLabels.append(direction);
        m_SourceLabels.append(source);
        m_InvertedLabels.append(inverted);
        m_Lamps.append(lamp);
    }
    upper->addWidget(lines, 1);

    QGroupBox* counters = new QGroupBox(tr("Counters"), this);
    counters->setObjectName("gb_Counters");
    QGridLayout* counterGrid = new QGridLayout(counters);
    struct Row {
        QString label;
        const char* name;
        QLabel** value;
    };
    const Row rows[] = {{tr("Frames"), "value_Frames", &m_ValueFrames},
                        {tr("Frame triggers"), "value_FrameTriggers", &m_ValueFrameTriggers},
                        {tr("Missed triggers"), "value_MissedTriggers", &m_ValueMissed},
                        {tr("Software triggers"), "value_SoftwareTriggers", &m_ValueSoftware}};
    int row = 0;
    for (const Row& r : rows) {
        counterGrid->addWidget(new QLabel(r.label, counters), row, 0);
        *r.value = new QLabel(QString::fromUtf8("\u2013"), counters);
        (*r.value)->setObjectName(r.name);
        (*r.value)->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        (*r.value)->setMinimumWidth(70);
        counterGrid->addWidget(*r.value, row, 1);
        ++row;
    }
    m_ButtonReset = new QPushButton(tr("Reset"), counters);
    m_ButtonReset->setObjectName("pb_ResetCounters");
    m_ButtonReset->setEnabled(m_Counters.CanReset());
    connect(m_ButtonReset, SIGNAL(clicked()), this, SLOT(OnResetCounters()));
    counterGrid->addWidget(m_ButtonReset, row, 0, 1, 2);
    m_LabelStreaming = new QLabel(tr("Not streaming"), counters);
    m_LabelStreaming->setObjectName("l_Streaming");
    counterGrid->addWidget(m_LabelStreaming, row + 1, 0, 1, 2);
    upper->addWidget(counters, 0);

    QGroupBox* stripGroup = new QGroupBox(tr("Signals"), this);
    stripGroup->setObjectName("gb_Strip");
    QVBoxLayout* stripLayout = new QVBoxLayout(stripGroup);
    QHBoxLayout* controls = new QHBoxLayout();
    stripLayout->addLayout(controls);
    const QString pollTip = tr("Pulses shorter than the poll period show in the counters, not in the strip.");
    QLabel* pollLabel = new QLabel(tr("Poll rate"), stripGroup);
    pollLabel->setToolTip(pollTip);
    controls->addWidget(pollLabel);
    m_SpinPollRate = new QSpinBox(stripGroup);
    m_SpinPollRate->setObjectName("spin_PollRate");
    m_SpinPollRate->setRange(1, 100);
    m_SpinPollRate->setValue(kDefaultPollHz);
    m_SpinPollRate->setSuffix(tr(" Hz"));
    m_SpinPollRate->setToolTip(pollTip);
    connect(m_SpinPollRate, SIGNAL(valueChanged(int)), this, SLOT(OnSpinPollRateChanged(int)));
    controls->addWidget(m_SpinPollRate);
    controls->addWidget(new QLabel(tr("Window"), stripGroup));
    m_SpinWindow = new QSpinBox(stripGroup);
    m_SpinWindow->setObjectName("spin_Window");
    m_SpinWindow->setRange(1, 60);
    m_SpinWindow->setValue(kDefaultWindowS);
    m_SpinWindow->setSuffix(tr(" s"));
    connect(m_SpinWindow, SIGNAL(valueChanged(int)), this, SLOT(OnSpinWindowChanged(int)));
    controls->addWidget(m_SpinWindow);
    m_ButtonFreeze = new QPushButton(tr("Freeze"), stripGroup);
    m_ButtonFreeze->setObjectName("pb_Freeze");
    m_ButtonFreeze->setCheckable(true);
    connect(m_ButtonFreeze, SIGNAL(toggled(bool)), this, SLOT(OnFreezeChanged(bool)));
    controls->addWidget(m_ButtonFreeze);
    m_LabelCursor = new QLabel(tr("Click the strip to place the cursor."), stripGroup);
    m_LabelCursor->setObjectName("l_Cursor");
    controls->addWidget(m_LabelCursor, 1);
    m_Strip = new SignalStripView(&m_History, stripGroup);
    m_Strip->setObjectName("strip");
    m_Strip->setToolTip(pollTip);
    connect(m_Strip, SIGNAL(cursorMoved(double)), this, SLOT(OnCursorMoved(double)));
    stripLayout->addWidget(m_Strip, 1);
    top->addWidget(stripGroup, 1);

    // Room for the timing sketch and the wiring self-test, built apart.
    m_Tools = new QWidget(this);
    m_Tools->setObjectName("w_Tools");
    QHBoxLayout* tools = new QHBoxLayout(m_Tools);
    tools->setContentsMargins(0, 0, 0, 0);
#ifdef PKO_MONITOR_TOOLS
    m_Sketch = new TimingSketchView(m_FeatureManager, m_Tools);
    m_Sketch->setObjectName("w_TimingSketch");
    tools->addWidget(m_Sketch, 1);
    m_SelfTest = new WiringSelfTestPanel(m_FeatureManager, m_Tools);
    m_SelfTest->setObjectName("w_WiringSelfTest");
    tools->addWidget(m_SelfTest, 1);
    for (const QString& name : m_Sketch->WatchedFeatures()) {
        if (!m_ObservedFeatures.contains(name))
            m_ObservedFeatures << name;
    }
#else
    m_Tools->hide();
#endif
    top->addWidget(m_Tools, 0);
}

void IOMonitorWidget::SetClock(std::function<double()> nowMs)
{
    m_Clock = std::move(nowMs);
}

double IOMonitorWidget::Now() const
{
    return m_Clock ? m_Clock() : static_cast<double>(m_Elapsed.nsecsElapsed()) / 1e6;
}

bool IOMonitorWidget::IsPolling() const
{
    return m_PollTimer->isActive();
}

int IOMonitorWidget::PollIntervalMs() const
{
    return m_PollTimer->interval();
}

void IOMonitorWidget::RefreshLineRows()
{
    const QVector<MonitorLine>& lines = m_Probe.Lines();
    for (int i = 0; i < lines.size() && i < m_Lamps.size(); ++i) {
        const MonitorLine& line = lines.at(i);
        m_DirectionLabels[i]->setText(line.output ? tr("Output") : tr("Input"));
        m_SourceLabels[i]->setText(line.output ? line.source : QString());
        m_InvertedLabels[i]->setText(line.output || line.inverted ? (line.inverted ? tr("yes") : tr("no")) : QString());
    }
}

void IOMonitorWidget::ShowLevels(unsigned long long levels)
{
    for (int i = 0; i < m_Lamps.size() && i < 64; ++i) {
        const bool lit = (levels >> i) & 1ULL;
        QLabel* lamp = m_Lamps[i];
        if (lamp->property("lit").toBool() != lit || !m_LevelsKnown) {
            lamp->setProperty("lit", lit);
            lamp->setStyleSheet(LampStyle(lit));
        }
    }
}

void IOMonitorWidget::Poll()
{
    const double now = Now();
    unsigned long long levels = 0;
    if (m_Probe.ReadLevels(levels)) {
        ShowLevels(levels);
        m_Levels = levels;
        m_LevelsKnown = true;
        if (!m_Frozen)
            m_History.AddSample(now, levels);
    }
    if (m_HaveCounters && (m_LastCounterMs < 0.0 || now - m_LastCounterMs >= kCounterPeriodMs))
        ReadCounters(now);
    if (!m_Frozen)
        m_Strip->update();
}

void IOMonitorWidget::ReadCounters(double nowMs)
{
    m_Counters.Read();
    const long long frames = m_Counters.Value(CameraCounters::Frames);
    if (frames >= 0 && m_LastFrames >= 0 && frames > m_LastFrames && !m_Frozen) {
        // The frames arrived somewhere since the last read; spread their marks
        // over that time (a reset shows as fewer frames: no marks).
        const long long count = std::min<long long>(frames - m_LastFrames, SignalHistory::kMaxEntries);
        const double from = m_LastCounterMs;
        for (long long k = 1; k <= count; ++k)
            m_History.AddMark(SignalHistory::MarkKind::Frame, from + (nowMs - from) * k / count);
    }
    if (frames >= 0)
        m_LastFrames = frames;
    m_LastCounterMs = nowMs;
    ShowCounters();
}

void IOMonitorWidget::ShowCounters()
{
    const QString none = QString::fromUtf8("\u2013");
    auto show = [&](QLabel* label, CameraCounters::Kind kind) {
        const long long value = m_Counters.Value(kind);
        label->setText(value >= 0 ? QString::number(value) : none);
        label->setToolTip(m_Counters.Has(kind) ? QString() : tr("The camera has no counter for this."));
    };
    show(m_ValueFrames, CameraCounters::Frames);
    show(m_ValueFrameTriggers, CameraCounters::FrameTriggers);
    show(m_ValueMissed, CameraCounters::MissedTriggers);
    m_ValueSoftware->setText(m_TriggerSoftware ? QString::number(m_SoftwareTriggers) : none);
    m_ValueSoftware->setToolTip(m_TriggerSoftware ? tr("Counted by this tab while it is shown.")
                                                  : tr("The camera has no software trigger."));
}

void IOMonitorWidget::UpdateFromChangedFeatures()
{
    bool setupChanged = false;
    for (const QString& name : m_Probe.SetupFeatures())
        setupChanged = setupChanged || m_ChangedFeatures->contains(name);
    if (setupChanged) {
        m_Probe.ReadSetup();
        RefreshLineRows();
    }
#ifdef PKO_MONITOR_TOOLS
    for (const QString& name : m_Sketch->WatchedFeatures()) {
        if (m_ChangedFeatures->contains(name)) {
            m_Sketch->Refresh();
            break;
        }
    }
#endif
}

void IOMonitorWidget::showEvent(QShowEvent* event)
{
    BaseTabPluginWidget::showEvent(event);
    if (m_TriggerSoftware)
        m_TriggerSoftware->RegisterObserver(m_TriggerObserver);
    m_LastCounterMs = -1.0;
    m_LastFrames = -1;
    m_PollTimer->start();
    Poll();
}

void IOMonitorWidget::hideEvent(QHideEvent* event)
{
    m_PollTimer->stop();
    if (m_TriggerSoftware)
        m_TriggerSoftware->UnregisterObserver(m_TriggerObserver);
    BaseTabPluginWidget::hideEvent(event);
}

void IOMonitorWidget::camIsStreaming(bool streaming)
{
    m_LabelStreaming->setText(streaming ? tr("Streaming") : tr("Not streaming"));
#ifdef PKO_MONITOR_TOOLS
    m_SelfTest->SetStreaming(streaming);
#endif
}

void IOMonitorWidget::OnSpinPollRateChanged(int hertz)
{
    hertz = std::max(1, std::min(100, hertz));
    m_PollTimer->setInterval(std::max(10, static_cast<int>(std::lround(1000.0 / hertz))));
}

void IOMonitorWidget::OnSpinWindowChanged(int seconds)
{
    m_History.SetWindowMs(seconds * 1000.0);
    m_Strip->update();
}

void IOMonitorWidget::OnFreezeChanged(bool frozen)
{
    m_Frozen = frozen;
    m_ButtonFreeze->setText(frozen ? tr("Run") : tr("Freeze"));
    if (!frozen)
        m_Strip->update();
}

void IOMonitorWidget::OnResetCounters()
{
    m_Counters.Reset();
    m_SoftwareTriggers = 0;
    m_Counters.Read();
    m_LastFrames = m_Counters.Value(CameraCounters::Frames);
    ShowCounters();
}

void IOMonitorWidget::OnCursorMoved(double)
{
    m_LabelCursor->setText(m_Strip->CursorText());
}

void IOMonitorWidget::OnSoftwareTriggerChanged(const QString& name, const QString&)
{
    if (name != "TriggerSoftware")
        return;
    ++m_SoftwareTriggers;
    if (!m_Frozen)
        m_History.AddMark(SignalHistory::MarkKind::SoftwareTrigger, Now());
    ShowCounters();
}
