// The live image beside the tabs on simulated cameras: frames while the
// camera acquires, its counter and rate, and a still picture once it stops.

#include "LiveImageView.h"
#include "MainWindow.h"
#include "PluginLoader.h"
#include "ViewerLog.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QtTest>

#include <cstring>
#include <deque>
#include <memory>

using ZMT::PkoAPI::PkoErrorSuccess;
using ZMT::PkoAPI::Sim::SimCameraPtr;
using Samples = std::deque<LiveImageView::Sample>;

namespace {

long long IntegerOf(const SimCameraPtr& camera, const char* name)
{
    ZMT::PkoAPI::FeaturePtr feature;
    long long value = -1;
    if (camera->GetFeatureByName(name, feature) != PkoErrorSuccess || feature->GetValue(value) != PkoErrorSuccess) {
        return -1;
    }
    return value;
}

// Frames at the camera's own rate, whatever the model's defaults.
bool FreeRunning(const SimCameraPtr& camera)
{
    const char* const settings[][2] = {{"TriggerMode", "Off"}, {"AcquisitionMode", "Continuous"}};
    for (const auto& setting : settings) {
        ZMT::PkoAPI::FeaturePtr feature;
        if (camera->GetFeatureByName(setting[0], feature) != PkoErrorSuccess ||
            feature->SetValue(setting[1]) != PkoErrorSuccess) {
            return false;
        }
    }
    return true;
}

}  // namespace

class LiveImageTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void shouldComputeTheRateFromTheFramesBetweenTheFirstAndTheLastSample();
    void shouldReportNoRateWithoutProgressOrTime();
    void shouldShowTheFramesOfAnAcquiringCameraScaledWithTheirAspectRatio();
    void shouldShowTheCamerasPixels();
    void shouldStopUpdatingAfterStopAcquisition();
    void shouldStopPollingWhenTheCameraCloses();

private:
    std::unique_ptr<ViewerLog> m_Log;
    std::unique_ptr<PluginLoader> m_Plugins;
};

void LiveImageTest::initTestCase()
{
    m_Log.reset(new ViewerLog);
    m_Plugins.reset(new PluginLoader(*m_Log));
    QCOMPARE(m_Plugins->LoadDirectory(QStringLiteral("plugins")), 2);  // Trigger IO and I/O Monitor
}

void LiveImageTest::cleanupTestCase()
{
    m_Plugins.reset();
    m_Log.reset();
}

void LiveImageTest::shouldComputeTheRateFromTheFramesBetweenTheFirstAndTheLastSample()
{
    QCOMPARE(LiveImageView::FrameRate(Samples{{0, 10}, {500, 25}, {1000, 40}}), 30.0);
    // Uneven polls change nothing: only the ends count.
    QCOMPARE(LiveImageView::FrameRate(Samples{{200, 100}, {210, 100}, {700, 106}, {1200, 112}}), 12.0);
    QCOMPARE(LiveImageView::FrameRate(Samples{{1000, 7}, {1250, 8}}), 4.0);
}

void LiveImageTest::shouldReportNoRateWithoutProgressOrTime()
{
    QCOMPARE(LiveImageView::FrameRate(Samples{}), 0.0);
    QCOMPARE(LiveImageView::FrameRate(Samples{{100, 5}}), 0.0);
    // A stopped camera.
    QCOMPARE(LiveImageView::FrameRate(Samples{{0, 50}, {500, 50}, {1000, 50}}), 0.0);
    QCOMPARE(LiveImageView::FrameRate(Samples{{300, 5}, {300, 9}}), 0.0);
    // The camera was opened again and counts from zero.
    QCOMPARE(LiveImageView::FrameRate(Samples{{0, 50}, {1000, 3}}), 0.0);
}

