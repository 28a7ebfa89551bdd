// The preset buttons of the "Trigger IO" tab on fake GigE Vision cameras of
// each naming generation. The GenICam backend keeps no write journal, so the
// test reads what the camera holds afterwards over a second connection and
// compares it with what the same preset leaves in the simulated model that
// the camera's description mirrors, and with the values the preset is meant
// to leave.

#include "ArvTabFixture.h"
#include "CameraPeer.h"
#include "FakeGvCamera.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/SimCamera.h>

#include <QPushButton>
#include <QtTest>

#include <memory>

namespace {

typedef QVector<CameraPeer::Probe> Probes;

void AddSelected(Probes& probes, const QString& selector, const QStringList& entries, const QStringList& features)
{
    for (const QString& feature : features) {
        for (const QString& entry : entries)
            probes.append(CameraPeer::Probe{feature, selector, entry});
    }
}

// Everything a preset may touch on a camera of that description.
Probes ProbesFor(const QString& description)
{
    Probes probes;
    const QStringList trigger{"TriggerMode", "TriggerSource", "TriggerActivation"};
    if (description == FakeGvCamera::Gen1Line)
        AddSelected(probes, "TriggerSelector", {"FrameStart", "AcquisitionStart", "ExposureStart", "ExposureActive"},
                    trigger);
    else
        AddSelected(probes, "TriggerSelector", {"FrameStart", "AcquisitionStart"}, trigger);
    for (const QString& feature : QStringList{"AcquisitionMode", "AcquisitionFrameCount", "ExposureAuto"})
        probes.append(CameraPeer::Probe{feature, QString(), QString()});
    if (description != FakeGvCamera::Gen2SyncOut)
        probes.append(CameraPeer::Probe{"ExposureMode", QString(), QString()});

    const QStringList lines{"Line0", "Line1", "Line2", "Line3"};
    if (description == FakeGvCamera::Gen1Line)
        AddSelected(probes, "LineSelector", lines, {"LineRouting"});
    if (description == FakeGvCamera::Gen1Line || description == FakeGvCamera::Gen1Sfnc)
        AddSelected(probes, "LineSelector", lines, {"LineMode", "LineSource", "LineInverter", "LineStatus"});
    if (description == FakeGvCamera::Gen2SyncOut) {
        AddSelected(probes, "SyncOutSelector", {"SyncOut1", "SyncOut2", "SyncOut3", "SyncOut4"},
                    {"SyncOutSource", "SyncOutPolarity"});
        probes.append(CameraPeer::Probe{"SyncOutLevels", QString(), QString()});
    }
    if (description == FakeGvCamera::Gen3LineOut) {
        AddSelected(probes, "LineOutSelector", {"LineOut1", "LineOut2", "LineOut3", "LineOut4"},
                    {"LineOutSource", "LineOutPolarity"});
        probes.append(CameraPeer::Probe{"LineOutLevels", QString(), QString()});
    }
    return probes;
}

QStringList SimulatedValues(const ZMT::PkoAPI::Sim::SimCameraPtr& camera, const Probes& probes)
{
    QStringList values;
    for (const CameraPeer::Probe& probe : probes) {
        const QString key =
            probe.selectorEntry.isEmpty() ? probe.feature : probe.feature + "[" + probe.selectorEntry + "]";
        values << key + "=" +
                      QString::fromStdString(
                          camera->ValueText(probe.feature.toStdString(), probe.selectorEntry.toStdString()));
    }
    return values;
}

QString Lines(const QStringList& actual, const QStringList& expected)
{
    return "\n   camera:\n      " + actual.join("\n      ") + "\n   simulated:\n      " + expected.join("\n      ");
}

}  // namespace

class TestArvWidgetPresets : public QObject {
    Q_OBJECT

private slots:
    void init();
    void shouldLeaveTheCameraAsOnTheSimulatedModel_data();
    void shouldLeaveTheCameraAsOnTheSimulatedModel();
};

