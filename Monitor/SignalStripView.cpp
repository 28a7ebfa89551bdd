#include "SignalStripView.h"

#include "SignalHistory.h"

#include <QMouseEvent>
#include <QPainter>
#include <QVector>

#include <cmath>
#include <limits>

namespace {

const int kNameWidth = 90;
const int kRowHeight = 26;
const int kMarkRowHeight = 18;
const int kAxisHeight = 20;
const int kMargin = 6;

}  // namespace

SignalStripView::SignalStripView(const SignalHistory* history, QWidget* parent)
    : QWidget(parent), m_History(history), m_CursorMs(std::numeric_limits<double>::quiet_NaN())
{
    setMouseTracking(false);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

QSize SignalStripView::sizeHint() const
{
    const int rows = std::max(1, m_History->LineCount());
    return QSize(600, 2 * kMargin + rows * kRowHeight + kMarkRowHeight + kAxisHeight);
}

QSize SignalStripView::minimumSizeHint() const
{
    return QSize(kNameWidth + 100, 2 * kMargin + kRowHeight + kMarkRowHeight + kAxisHeight);
}

QRect SignalStripView::TraceArea() const
{
    return QRect(kNameWidth, kMargin, std::max(1, width() - kNameWidth - kMargin),
                 std::max(1, height() - 2 * kMargin - kAxisHeight));
}

double SignalStripView::TimeAtX(int x) const
{
    const QRect area = TraceArea();
    return m_History->WindowStartMs() + (x - area.left()) * m_History->WindowMs() / area.width();
}

double SignalStripView::XAtTime(double timeMs) const
{
    const QRect area = TraceArea();
    return area.left() + (timeMs - m_History->WindowStartMs()) * area.width() / m_History->WindowMs();
}

void SignalStripView::SetCursorMs(double timeMs)
{
    m_CursorMs = timeMs;
    update();
    emit cursorMoved(timeMs);
}

QString SignalStripView::CursorText() const
{
    if (std::isnan(m_CursorMs))
        return QString();
    QString text = tr("t = %1 s").arg((m_CursorMs - m_History->LatestMs()) / 1000.0, 0, 'f', 3);
    for (int line = 0; line < m_History->LineCount(); ++line)
        text += QString("  %1=%2").arg(m_History->LineName(line)).arg(m_History->LevelAt(line, m_CursorMs) ? 1 : 0);
    return text;
}

void SignalStripView::mousePressEvent(QMouseEvent* event)
{
    if (TraceArea().contains(event->pos()) || event->pos().x() >= TraceArea().left())
        SetCursorMs(TimeAtX(std::min(event->pos().x(), TraceArea().right())));
}

void SignalStripView::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons() & Qt::LeftButton)
        SetCursorMs(TimeAtX(std::max(TraceArea().left(), std::min(event->pos().x(), TraceArea().right()))));
}

void SignalStripView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), QColor(24, 26, 30));
    const QRect area = TraceArea();
    const double start = m_History->WindowStartMs();
    const double end = m_History->LatestMs();
    const int lines = m_History->LineCount();
    const int rowHeight = lines > 0 ? std::min(kRowHeight, (area.height() - kMarkRowHeight) / lines) : kRowHeight;

    // Grid and time axis: a tick per second, or per 5 or 10 s for long windows.
    const double windowS = m_History->WindowMs() / 1000.0;
    const double step = windowS > 30 ? 10.0 : (windowS > 12 ? 5.0 : 1.0);
    painter.setPen(QColor(60, 64, 72));
    QFont small = font();
    small.setPointSizeF(std::max(6.0, small.pointSizeF() * 0.85));
    painter.setFont(small);
    for (double ago = 0.0; ago <= windowS + 1e-9; ago += step) {
        const int x = static_cast<int>(std::lround(XAtTime(end - ago * 1000.0)));
        painter.setPen(QColor(60, 64, 72));
        painter.drawLine(x, area.top(), x, area.bottom());
        painter.setPen(QColor(170, 175, 185));
        const QString label = ago == 0.0 ? QString("0 s") : QString("-%1 s").arg(ago);
        // Labels stay inside the widget: the newest one at the right edge.
        const int left = std::min(x - 30, width() - 62);
        painter.drawText(QRect(left, area.bottom() + 2, 60, kAxisHeight - 2),
                         (left < x - 30 ? Qt::AlignRight : Qt::AlignHCenter) | Qt::AlignTop, label);
    }

    // One trace per line: low at the bottom of its row, high at the top.
    painter.setRenderHint(QPainter::Antialiasing, false);
    for (int line = 0; line < lines; ++line) {
        const int top = area.top() + line * rowHeight;
        const int high = top + 4;
        const int low = top + rowHeight - 4;
        painter.setPen(QColor(200, 205, 215));
        painter.drawText(QRect(kMargin, top, kNameWidth - 2 * kMargin, rowHeight), Qt::AlignVCenter | Qt::AlignLeft,
                         m_History->LineName(line));
        const std::deque<SignalHistory::Change>& changes = m_History->Changes(line);
        if (changes.empty())
            continue;
        // At most a few points per pixel column: changes that fall into one
        // column are drawn as one vertical stroke, however many there are.
        QVector<QPoint> points;
        points.reserve(4 * area.width());
        bool level = changes.front().high;
        int column = static_cast<int>(std::max(XAtTime(changes.front().timeMs), static_cast<double>(area.left())));
        points.append(QPoint(column, level ? high : low));
        for (std::size_t i = 1; i < changes.size(); ++i) {
            const int x = static_cast<int>(std::max(XAtTime(changes[i].timeMs), static_cast<double>(area.left())));
            if (x != column || points.size() < 2) {
                points.append(QPoint(x, level ? high : low));
                points.append(QPoint(x, changes[i].high ? high : low));
            } else {
                // Same column: the stroke covers both levels, the last one carries on.
                points.last() = QPoint(x, changes[i].high ? high : low);
                points[points.size() - 2] = QPoint(x, changes[i].high ? low : high);
            }
            column = x;
            level = changes[i].high;
        }
        points.append(QPoint(static_cast<int>(XAtTime(end)), level ? high : low));
        painter.setPen(QPen(QColor(90, 220, 120), 0));
        painter.drawPolyline(points.constData(), points.size());
    }

    // Marks: frames as short blue ticks, software triggers as orange ones above them.
    const int marksTop = area.top() + lines * rowHeight + 2;
    painter.setPen(QColor(200, 205, 215));
    painter.drawText(QRect(kMargin, marksTop, kNameWidth - 2 * kMargin, kMarkRowHeight),
                     Qt::AlignVCenter | Qt::AlignLeft, tr("Frames"));
    for (const SignalHistory::Mark& mark : m_History->Marks()) {
        if (mark.timeMs < start)
            continue;
        const int x = static_cast<int>(std::lround(XAtTime(mark.timeMs)));
        if (mark.kind == SignalHistory::MarkKind::Frame) {
            painter.setPen(QPen(QColor(100, 160, 255), 2));
            painter.drawLine(x, marksTop + kMarkRowHeight / 2, x, marksTop + kMarkRowHeight - 2);
        } else {
            painter.setPen(QPen(QColor(255, 160, 60), 2));
            painter.drawLine(x, marksTop + 1, x, marksTop + kMarkRowHeight / 2 - 1);
        }
    }

    if (!std::isnan(m_CursorMs) && m_CursorMs >= start) {
        const int x = static_cast<int>(std::lround(XAtTime(m_CursorMs)));
        painter.setPen(QPen(QColor(255, 230, 80), 1, Qt::DashLine));
        painter.drawLine(x, area.top(), x, area.bottom());
    }
}
