#ifndef LIVEIMAGEVIEW_H
#define LIVEIMAGEVIEW_H

#include <PkoAPI/Camera.h>
#include <PkoAPI/Frame.h>

#include <QElapsedTimer>
#include <QImage>
#include <QWidget>

#include <deque>

class QLabel;
class QTimer;

// The open camera's newest frame, scaled to the area with its aspect ratio
// kept, with the camera's frame counter and its recent frame rate. Polls the
// camera on a display timer while the camera is open.
class LiveImageView : public QWidget {
    Q_OBJECT

public:
    // The camera's frame counter at a moment of a monotonic clock.
    struct Sample {
        qint64 ms;
        unsigned long long frames;
    };
    // Frames per second between the first and the last sample (oldest
    // first); 0 for fewer than two samples, no elapsed time or a counter
    // that went backwards.
    static double FrameRate(const std::deque<Sample>& samples);
    // How far back the rate looks.
    static const int kRateWindowMs = 1000;
    static const int kPollIntervalMs = 33;

    explicit LiveImageView(QWidget* parent = nullptr);
    ~LiveImageView() override;

    // Starts polling camera when it is open; null (or a closed camera)
    // clears the view and stops polling.
    void SetCamera(const ZMT::PkoAPI::CameraPtr& camera);
    // Stops polling and keeps the last image, e.g. when the camera was lost.
    void Freeze();
    bool IsPolling() const;

    // The last frame shown, at the camera's resolution (null before the first).
    QImage Image() const { return m_Image; }
    // Id of that frame, 0 before the first.
    unsigned long long ShownFrameId() const { return m_ShownId; }
    // Where the image is drawn, in widget coordinates (empty without image).
    QRect ImageRect() const;
    double CurrentRate() const { return m_Rate; }
    QString CounterText() const;
    QString RateText() const;

public slots:
    // One poll: reads the counter and, when it moved, the newest frame.
    void Poll();

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void ShowFrame();
    QRect ImageArea() const;
    void UpdateLabels();
    void Clear();

    QTimer* m_Timer;
    QLabel* m_CounterLabel;
    QLabel* m_RateLabel;
    QElapsedTimer m_Clock;

    ZMT::PkoAPI::CameraPtr m_Camera;
    ZMT::PkoAPI::Frame m_Frame;
    QImage m_Image;
    unsigned long long m_ShownId;
    unsigned long long m_Frames;
    std::deque<Sample> m_Samples;
    double m_Rate;
};

#endif