void TestArvWidgetPresets::init()
{
    if (!FakeGvCamera::BinaryAvailable())
        QSKIP("arv-fake-gv-camera-0.8 is not installed (Debian: aravis-tools-cli)");
}

void TestArvWidgetPresets::shouldLeaveTheCameraAsOnTheSimulatedModel_data()
{
    QTest::addColumn<QString>("description");
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("button");
    // Values the preset must leave in the camera (a subset of all compared).
    QTest::addColumn<QStringList>("expected");

    const QString gen1 = FakeGvCamera::Gen1Line;
    const QString sfnc = FakeGvCamera::Gen1Sfnc;
    const QString gen2 = FakeGvCamera::Gen2SyncOut;
    const QString gen3 = FakeGvCamera::Gen3LineOut;
    QTest::newRow("Edge, generation 1 with routing") << gen1 << "SIM-LINE-ROUTING"
                                                     << "pb_Edge"
                                                     << QStringList{"TriggerMode[ExposureStart]=On",
                                                                    "TriggerSource[ExposureStart]=InputLines",
                                                                    "TriggerActivation[ExposureStart]=FallingEdge",
                                                                    "LineRouting[Line0]=Trigger",
                                                                    "ExposureMode=Timed",
                                                                    "TriggerMode[FrameStart]=Off"};
    QTest::newRow("Level, generation 1 with routing")
        << gen1 << "SIM-LINE-ROUTING"
        << "pb_Level"
        << QStringList{"ExposureMode=TriggerWidth", "TriggerMode[FrameStart]=On",
                       "TriggerSource[FrameStart]=InputLines", "TriggerActivation[ExposureActive]=LowLevel",
                       "LineRouting[Line0]=Trigger"};
    QTest::newRow("Bulk, generation 1 with routing")
        << gen1 << "SIM-LINE-ROUTING"
        << "pb_Bulk"
        << QStringList{"AcquisitionMode=MultiFrame", "AcquisitionFrameCount=10", "TriggerMode[AcquisitionStart]=On",
                       "TriggerSource[ExposureStart]=InputLines", "LineRouting[Line0]=Trigger"};
    QTest::newRow("Edge, generation 1 without routing")
        << sfnc << "SIM-LINE-SFNC"
        << "pb_Edge"
        << QStringList{"TriggerMode[FrameStart]=On", "TriggerSource[FrameStart]=Line0",
                       "TriggerActivation[FrameStart]=FallingEdge", "TriggerMode[AcquisitionStart]=Off"};
    QTest::newRow("Level, generation 1 without routing")
        << sfnc << "SIM-LINE-SFNC"
        << "pb_Level"
        << QStringList{"ExposureMode=TriggerWidth", "TriggerMode[FrameStart]=On",
                       "TriggerActivation[FrameStart]=FallingEdge"};
    QTest::newRow("Bulk, generation 1 without routing")
        << sfnc << "SIM-LINE-SFNC"
        << "pb_Bulk"
        << QStringList{"AcquisitionMode=MultiFrame", "AcquisitionFrameCount=10", "TriggerMode[AcquisitionStart]=On",
                       "TriggerActivation[AcquisitionStart]=FallingEdge", "TriggerMode[FrameStart]=Off"};
    QTest::newRow("Edge, generation 2") << gen2 << "SIM-SYNCOUT"
                                        << "pb_Edge"
                                        << QStringList{"TriggerMode[FrameStart]=On", "TriggerSource[FrameStart]=Line1",
                                                       "TriggerActivation[FrameStart]=FallingEdge",
                                                       "TriggerMode[AcquisitionStart]=Off", "ExposureAuto=Off"};
    QTest::newRow("Level, generation 2") << gen2 << "SIM-SYNCOUT"
                                         << "pb_Level"
                                         << QStringList{"TriggerMode[FrameStart]=On", "TriggerSource[FrameStart]=Line1",
                                                        "TriggerActivation[FrameStart]=LevelLow", "ExposureAuto=other"};
    QTest::newRow("Bulk, generation 2") << gen2 << "SIM-SYNCOUT"
                                        << "pb_Bulk"
                                        << QStringList{"AcquisitionMode=MultiFrame", "AcquisitionFrameCount=10",
                                                       "TriggerMode[AcquisitionStart]=On",
                                                       "TriggerSource[AcquisitionStart]=Line1",
                                                       "TriggerActivation[AcquisitionStart]=RisingEdge"};
    QTest::newRow("Edge, generation 3") << gen3 << "SIM-LINEOUT"
                                        << "pb_Edge"
                                        << QStringList{"TriggerMode[FrameStart]=On",
                                                       "TriggerActivation[FrameStart]=FallingEdge",
                                                       "TriggerMode[AcquisitionStart]=Off", "ExposureMode=Timed"};
    QTest::newRow("Level, generation 3") << gen3 << "SIM-LINEOUT"
                                         << "pb_Level"
                                         << QStringList{"ExposureMode=TriggerWidth", "TriggerMode[FrameStart]=On",
                                                        "TriggerActivation[FrameStart]=FallingEdge"};
    QTest::newRow("Bulk, generation 3") << gen3 << "SIM-LINEOUT"
                                        << "pb_Bulk"
                                        << QStringList{"AcquisitionMode=MultiFrame", "AcquisitionFrameCount=10",
                                                       "TriggerMode[AcquisitionStart]=On",
                                                       "TriggerMode[FrameStart]=Off"};
}

