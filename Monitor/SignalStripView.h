#ifndef SIGNALSTRIPVIEW_H
#define SIGNALSTRIPVIEW_H

#include <QWidget>

class SignalHistory;

// Draws a SignalHistory as a logic analyser does: one trace per line, a row
// of marks (frames, software triggers), a time axis in seconds before the
// newest sample, and a cursor the user places with the mouse. Drawing only:
// it never changes the history. Repaints when told (update()), not by itself.
class SignalStripView : public QWidget {
    Q_OBJECT
public:
    // history must outlive the view.
    SignalStripView(const SignalHistory* history, QWidget* parent);

    // Time of the cursor in the history's clock; NaN when there is none.
    double CursorMs() const { return m_CursorMs; }
    // Places the cursor (NaN removes it) and emits cursorMoved.
    void SetCursorMs(double timeMs);
    // The readout of the cursor: its time before the newest sample and the
    // level of every line there; "" without a cursor.
    QString CursorText() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void cursorMoved(double timeMs);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    double TimeAtX(int x) const;
    double XAtTime(double timeMs) const;
    QRect TraceArea() const;

    const SignalHistory* m_History;
    double m_CursorMs;
};

#endif
