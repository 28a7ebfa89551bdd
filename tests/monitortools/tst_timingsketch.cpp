// The timing sketch's model on every simulated model with lines: what the
// camera's settings make of the trigger, the exposure and the outputs, and
// that reading them leaves the camera as it was.

#include "FeatureManager.h"
#include "MonitorToolsTestSupport.h"
#include "TimingSketch.h"
#include "TimingSketchView.h"

#include <QtTest>

using TestSupport::FeaturesOf;
using TestSupport::OpenModel;
using TestSupport::SimCameraPtr;

namespace {

// The track of that output line; a default track when there is none.
TimingSketch::Track OutputTrack(const TimingSketch& sketch, const QString& line)
{
    for (const TimingSketch::Track& track : sketch.Tracks()) {
        if (track.kind == TimingSketch::TrackKind::Output && track.line == line)
            return track;
    }
    return TimingSketch::Track();
}

// The frame trigger on, from the model's first input line.
void TriggerFromLine(const SimCameraPtr& camera)
{
    QCOMPARE(camera->ChangeFromCamera("TriggerMode", "On", "FrameStart"), 0);
    if (camera->ValueText("TriggerSource", "FrameStart") == "Freerun")
        QCOMPARE(camera->ChangeFromCamera("TriggerSource", "Line1", "FrameStart"), 0);
}

}  // namespace

class TimingSketchTest : public QObject {
    Q_OBJECT

private slots:
    void shouldFollowTheExposureTime_data();
    void shouldFollowTheExposureTime();
    void shouldFollowTheTriggerActivation_data();
    void shouldFollowTheTriggerActivation();
    void shouldFollowAnOutputsSource_data();
    void shouldFollowAnOutputsSource();
    void shouldFlipAnInvertedOutput_data();
    void shouldFlipAnInvertedOutput();
    void shouldUseTheCamerasReadoutTime_data();
    void shouldUseTheCamerasReadoutTime();
    void shouldDelayTheExposureByTheTriggerDelay_data();
    void shouldDelayTheExposureByTheTriggerDelay();
    void shouldExposeAsLongAsTheTriggerInWidthExposure();
    void shouldWatchTheFeaturesItIsDrawnFrom_data();
    void shouldWatchTheFeaturesItIsDrawnFrom();
    void shouldLeaveTheCameraAsItWas_data();
    void shouldLeaveTheCameraAsItWas();
    void shouldDrawNothingUnknownAsKnown();

private:
    void AddModels();
};

void TimingSketchTest::AddModels()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("output");
    QTest::addColumn<QString>("sourceFeature");
    QTest::addColumn<QString>("exposing");
    QTest::addColumn<QString>("acquiring");
    QTest::addColumn<double>("readoutUs");
    QTest::newRow("line routing") << "SIM-LINE-ROUTING"
                                  << "Line1"
                                  << "LineSource"
                                  << "ExposureActive"
                                  << "FrameTriggerWait" << 2000.0;
    QTest::newRow("line sfnc") << "SIM-LINE-SFNC"
                               << "Line1"
                               << "LineSource"
                               << "ExposureActive"
                               << "FrameTriggerWait" << 3000.0;
    QTest::newRow("sync out") << "SIM-SYNCOUT"
                              << "SyncOut1"
                              << "SyncOutSource"
                              << "Exposing"
                              << "Acquiring" << 5000.0;
    QTest::newRow("line out") << "SIM-LINEOUT"
                              << "LineOut1"
                              << "LineOutSource"
                              << "Exposing"
                              << "Acquiring" << 4000.0;
}

void TimingSketchTest::shouldFollowTheExposureTime_data()
{
    AddModels();
}

void TimingSketchTest::shouldFollowTheExposureTime()
{
    QFETCH(QString, model);
    QFETCH(QString, output);
    const SimCameraPtr camera = OpenModel(model);
    TriggerFromLine(camera);
    FeatureManager manager(FeaturesOf(camera));
    TimingSketchView view(&manager, nullptr);
    const TimingSketch before = view.Sketch();
    QCOMPARE(before.ExposureEndUs() - before.ExposureStartUs(), 10000.0);

    QCOMPARE(manager.SetValue("ExposureTime", 2500.0), 2500.0);
    view.Refresh();

    const TimingSketch after = view.Sketch();
    QVERIFY(after != before);
    QCOMPARE(after.ExposureEndUs() - after.ExposureStartUs(), 2500.0);
    // The output that shows the exposure goes with it.
    QCOMPARE(OutputTrack(after, output).edges, QVector<double>({after.ExposureStartUs(), after.ExposureEndUs()}));
}