void TestArvWidgetPresets::shouldLeaveTheCameraAsOnTheSimulatedModel()
{
    QFETCH(QString, description);
    QFETCH(QString, model);
    QFETCH(QString, button);
    QFETCH(QStringList, expected);

    ArvTabFixture genicam(description, false);
    QVERIFY2(genicam.Error().isEmpty(), qPrintable(genicam.Error()));
    const Probes probes = ProbesFor(description);
    QString error;
    const QStringList before = CameraPeer::Values(probes, error);
    QVERIFY2(error.isEmpty(), qPrintable(error));
    QVERIFY2(genicam.Open(), qPrintable(genicam.Error()));

    ZMT::PkoAPI::Sim::SimCameraPtr simulated = ZMT::PkoAPI::Sim::CreateModel(model.toStdString());
    QVERIFY(simulated);
    QCOMPARE(simulated->Open(), 0);
    const QStringList simulatedBefore = SimulatedValues(simulated, probes);
    QVERIFY2(before == simulatedBefore, qPrintable(Lines(before, simulatedBefore)));
    ArvTabFixture::Tab* simulatedTab = nullptr;
    std::unique_ptr<QWidget> simulatedPage =
        ArvTabFixture::BuildPage(ArvTabFixture::FeaturesOf(simulated), simulatedTab, error);
    QVERIFY2(simulatedPage, qPrintable(error));
    QVERIFY(ArvTabFixture::Show(genicam.Page()));
    QVERIFY(ArvTabFixture::Show(simulatedPage.get()));

    for (QWidget* page : {genicam.Page(), simulatedPage.get()}) {
        QPushButton* preset = page->findChild<QPushButton*>(button);
        QVERIFY(preset);
        QVERIFY(preset->isEnabled());
        QTest::mouseClick(preset, Qt::LeftButton);
        QVERIFY(preset->isEnabled());
    }

    // Read once the SDK's connection is gone; the camera keeps its values.
    genicam.Close();
    const QStringList after = CameraPeer::Values(probes, error);
    QVERIFY2(error.isEmpty(), qPrintable(error));
    const QStringList simulatedAfter = SimulatedValues(simulated, probes);
    QVERIFY2(after == simulatedAfter, qPrintable(Lines(after, simulatedAfter)));
    for (const QString& value : expected)
        QVERIFY2(after.contains(value), qPrintable(value + " missing in" + Lines(after, simulatedAfter)));
    QVERIFY2(after != before, "the preset changed nothing in the camera");

    simulatedPage.reset();
    simulated->Close();
}

QTEST_MAIN(TestArvWidgetPresets)
#include "tst_arvwidget_presets.moc"
