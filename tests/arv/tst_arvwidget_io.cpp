// The "Trigger IO" tab on fake GigE Vision cameras, driven as a user drives
// it: output rows of each naming generation (what the camera holds after the
// clicks, read over a second connection once the tab's is closed), changes
// made behind the tab's back, and a software trigger press giving one frame.

#include "ArvTabFixture.h"
#include "CameraPeer.h"
#include "FakeGvCamera.h"
#include "TestTime.h"

#include <PkoAPI/PkoAPI.h>

#include <QCheckBox>
#include <QComboBox>
#include <QPushButton>
#include <QtTest>

#include <cstddef>

namespace {

typedef QVector<CameraPeer::Probe> Probes;

Probes Selected(const QString& selector, const QStringList& entries, const QStringList& features)
{
    Probes probes;
    for (const QString& feature : features) {
        for (const QString& entry : entries)
            probes.append(CameraPeer::Probe{feature, selector, entry});
    }
    return probes;
}

// Writes text to the camera's feature through the SDK, past the tab: an
// entry name for enumerations, decimal for integers. The SDK's error code.
int WriteBehindTheTab(const ZMT::PkoAPI::CameraPtr& camera, const QString& name, const QString& text)
{
    ZMT::PkoAPI::FeaturePtr feature;
    int result = camera->GetFeatureByName(name.toLatin1().constData(), feature);
    if (result != 0)
        return result;
    ZMT::PkoAPI::PkoFeatureDataType type = ZMT::PkoAPI::PkoFeatureDataUnknown;
    result = feature->GetDataType(type);
    if (result != 0)
        return result;
    if (type == ZMT::PkoAPI::PkoFeatureDataInt)
        return feature->SetValue(text.toLongLong());
    return feature->SetValue(text.toLatin1().constData());
}

// The current entry of a selector as the SDK reads it; empty on failure.
QString CurrentEntry(const ZMT::PkoAPI::CameraPtr& camera, const QString& selector)
{
    ZMT::PkoAPI::FeaturePtr feature;
    if (camera->GetFeatureByName(selector.toLatin1().constData(), feature) != 0)
        return QString();
    char text[64] = {0};
    unsigned int length = sizeof(text);
    if (feature->GetValue(text, length) != 0)
        return QString();
    return QString::fromLatin1(text);
}

}  // namespace

class TestArvWidgetIo : public QObject {
    Q_OBJECT

private slots:
    void init();
    void shouldDriveTheLineOutputsOfGeneration1();
    void shouldDriveTheLevelMaskOutputs_data();
    void shouldDriveTheLevelMaskOutputs();
    void shouldShowChangesMadeBehindTheTabsBackWithinASecondAndAHalf_data();
    void shouldShowChangesMadeBehindTheTabsBackWithinASecondAndAHalf();
    void shouldShowAnOutputFollowingTheAcquisitionWithinASecondAndAHalf();
    void shouldDeliverExactlyOneFramePerSoftwareTriggerPress();
};

void TestArvWidgetIo::init()
{
    if (!FakeGvCamera::BinaryAvailable())
        QSKIP("arv-fake-gv-camera-0.8 is not installed (Debian: aravis-tools-cli)");
}

