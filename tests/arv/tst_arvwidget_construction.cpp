// The "Trigger IO" tab built on fake GigE Vision cameras of each naming
// generation, through the SDK's GenICam backend: it must look exactly as on
// the simulated model that the camera's description mirrors.

#include "ArvTabFixture.h"
#include "FakeGvCamera.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/SimCamera.h>

#include <QComboBox>
#include <QGroupBox>
#include <QtTest>

#include <memory>

class TestArvWidgetConstruction : public QObject {
    Q_OBJECT

private slots:
    void init();
    void shouldShowWhatTheSimulatedModelShows_data();
    void shouldShowWhatTheSimulatedModelShows();
};

void TestArvWidgetConstruction::init()
{
    if (!FakeGvCamera::BinaryAvailable())
        QSKIP("arv-fake-gv-camera-0.8 is not installed (Debian: aravis-tools-cli)");
}

void TestArvWidgetConstruction::shouldShowWhatTheSimulatedModelShows_data()
{
    QTest::addColumn<QString>("description");
    QTest::addColumn<QString>("model");
    QTest::addColumn<QStringList>("outputs");
    // Optional controls the camera family gets; the others must be absent.
    QTest::addColumn<QStringList>("optional");
    QTest::addColumn<int>("inputGroupHeight");

    QTest::newRow("generation 1 with routing")
        << FakeGvCamera::Gen1Line << "SIM-LINE-ROUTING" << QStringList{"Line1", "Line3"}
        << QStringList{"combo_ExposureMode", "combo_InputLineSelector", "cb_LineRouting"} << 470;
    QTest::newRow("generation 1 without routing")
        << FakeGvCamera::Gen1Sfnc << "SIM-LINE-SFNC" << QStringList{"Line1", "Line3"}
        << QStringList{"combo_ExposureMode"} << -1;
    QTest::newRow("generation 2") << FakeGvCamera::Gen2SyncOut << "SIM-SYNCOUT"
                                  << QStringList{"SyncOut1", "SyncOut2", "SyncOut3", "SyncOut4"}
                                  << QStringList{"combo_ExposureAuto"} << -1;
    QTest::newRow("generation 3") << FakeGvCamera::Gen3LineOut << "SIM-LINEOUT"
                                  << QStringList{"LineOut1", "LineOut2", "LineOut3", "LineOut4"}
                                  << QStringList{"combo_ExposureMode"} << -1;
}

void TestArvWidgetConstruction::shouldShowWhatTheSimulatedModelShows()
{
    QFETCH(QString, description);
    QFETCH(QString, model);
    QFETCH(QStringList, outputs);
    QFETCH(QStringList, optional);
    QFETCH(int, inputGroupHeight);

    ArvTabFixture genicam(description);
    QVERIFY2(genicam.Error().isEmpty(), qPrintable(genicam.Error()));

    ZMT::PkoAPI::Sim::SimCameraPtr simulated = ZMT::PkoAPI::Sim::CreateModel(model.toStdString());
    QVERIFY(simulated);
    QCOMPARE(simulated->Open(), 0);
    ArvTabFixture::Tab* simulatedTab = nullptr;
    QString error;
    std::unique_ptr<QWidget> simulatedPage =
        ArvTabFixture::BuildPage(ArvTabFixture::FeaturesOf(simulated), simulatedTab, error);
    QVERIFY2(simulatedPage, qPrintable(error));

    QCOMPARE(genicam.TabWidget()->Outputs(), outputs);
    const QStringList optionalControls{"combo_ExposureMode", "combo_ExposureAuto", "combo_InputLineSelector",
                                       "cb_LineRouting"};
    for (const QString& name : optionalControls) {
        QCOMPARE(genicam.TabWidget()->findChild<QWidget*>(name) != nullptr, optional.contains(name));
    }
    QGroupBox* inputGroup = genicam.TabWidget()->findChild<QGroupBox*>("gb_TriggerInput");
    QVERIFY(inputGroup);
    if (inputGroupHeight > 0) {
        QCOMPARE(inputGroup->minimumHeight(), inputGroupHeight);
        QCOMPARE(inputGroup->maximumHeight(), inputGroupHeight);
    }
    QComboBox* source = genicam.TabWidget()->findChild<QComboBox*>("combo_TriggerSource");
    QVERIFY(source);
    QVERIFY2(source->count() > 1, "the trigger sources were not read from the camera");

    const QStringList seen = ArvTabFixture::Snapshot(genicam.TabWidget());
    const QStringList expected = ArvTabFixture::Snapshot(simulatedTab);
    QVERIFY2(seen == expected, qPrintable(ArvTabFixture::Difference(seen, expected)));

    simulatedPage.reset();
    simulated->Close();
}

QTEST_MAIN(TestArvWidgetConstruction)
#include "tst_arvwidget_construction.moc"