void TimingSketchTest::shouldFollowTheTriggerActivation_data()
{
    AddModels();
}

void TimingSketchTest::shouldFollowTheTriggerActivation()
{
    QFETCH(QString, model);
    const SimCameraPtr camera = OpenModel(model);
    TriggerFromLine(camera);
    QCOMPARE(camera->ChangeFromCamera("TriggerActivation", "RisingEdge", "FrameStart"), 0);
    FeatureManager manager(FeaturesOf(camera));
    TimingSketchView view(&manager, nullptr);
    const TimingSketch rising = view.Sketch();
    QCOMPARE(rising.Trigger(), TimingSketch::TriggerKind::Line);
    const TimingSketch::Track risingInput = rising.Tracks().at(0);
    QCOMPARE(risingInput.kind, TimingSketch::TrackKind::Trigger);
    QCOMPARE(risingInput.startLevel, false);
    QVERIFY(risingInput.LevelAt(rising.TriggerUs()));

    QCOMPARE(camera->ChangeFromCamera("TriggerActivation", "FallingEdge", "FrameStart"), 0);
    view.Refresh();

    const TimingSketch falling = view.Sketch();
    QVERIFY(falling != rising);
    QCOMPARE(falling.Tracks().at(0).startLevel, true);
    QVERIFY(!falling.Tracks().at(0).LevelAt(falling.TriggerUs()));
}

void TimingSketchTest::shouldFollowAnOutputsSource_data()
{
    AddModels();
}

void TimingSketchTest::shouldFollowAnOutputsSource()
{
    QFETCH(QString, model);
    QFETCH(QString, output);
    QFETCH(QString, sourceFeature);
    QFETCH(QString, exposing);
    QFETCH(QString, acquiring);
    const SimCameraPtr camera = OpenModel(model);
    TriggerFromLine(camera);
    FeatureManager manager(FeaturesOf(camera));
    TimingSketchView view(&manager, nullptr);
    const TimingSketch::Track before = OutputTrack(view.Sketch(), output);
    QCOMPARE(before.source, exposing);
    QCOMPARE(before.edges.size(), 2);

    QCOMPARE(camera->ChangeFromCamera(sourceFeature.toStdString(), acquiring.toStdString(), output.toStdString()), 0);
    view.Refresh();

    const TimingSketch::Track after = OutputTrack(view.Sketch(), output);
    QCOMPARE(after.source, acquiring);
    QVERIFY(after != before);
    if (acquiring == "Acquiring") {
        QCOMPARE(after.startLevel, true);
        QVERIFY(after.edges.isEmpty());
    } else {
        // Waiting for the trigger until it comes and again after the readout.
        QCOMPARE(after.startLevel, true);
        QCOMPARE(after.edges, QVector<double>({view.Sketch().TriggerUs(), view.Sketch().ReadoutEndUs()}));
    }
}

void TimingSketchTest::shouldFlipAnInvertedOutput_data()
{
    AddModels();
}

void TimingSketchTest::shouldFlipAnInvertedOutput()
{
    QFETCH(QString, model);
    QFETCH(QString, output);
    QFETCH(QString, sourceFeature);
    const SimCameraPtr camera = OpenModel(model);
    TriggerFromLine(camera);
    FeatureManager manager(FeaturesOf(camera));
    TimingSketchView view(&manager, nullptr);
    const TimingSketch::Track normal = OutputTrack(view.Sketch(), output);

    const bool lines = sourceFeature == "LineSource";
    QCOMPARE(camera->ChangeFromCamera(lines ? "LineInverter" : (sourceFeature.left(7) + "Polarity").toStdString(),
                                      lines ? "true" : "Invert", output.toStdString()),
             0);
    view.Refresh();

    const TimingSketch::Track inverted = OutputTrack(view.Sketch(), output);
    QVERIFY(inverted.inverted);
    QCOMPARE(inverted.startLevel, !normal.startLevel);
    QCOMPARE(inverted.edges, normal.edges);
    const double during = (view.Sketch().ExposureStartUs() + view.Sketch().ExposureEndUs()) / 2.0;
    QCOMPARE(inverted.LevelAt(during), false);
}

void TimingSketchTest::shouldUseTheCamerasReadoutTime_data()
{
    AddModels();
}

void TimingSketchTest::shouldUseTheCamerasReadoutTime()
{
    QFETCH(QString, model);
    QFETCH(double, readoutUs);
    const SimCameraPtr camera = OpenModel(model);
    FeatureManager manager(FeaturesOf(camera));
    TimingSketchView view(&manager, nullptr);
    QVERIFY(view.Sketch().ReadoutKnown());
    QCOMPARE(view.Sketch().ReadoutEndUs() - view.Sketch().ExposureEndUs(), readoutUs);
}