void TestArvWidgetIo::shouldDriveTheLineOutputsOfGeneration1()
{
    ArvTabFixture fixture(FakeGvCamera::Gen1Line);
    QVERIFY2(fixture.Error().isEmpty(), qPrintable(fixture.Error()));
    QVERIFY(ArvTabFixture::Show(fixture.Page()));
    QCOMPARE(fixture.TabWidget()->Outputs(), (QStringList{"Line1", "Line3"}));
    ArvTabFixture::Settle(fixture.TabWidget());
    QComboBox* source = fixture.Find<QComboBox>("combo_OutSource_1");
    QVERIFY(source);
    QCOMPARE(source->currentText(), QString("Off"));
    QVERIFY(!fixture.Find<QCheckBox>("cb_OutStatus_1")->isEnabled());
    QCOMPARE(fixture.Find<QComboBox>("combo_OutSource_0")->currentText(), QString("ExposureActive"));
    QVERIFY(!fixture.Find<QCheckBox>("cb_OutUserValue_0")->isEnabled());

    QVERIFY(ArvTabFixture::ChooseWithMouse(source, "Direct"));
    ArvTabFixture::Settle(fixture.TabWidget());
    QCheckBox* status = fixture.Find<QCheckBox>("cb_OutStatus_1");
    QVERIFY(status->isEnabled());
    ArvTabFixture::ClickCheckBox(status);
    ArvTabFixture::Settle(fixture.TabWidget());
    QVERIFY(fixture.Find<QCheckBox>("cb_OutStatus_1")->isChecked());

    // The inverter turns the stored level round on the connector, and the
    // row shows the level read back.
    ArvTabFixture::ClickCheckBox(fixture.Find<QCheckBox>("cb_OutInvert_1"));
    ArvTabFixture::Settle(fixture.TabWidget());
    QVERIFY(fixture.Find<QCheckBox>("cb_OutInvert_1")->isChecked());
    QVERIFY(!fixture.Find<QCheckBox>("cb_OutStatus_1")->isChecked());

    // A line following a user output shows that output's value.
    QVERIFY(ArvTabFixture::ChooseWithMouse(fixture.Find<QComboBox>("combo_OutSource_0"), "UserOutput2"));
    ArvTabFixture::Settle(fixture.TabWidget());
    QCheckBox* userValue = fixture.Find<QCheckBox>("cb_OutUserValue_0");
    QVERIFY(userValue->isEnabled());
    ArvTabFixture::ClickCheckBox(userValue);
    ArvTabFixture::Settle(fixture.TabWidget());
    QVERIFY(fixture.Find<QCheckBox>("cb_OutUserValue_0")->isChecked());

    fixture.Close();
    const Probes probes = Selected("LineSelector", {"Line1", "Line3"}, {"LineSource", "LineInverter", "LineStatus"}) +
                          Selected("UserOutputSelector", {"UserOutput2"}, {"UserOutputValue"});
    QString error;
    QCOMPARE(CameraPeer::Values(probes, error),
             (QStringList{"LineSource[Line1]=UserOutput2", "LineSource[Line3]=Direct", "LineInverter[Line1]=false",
                          "LineInverter[Line3]=true", "LineStatus[Line1]=true", "LineStatus[Line3]=false",
                          "UserOutputValue[UserOutput2]=true"}));
    QVERIFY2(error.isEmpty(), qPrintable(error));
}

void TestArvWidgetIo::shouldDriveTheLevelMaskOutputs_data()
{
    QTest::addColumn<QString>("description");
    QTest::addColumn<QString>("prefix");
    QTest::addColumn<QString>("firstSource");
    QTest::addColumn<QString>("secondSource");

    QTest::newRow("generation 2") << FakeGvCamera::Gen2SyncOut << "SyncOut"
                                  << "Exposing"
                                  << "Acquiring";
    QTest::newRow("generation 3") << FakeGvCamera::Gen3LineOut << "LineOut"
                                  << "Exposing"
                                  << "FrameTriggerReady";
}

