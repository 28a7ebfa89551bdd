#include "TimingSketchView.h"

#include "FeatureManager.h"
#include "TimingSettingsReader.h"

#include <QPainter>
#include <QPainterPath>

namespace {

constexpr int kRowHeight = 28;
constexpr int kTitleWidth = 110;
constexpr int kMinCaptionWidth = 80;
constexpr int kMargin = 8;

}  // namespace

TimingSketchView::TimingSketchView(FeatureManager* manager, QWidget* parent)
    : QWidget(parent), m_FeatureManager(manager)
{
    setObjectName("w_TimingSketch");
    Refresh();
}

QStringList TimingSketchView::WatchedFeatures() const
{
    if (m_FeatureManager == nullptr)
        return QStringList();
    return TimingSettingsReader(*m_FeatureManager).WatchedFeatures();
}

void TimingSketchView::Refresh()
{
    if (m_FeatureManager != nullptr)
        m_Sketch = TimingSketch(TimingSettingsReader(*m_FeatureManager).Read());
    updateGeometry();
    update();
}

QSize TimingSketchView::minimumSizeHint() const
{
    return QSize(kMargin + kTitleWidth + 200 + kMargin + CaptionWidth() + kMargin,
                 2 * kMargin + kRowHeight * (m_Sketch.Tracks().size() + 1));
}

int TimingSketchView::CaptionWidth() const
{
    // As wide as the longest caption, so that the traces get the rest.
    int widest = kMinCaptionWidth;
    for (const TimingSketch::Track& track : m_Sketch.Tracks())
        widest = qMax(widest, fontMetrics().horizontalAdvance(TrackCaption(track)) + kMargin);
    return widest;
}

QString TimingSketchView::TrackTitle(const TimingSketch::Track& track) const
{
    switch (track.kind) {
        case TimingSketch::TrackKind::Trigger:
            return tr("Trigger");
        case TimingSketch::TrackKind::Exposure:
            return tr("Exposure");
        case TimingSketch::TrackKind::Readout:
            return tr("Readout");
        case TimingSketch::TrackKind::Output:
            break;
    }
    return track.line;
}

QString TimingSketchView::TrackCaption(const TimingSketch::Track& track) const
{
    const TimingSettings& settings = m_Sketch.Settings();
    switch (track.kind) {
        case TimingSketch::TrackKind::Trigger:
            if (m_Sketch.Trigger() == TimingSketch::TriggerKind::FreeRun)
                return tr("free run");
            if (m_Sketch.Trigger() == TimingSketch::TriggerKind::Software)
                return tr("software trigger");
            if (m_Sketch.SecondEdgeMissed())
                return tr("%1, %2 (second edge missed)").arg(track.line, settings.triggerActivation);
            return tr("%1, %2").arg(track.line, settings.triggerActivation);
        case TimingSketch::TrackKind::Exposure: {
            QString caption = m_Sketch.WidthExposure() ? tr("as long as the trigger")
                                                       : tr("%1 µs").arg(settings.exposureUs, 0, 'f', 0);
            if (settings.triggerDelayUs > 0.0 && m_Sketch.Trigger() != TimingSketch::TriggerKind::FreeRun)
                caption += tr(", delay %1 µs").arg(settings.triggerDelayUs, 0, 'f', 0);
            return caption;
        }
        case TimingSketch::TrackKind::Readout:
            return m_Sketch.ReadoutKnown() ? tr("%1 µs").arg(settings.readoutUs, 0, 'f', 0) : tr("unknown");
        case TimingSketch::TrackKind::Output:
            break;
    }
    QString caption = track.source;
    if (!track.known)
        caption += " " + tr("(unknown)");
    if (track.inverted)
        caption += " " + tr("(inverted)");
    return caption;
}

void TimingSketchView::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), palette().base());

    const int left = kMargin + kTitleWidth;
    const int captionWidth = CaptionWidth();
    const int width = qMax(40, this->width() - left - captionWidth - 2 * kMargin);
    const double cycle = qMax(1e-9, m_Sketch.CycleUs());
    auto x = [&](double us) { return left + static_cast<int>(width * us / cycle); };

    // The instants that matter, as thin lines through every track.
    painter.setPen(QPen(palette().mid().color(), 1, Qt::DotLine));
    const int bottom = kMargin + kRowHeight * m_Sketch.Tracks().size();
    for (double us :
         {m_Sketch.TriggerUs(), m_Sketch.ExposureStartUs(), m_Sketch.ExposureEndUs(), m_Sketch.ReadoutEndUs()})
        painter.drawLine(x(us), kMargin, x(us), bottom);

    int row = 0;
    for (const TimingSketch::Track& track : m_Sketch.Tracks()) {
        const int top = kMargin + kRowHeight * row++;
        const int high = top + 6;
        const int low = top + kRowHeight - 8;
        painter.setPen(palette().text().color());
        painter.drawText(QRect(kMargin, top, kTitleWidth - 4, kRowHeight), Qt::AlignVCenter | Qt::AlignLeft,
                         TrackTitle(track));
        painter.drawText(QRect(left + width + kMargin, top, captionWidth, kRowHeight), Qt::AlignVCenter | Qt::AlignLeft,
                         TrackCaption(track));

        QPainterPath path;
        bool level = track.startLevel;
        path.moveTo(left, level ? high : low);
        for (double edge : track.edges) {
            path.lineTo(x(edge), level ? high : low);
            level = !level;
            path.lineTo(x(edge), level ? high : low);
        }
        path.lineTo(left + width, level ? high : low);
        painter.setPen(QPen(track.known ? palette().highlight().color() : palette().mid().color(), 2,
                            track.known ? Qt::SolidLine : Qt::DashLine));
        painter.drawPath(path);
    }
    painter.setPen(palette().text().color());
    painter.drawText(QRect(left, bottom, width, kRowHeight), Qt::AlignCenter,
                     tr("one cycle: %1 µs").arg(m_Sketch.CycleUs(), 0, 'f', 0));
}