void LiveImageTest::shouldShowTheFramesOfAnAcquiringCameraScaledWithTheirAspectRatio()
{
    MainWindow window(*m_Plugins, *m_Log);
    SimCameraPtr camera = ZMT::PkoAPI::Sim::CreateModel("SIM-LINE-ROUTING");
    QVERIFY(window.OpenCamera(camera));
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    LiveImageView* view = window.LiveView();
    QVERIFY(view->IsPolling());
    QVERIFY(view->Image().isNull());
    QCOMPARE(view->CounterText(), QStringLiteral("Frames: 0"));

    QVERIFY(FreeRunning(camera));
    window.ToggleAcquisition();
    QVERIFY(window.IsStreaming());
    QTRY_VERIFY(!view->Image().isNull());
    const QSize cameraSize(int(IntegerOf(camera, "Width")), int(IntegerOf(camera, "Height")));
    QVERIFY(cameraSize.width() > 0 && cameraSize.height() > 0);
    QCOMPARE(view->Image().size(), cameraSize);
    QCOMPARE(view->Image().format(), QImage::Format_Grayscale8);

    const QRect drawn = view->ImageRect();
    QVERIFY(view->rect().contains(drawn));
    QVERIFY(drawn.width() > 100);
    // Scaled to the area, with the camera's aspect ratio (to a pixel).
    const QSize expected = cameraSize.scaled(drawn.size(), Qt::KeepAspectRatio);
    QVERIFY2(qAbs(expected.width() - drawn.width()) <= 1 && qAbs(expected.height() - drawn.height()) <= 1,
             qPrintable(QStringLiteral("%1x%2").arg(drawn.width()).arg(drawn.height())));

    const unsigned long long first = view->ShownFrameId();
    QVERIFY(first >= 1);
    QTRY_VERIFY(view->ShownFrameId() >= first + 3);
    QTRY_VERIFY(view->CurrentRate() > 0.0);
    QVERIFY(view->RateText().endsWith(QStringLiteral(" fps")));
    const QString counter = view->CounterText();
    QVERIFY2(counter.startsWith(QStringLiteral("Frames: ")), qPrintable(counter));
    QVERIFY(counter.mid(8).toULongLong() >= first + 3);
    window.ToggleAcquisition();
}

void LiveImageTest::shouldShowTheCamerasPixels()
{
    MainWindow window(*m_Plugins, *m_Log);
    SimCameraPtr camera = ZMT::PkoAPI::Sim::CreateModel("SIM-LINEOUT");
    QVERIFY(window.OpenCamera(camera));
    QVERIFY(FreeRunning(camera));
    window.ToggleAcquisition();
    QTRY_VERIFY(window.LiveView()->ShownFrameId() >= 2);
    window.ToggleAcquisition();
    QVERIFY(!camera->IsAcquiring());
    // The last frame of the acquisition reaches the view, row by row as the camera sent it.
    ZMT::PkoAPI::Frame frame;
    QCOMPARE(camera->GetLatestFrame(frame), int(PkoErrorSuccess));
    QTRY_COMPARE(window.LiveView()->ShownFrameId(), frame.id);
    const QImage image = window.LiveView()->Image();
    QCOMPARE(image.size(), QSize(int(frame.width), int(frame.height)));
    for (int y = 0; y < image.height(); ++y) {
        QVERIFY2(
            std::memcmp(image.constScanLine(y), frame.mono8.data() + std::size_t(y) * frame.width, frame.width) == 0,
            qPrintable(QStringLiteral("row %1").arg(y)));
    }
}

void LiveImageTest::shouldStopUpdatingAfterStopAcquisition()
{
    MainWindow window(*m_Plugins, *m_Log);
    SimCameraPtr camera = ZMT::PkoAPI::Sim::CreateModel("SIM-SYNCOUT");
    QVERIFY(window.OpenCamera(camera));
    QVERIFY(FreeRunning(camera));
    LiveImageView* view = window.LiveView();
    window.ToggleAcquisition();
    QTRY_VERIFY(view->ShownFrameId() >= 2);
    window.ToggleAcquisition();
    QVERIFY(!window.IsStreaming());
    const unsigned long long last = camera->FramesDelivered();
    QTRY_COMPARE(view->ShownFrameId(), last);
    const QImage still = view->Image();
    // Without frames the rate falls to zero within its window.
    QTRY_COMPARE(view->CurrentRate(), 0.0);
    QCOMPARE(view->ShownFrameId(), last);
    QCOMPARE(view->Image(), still);
    QCOMPARE(view->CounterText(), QStringLiteral("Frames: %1").arg(last));
    QCOMPARE(view->RateText(), QStringLiteral("0.0 fps"));
}

void LiveImageTest::shouldStopPollingWhenTheCameraCloses()
{
    MainWindow window(*m_Plugins, *m_Log);
    SimCameraPtr camera = ZMT::PkoAPI::Sim::CreateModel("SIM-LINE-SFNC");
    QVERIFY(window.OpenCamera(camera));
    QVERIFY(FreeRunning(camera));
    window.ToggleAcquisition();
    QTRY_VERIFY(!window.LiveView()->Image().isNull());
    window.CloseCamera();
    QVERIFY(!window.LiveView()->IsPolling());
    QVERIFY(window.LiveView()->Image().isNull());
    QCOMPARE(window.LiveView()->CounterText(), QString());
    QVERIFY(!camera->IsOpen());
}

QTEST_MAIN(LiveImageTest)
#include "tst_viewer_liveimage.moc"