void TestArvWidgetIo::shouldDriveTheLevelMaskOutputs()
{
    QFETCH(QString, description);
    QFETCH(QString, prefix);
    QFETCH(QString, firstSource);
    QFETCH(QString, secondSource);

    ArvTabFixture fixture(description);
    QVERIFY2(fixture.Error().isEmpty(), qPrintable(fixture.Error()));
    QVERIFY(ArvTabFixture::Show(fixture.Page()));
    const QStringList outputs{prefix + "1", prefix + "2", prefix + "3", prefix + "4"};
    QCOMPARE(fixture.TabWidget()->Outputs(), outputs);
    ArvTabFixture::Settle(fixture.TabWidget());
    QComboBox* source = fixture.Find<QComboBox>("combo_OutSource_0");
    QVERIFY(source);
    QCOMPARE(source->currentText(), firstSource);
    QVERIFY(!fixture.Find<QCheckBox>("cb_OutStatus_0")->isEnabled());
    QVERIFY(fixture.Find<QCheckBox>("cb_OutStatus_3")->isEnabled());

    QVERIFY(ArvTabFixture::ChooseWithMouse(source, "GPO"));
    ArvTabFixture::Settle(fixture.TabWidget());
    QVERIFY(fixture.Find<QCheckBox>("cb_OutStatus_0")->isEnabled());
    // One mask for all outputs: bit i for output i.
    ArvTabFixture::ClickCheckBox(fixture.Find<QCheckBox>("cb_OutStatus_3"));
    ArvTabFixture::Settle(fixture.TabWidget());
    ArvTabFixture::ClickCheckBox(fixture.Find<QCheckBox>("cb_OutStatus_0"));
    ArvTabFixture::Settle(fixture.TabWidget());
    QVERIFY(fixture.Find<QCheckBox>("cb_OutStatus_0")->isChecked());
    QVERIFY(fixture.Find<QCheckBox>("cb_OutStatus_3")->isChecked());
    // The idle second output inverted reads high.
    QVERIFY(!fixture.Find<QCheckBox>("cb_OutStatus_1")->isChecked());
    ArvTabFixture::ClickCheckBox(fixture.Find<QCheckBox>("cb_OutInvert_1"));
    ArvTabFixture::Settle(fixture.TabWidget());
    QVERIFY(fixture.Find<QCheckBox>("cb_OutInvert_1")->isChecked());
    QVERIFY(fixture.Find<QCheckBox>("cb_OutStatus_1")->isChecked());
    QVERIFY(!fixture.Find<QCheckBox>("cb_OutStatus_1")->isEnabled());

    fixture.Close();
    const Probes probes = Selected(prefix + "Selector", outputs, {prefix + "Source", prefix + "Polarity"}) +
                          Probes{CameraPeer::Probe{prefix + "Levels", QString(), QString()}};
    QString error;
    QCOMPARE(
        CameraPeer::Values(probes, error),
        (QStringList{prefix + "Source[" + outputs[0] + "]=GPO", prefix + "Source[" + outputs[1] + "]=" + secondSource,
                     prefix + "Source[" + outputs[2] + "]=GPO", prefix + "Source[" + outputs[3] + "]=GPO",
                     prefix + "Polarity[" + outputs[0] + "]=Normal", prefix + "Polarity[" + outputs[1] + "]=Invert",
                     prefix + "Polarity[" + outputs[2] + "]=Normal", prefix + "Polarity[" + outputs[3] + "]=Normal",
                     prefix + "Levels=11"}));
    QVERIFY2(error.isEmpty(), qPrintable(error));
}

void TestArvWidgetIo::shouldShowChangesMadeBehindTheTabsBackWithinASecondAndAHalf_data()
{
    QTest::addColumn<QString>("description");
    // Written at the selector entry the tab left current.
    QTest::addColumn<QString>("selector");
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QString>("feature");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("control");
    QTest::addColumn<QString>("shown");

    QTest::newRow("trigger source, generation 1") << FakeGvCamera::Gen1Line << "TriggerSelector"
                                                  << "FrameStart"
                                                  << "TriggerSource"
                                                  << "Software"
                                                  << "combo_TriggerSource"
                                                  << "Software";
    QTest::newRow("acquisition mode, generation 1 without routing")
        << FakeGvCamera::Gen1Sfnc << QString() << QString() << "AcquisitionMode"
        << "MultiFrame"
        << "combo_AcquisitionMode"
        << "MultiFrame";
    QTest::newRow("output source, generation 2") << FakeGvCamera::Gen2SyncOut << "SyncOutSelector"
                                                 << "SyncOut1"
                                                 << "SyncOutSource"
                                                 << "GPO"
                                                 << "combo_OutSource_0"
                                                 << "GPO";
    QTest::newRow("exposure auto, generation 2")
        << FakeGvCamera::Gen2SyncOut << QString() << QString() << "ExposureAuto"
        << "other"
        << "combo_ExposureAuto"
        << "other";
    QTest::newRow("output levels, generation 2")
        << FakeGvCamera::Gen2SyncOut << QString() << QString() << "SyncOutLevels"
        << "8"
        << "cb_OutStatus_3"
        << "checked";
    QTest::newRow("exposure mode, generation 3")
        << FakeGvCamera::Gen3LineOut << QString() << QString() << "ExposureMode"
        << "TriggerWidth"
        << "combo_ExposureMode"
        << "TriggerWidth";
}

void TestArvWidgetIo::shouldShowChangesMadeBehindTheTabsBackWithinASecondAndAHalf()
{
    QFETCH(QString, description);
    QFETCH(QString, selector);
    QFETCH(QString, entry);
    QFETCH(QString, feature);
    QFETCH(QString, value);
    QFETCH(QString, control);
    QFETCH(QString, shown);

    ArvTabFixture fixture(description);
    QVERIFY2(fixture.Error().isEmpty(), qPrintable(fixture.Error()));
    QVERIFY(ArvTabFixture::Show(fixture.Page()));
    // Found anew each time: a refresh may build the output rows anew.
    auto seen = [&fixture, control]() -> QString {
        QWidget* widget = fixture.Find<QWidget>(control);
        if (QComboBox* combo = qobject_cast<QComboBox*>(widget))
            return combo->currentText();
        if (QCheckBox* box = qobject_cast<QCheckBox*>(widget))
            return box->isChecked() ? "checked" : "unchecked";
        return QString("no ") + control;
    };
    ArvTabFixture::Settle(fixture.TabWidget());
    QVERIFY2(seen() != shown, qPrintable(control + " already shows " + shown));
    if (!selector.isEmpty())
        QCOMPARE(CurrentEntry(fixture.Camera(), selector), entry);

    QCOMPARE(WriteBehindTheTab(fixture.Camera(), feature, value), 0);
    QTRY_COMPARE_WITH_TIMEOUT(seen(), shown, TestSupport::Scaled(1500));
}