void TimingSketchTest::shouldDelayTheExposureByTheTriggerDelay_data()
{
    AddModels();
}

void TimingSketchTest::shouldDelayTheExposureByTheTriggerDelay()
{
    QFETCH(QString, model);
    const SimCameraPtr camera = OpenModel(model);
    TriggerFromLine(camera);
    FeatureManager manager(FeaturesOf(camera));
    TimingSketchView view(&manager, nullptr);
    QCOMPARE(view.Sketch().ExposureStartUs(), view.Sketch().TriggerUs());

    QCOMPARE(manager.SetValue("TriggerDelay", 1500.0), 1500.0);
    view.Refresh();
    QCOMPARE(view.Sketch().ExposureStartUs() - view.Sketch().TriggerUs(), 1500.0);
}

void TimingSketchTest::shouldExposeAsLongAsTheTriggerInWidthExposure()
{
    const SimCameraPtr camera = OpenModel("SIM-LINE-SFNC");
    TriggerFromLine(camera);
    QCOMPARE(camera->ChangeFromCamera("TriggerActivation", "AnyEdge", "FrameStart"), 0);
    FeatureManager manager(FeaturesOf(camera));
    TimingSketchView view(&manager, nullptr);
    QVERIFY(!view.Sketch().WidthExposure());
    // A short pulse: its second edge comes while the sensor still exposes.
    QVERIFY(view.Sketch().SecondEdgeMissed());

    manager.SetStringValue("ExposureMode", "TriggerWidth");
    view.Refresh();
    const TimingSketch sketch = view.Sketch();
    QVERIFY(sketch.WidthExposure());
    QCOMPARE(sketch.Tracks().at(0).edges, QVector<double>({sketch.TriggerUs(), sketch.ExposureEndUs()}));
}

void TimingSketchTest::shouldWatchTheFeaturesItIsDrawnFrom_data()
{
    AddModels();
}

void TimingSketchTest::shouldWatchTheFeaturesItIsDrawnFrom()
{
    QFETCH(QString, model);
    QFETCH(QString, sourceFeature);
    const SimCameraPtr camera = OpenModel(model);
    FeatureManager manager(FeaturesOf(camera));
    TimingSketchView view(&manager, nullptr);
    const QStringList watched = view.WatchedFeatures();
    for (const QString& name : {QString("TriggerMode"), QString("TriggerSource"), QString("TriggerActivation"),
                                QString("ExposureTime"), QString("SensorReadoutTime"), sourceFeature})
        QVERIFY2(watched.contains(name), qPrintable(name));
    // Only what the camera has, so that observers can be registered.
    for (const QString& name : watched)
        QVERIFY2(manager.IsAvailable(name), qPrintable(name));
}

void TimingSketchTest::shouldLeaveTheCameraAsItWas_data()
{
    AddModels();
}

void TimingSketchTest::shouldLeaveTheCameraAsItWas()
{
    QFETCH(QString, model);
    const SimCameraPtr camera = OpenModel(model);
    TriggerFromLine(camera);
    const QStringList before = MonitorToolsTest::IoSnapshot(camera);
    camera->ClearJournal();
    FeatureManager manager(FeaturesOf(camera));
    TimingSketchView view(&manager, nullptr);
    view.Refresh();

    QCOMPARE(MonitorToolsTest::IoSnapshot(camera), before);
    for (const auto& entry : camera->Journal())
        QVERIFY2(QString::fromStdString(entry.feature).endsWith("Selector"), entry.feature.c_str());
}

void TimingSketchTest::shouldDrawNothingUnknownAsKnown()
{
    TimingSettings settings;
    settings.exposureUs = 1000.0;
    settings.outputs << TimingSettings::Output{"Line1", "Timer0Active", false, false};
    settings.outputs << TimingSettings::Output{"Line3", "UserOutput1", true, true};
    const TimingSketch sketch(settings);
    QVERIFY(!sketch.ReadoutKnown());
    QVERIFY(!sketch.Tracks().at(2).known);
    QVERIFY(!OutputTrack(sketch, "Line1").known);
    // A user output's value, inverted: low all the cycle.
    QCOMPARE(OutputTrack(sketch, "Line3").startLevel, false);
    QVERIFY(OutputTrack(sketch, "Line3").edges.isEmpty());
}

QTEST_MAIN(TimingSketchTest)
#include "tst_timingsketch.moc"
