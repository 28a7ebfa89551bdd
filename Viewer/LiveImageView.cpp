#include "LiveImageView.h"

#include <PkoAPI/PkoCommonTypes.h>

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QTimer>
#include <QVBoxLayout>

#include <cstring>

using ZMT::PkoAPI::PkoErrorSuccess;

double LiveImageView::FrameRate(const std::deque<Sample>& samples)
{
    if (samples.size() < 2) {
        return 0.0;
    }
    const Sample& first = samples.front();
    const Sample& last = samples.back();
    if (last.ms <= first.ms || last.frames < first.frames) {
        return 0.0;
    }
    return static_cast<double>(last.frames - first.frames) * 1000.0 / static_cast<double>(last.ms - first.ms);
}

LiveImageView::LiveImageView(QWidget* parent)
    : QWidget(parent),
      m_Timer(new QTimer(this)),
      m_CounterLabel(new QLabel(this)),
      m_RateLabel(new QLabel(this)),
      m_ShownId(0),
      m_Frames(0),
      m_Rate(0.0)
{
    setObjectName(QStringLiteral("liveImageView"));
    setMinimumSize(240, 200);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_CounterLabel->setObjectName(QStringLiteral("liveFrameCounter"));
    m_CounterLabel->setToolTip(tr("Frames the camera delivered since it was opened"));
    m_RateLabel->setObjectName(QStringLiteral("liveFrameRate"));
    m_RateLabel->setToolTip(tr("Frames per second over the last second"));
    m_RateLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    QHBoxLayout* labels = new QHBoxLayout;
    labels->addWidget(m_CounterLabel, 1);
    labels->addWidget(m_RateLabel);
    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addStretch(1);
    layout->addLayout(labels);

    m_Timer->setInterval(kPollIntervalMs);
    connect(m_Timer, &QTimer::timeout, this, &LiveImageView::Poll);
    UpdateLabels();
}

LiveImageView::~LiveImageView() = default;

void LiveImageView::SetCamera(const ZMT::PkoAPI::CameraPtr& camera)
{
    m_Timer->stop();
    Clear();
    m_Camera = camera;
    if (m_Camera && m_Camera->IsOpen()) {
        m_Clock.start();
        m_Timer->start();
        Poll();
    } else {
        m_Camera.reset();
    }
    UpdateLabels();
    update();
}

void LiveImageView::Freeze()
{
    m_Timer->stop();
    m_Samples.clear();
    m_Rate = 0.0;
    UpdateLabels();
}

bool LiveImageView::IsPolling() const
{
    return m_Timer->isActive();
}

void LiveImageView::Poll()
{
    if (!m_Camera) {
        return;
    }
    if (!m_Camera->IsOpen()) {
        Freeze();
        return;
    }
    const unsigned long long frames = m_Camera->FramesDelivered();
    if (frames < m_Frames) {
        // Reopened elsewhere: the counter started again.
        m_Samples.clear();
    }
    m_Frames = frames;
    const qint64 now = m_Clock.elapsed();
    m_Samples.push_back(Sample{now, frames});
    while (m_Samples.size() > 2 && m_Samples.front().ms < now - kRateWindowMs) {
        m_Samples.pop_front();
    }
    m_Rate = FrameRate(m_Samples);
    if (frames != 0 && frames != m_ShownId) {
        ShowFrame();
    }
    UpdateLabels();
}

void LiveImageView::ShowFrame()
{
    if (m_Camera->GetLatestFrame(m_Frame) != PkoErrorSuccess || m_Frame.id == m_ShownId) {
        return;
    }
    const int width = static_cast<int>(m_Frame.width);
    const int height = static_cast<int>(m_Frame.height);
    if (width <= 0 || height <= 0 || m_Frame.mono8.size() != static_cast<std::size_t>(width) * height) {
        return;
    }
    if (m_Image.size() != QSize(width, height)) {
        m_Image = QImage(width, height, QImage::Format_Grayscale8);
    }
    // QImage pads its rows; the frame does not.
    for (int y = 0; y < height; ++y) {
        std::memcpy(m_Image.scanLine(y), m_Frame.mono8.data() + static_cast<std::size_t>(y) * width,
                    static_cast<std::size_t>(width));
    }
    m_ShownId = m_Frame.id;
    update(ImageArea());
}

QRect LiveImageView::ImageArea() const
{
    const int bottom = qMin(m_CounterLabel->geometry().top(), m_RateLabel->geometry().top()) - 4;
    return QRect(0, 0, width(), qMax(0, bottom));
}

QRect LiveImageView::ImageRect() const
{
    if (m_Image.isNull()) {
        return QRect();
    }
    const QRect area = ImageArea();
    const QSize size = m_Image.size().scaled(area.size(), Qt::KeepAspectRatio);
    QRect rect(QPoint(0, 0), size);
    rect.moveCenter(area.center());
    return rect;
}

QString LiveImageView::CounterText() const
{
    return m_Camera ? tr("Frames: %1").arg(m_Frames) : QString();
}

QString LiveImageView::RateText() const
{
    return m_Camera ? QStringLiteral("%1 fps").arg(m_Rate, 0, 'f', 1) : QString();
}

void LiveImageView::paintEvent(QPaintEvent* event)
{
    QWidget::paintEvent(event);
    QPainter painter(this);
    const QRect area = ImageArea();
    painter.fillRect(area, QColor(0x20, 0x20, 0x20));
    if (m_Image.isNull()) {
        painter.setPen(QColor(0xb0, 0xb0, 0xb0));
        painter.drawText(area, Qt::AlignCenter, m_Camera ? tr("No frame yet") : tr("No camera open"));
        return;
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(ImageRect(), m_Image);
}

void LiveImageView::UpdateLabels()
{
    m_CounterLabel->setText(CounterText());
    m_RateLabel->setText(RateText());
}

void LiveImageView::Clear()
{
    m_Image = QImage();
    m_Frame = ZMT::PkoAPI::Frame();
    m_ShownId = 0;
    m_Frames = 0;
    m_Samples.clear();
    m_Rate = 0.0;
}