// The camera changes an output by itself: the second output follows
// "Acquiring", and starting the acquisition raises it.
void TestArvWidgetIo::shouldShowAnOutputFollowingTheAcquisitionWithinASecondAndAHalf()
{
    ArvTabFixture fixture(FakeGvCamera::Gen2SyncOut);
    QVERIFY2(fixture.Error().isEmpty(), qPrintable(fixture.Error()));
    QVERIFY(ArvTabFixture::Show(fixture.Page()));
    QComboBox* source = fixture.TabWidget()->findChild<QComboBox*>("combo_OutSource_1");
    QCheckBox* status = fixture.TabWidget()->findChild<QCheckBox*>("cb_OutStatus_1");
    QVERIFY(source && status);
    QCOMPARE(source->currentText(), QString("Acquiring"));
    QTest::qWait(500);
    QVERIFY(!status->isChecked());

    QCOMPARE(fixture.Camera()->StartAcquisition(), 0);
    QTRY_VERIFY_WITH_TIMEOUT(status->isChecked(), TestSupport::Scaled(1500));
    QCOMPARE(fixture.Camera()->StopAcquisition(), 0);
    QTRY_VERIFY_WITH_TIMEOUT(!status->isChecked(), TestSupport::Scaled(1500));
}

void TestArvWidgetIo::shouldDeliverExactlyOneFramePerSoftwareTriggerPress()
{
    ArvTabFixture fixture(FakeGvCamera::Gen1Line);
    QVERIFY2(fixture.Error().isEmpty(), qPrintable(fixture.Error()));
    QVERIFY(ArvTabFixture::Show(fixture.Page()));
    QComboBox* source = fixture.TabWidget()->findChild<QComboBox*>("combo_TriggerSource");
    QComboBox* mode = fixture.TabWidget()->findChild<QComboBox*>("combo_TriggerMode");
    QPushButton* trigger = fixture.TabWidget()->findChild<QPushButton*>("pb_SWTrigger");
    QVERIFY(source && mode && trigger);
    ArvTabFixture::Settle(fixture.TabWidget());
    QVERIFY(!trigger->isEnabled());
    QVERIFY(ArvTabFixture::ChooseWithMouse(source, "Software"));
    QTRY_VERIFY_WITH_TIMEOUT(trigger->isEnabled(), TestSupport::Scaled(1500));
    QVERIFY(ArvTabFixture::ChooseWithMouse(mode, "On"));
    ArvTabFixture::Settle(fixture.TabWidget());
    QCOMPARE(source->currentText(), QString("Software"));
    QCOMPARE(mode->currentText(), QString("On"));

    const ZMT::PkoAPI::CameraPtr& camera = fixture.Camera();
    QCOMPARE(camera->StartAcquisition(), 0);
    // In trigger mode the camera sends nothing by itself.
    QTest::qWait(300);
    const unsigned long long start = camera->FramesDelivered();
    QCOMPARE(start, 0ULL);
    for (unsigned long long press = 1; press <= 3; ++press) {
        QTest::mouseClick(trigger, Qt::LeftButton);
        QTRY_COMPARE_WITH_TIMEOUT(camera->FramesDelivered(), start + press, TestSupport::Scaled(2000));
        // No second frame follows the same press.
        QTest::qWait(150);
        QCOMPARE(camera->FramesDelivered(), start + press);
    }
    ZMT::PkoAPI::Frame frame;
    QCOMPARE(camera->GetLatestFrame(frame), 0);
    QVERIFY(frame.width > 0 && frame.height > 0);
    QCOMPARE(frame.mono8.size(), static_cast<std::size_t>(frame.width) * frame.height);
    QCOMPARE(camera->StopAcquisition(), 0);
}

QTEST_MAIN(TestArvWidgetIo)
#include "tst_arvwidget_io.moc"
