#include "RecordingObserver.h"
#include "SdkTestSupport.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/SimCamera.h>

#include <QtTest>

using namespace ZMT::PkoAPI;
using namespace ZMT::PkoAPI::Sim;

namespace {

const int kTimeoutMs = 5000;

QString Joined(const std::vector<std::string>& entries)
{
    QStringList list;
    for (const std::string& entry : entries)
        list << QString::fromStdString(entry);
    return list.join(",");
}

long long IntOf(const FeaturePtr& feature)
{
    long long value = -999;
    feature->GetValue(value);
    return value;
}

}  // namespace

class TestSimModels : public QObject {
    Q_OBJECT

private:
    SimCameraPtr m_Camera;

    FeaturePtr F(const char* name) { return FeatureOf(m_Camera, name); }
    void Open(const QString& id)
    {
        m_Camera = OpenModel(id.toStdString());
        QVERIFY2(m_Camera, qPrintable(id));
    }
    int Set(const char* name, const char* value) { return F(name)->SetValue(value); }

private slots:
    void cleanup() { m_Camera.reset(); }

    void shouldListTheFiveModels()
    {
        QCOMPARE(ModelIds(), (std::vector<std::string>{"SIM-LINE-ROUTING", "SIM-LINE-SFNC", "SIM-SYNCOUT",
                                                       "SIM-LINEOUT", "SIM-NO-TRIGGER"}));
        QVERIFY(!CreateModel("SIM-UNKNOWN"));
        QVERIFY(!CreateModel(""));
    }

    void shouldMakeEachModelClosedWithItsIdAndAVendorName_data()
    {
        QTest::addColumn<QString>("id");
        for (const std::string& id : ModelIds())
            QTest::newRow(id.c_str()) << QString::fromStdString(id);
    }

    void shouldMakeEachModelClosedWithItsIdAndAVendorName()
    {
        QFETCH(QString, id);
        SimCameraPtr camera = CreateModel(id.toStdString());
        QVERIFY(camera);
        QVERIFY(!camera->IsOpen());
        std::string text;
        QCOMPARE(camera->GetID(text), int(PkoErrorSuccess));
        QCOMPARE(QString::fromStdString(text), id);
        QCOMPARE(camera->Open(), int(PkoErrorSuccess));
        QCOMPARE(TextOf(FeatureOf(camera, "DeviceVendorName")), std::string("Pelko Simulation"));
        QCOMPARE(camera->GetModel(text), int(PkoErrorSuccess));
        QCOMPARE(TextOf(FeatureOf(camera, "DeviceModelName")), text);
        QVERIFY(!TextOf(FeatureOf(camera, "DeviceSerialNumber")).empty());
        std::vector<FeaturePtr> features;
        QCOMPARE(camera->GetFeatures(features), int(PkoErrorSuccess));
        QVERIFY(features.size() >= 30);
        FeaturePtr count = FeatureOf(camera, "AcquisitionFrameCount");
        long long minimum = 0, maximum = 0, increment = 0;
        QCOMPARE(count->GetRange(minimum, maximum), int(PkoErrorSuccess));
        QCOMPARE(count->GetIncrement(increment), int(PkoErrorSuccess));
        QCOMPARE(minimum, 1LL);
        QCOMPARE(maximum, 65535LL);
        QCOMPARE(increment, 1LL);
        QCOMPARE(IntOf(count), 1LL);
        PkoFeatureDataType type = PkoFeatureDataUnknown;
        QCOMPARE(FeatureOf(camera, "DeviceTemperature")->GetDataType(type), int(PkoErrorSuccess));
        QCOMPARE(type, PkoFeatureDataFloat);
        QVERIFY(!IsWritable(FeatureOf(camera, "DeviceTemperature")));
        QCOMPARE(FeatureOf(camera, "ExposureTime")->GetDataType(type), int(PkoErrorSuccess));
        QCOMPARE(type, PkoFeatureDataFloat);
        // Clients snap floats onto the increment before writing.
        for (const FeaturePtr& feature : features) {
            if (feature->GetDataType(type) != PkoErrorSuccess || type != PkoFeatureDataFloat)
                continue;
            double increment = 0.0;
            QCOMPARE(feature->GetIncrement(increment), int(PkoErrorSuccess));
            QVERIFY2(increment > 0.0, NameOf(feature).c_str());
        }
    }

    void shouldHaveTheFeaturesOfItsFamily_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("feature");
        const QStringList common{"DeviceVendorName",
                                 "DeviceModelName",
                                 "DeviceSerialNumber",
                                 "Width",
                                 "Height",
                                 "OffsetX",
                                 "OffsetY",
                                 "PixelFormat",
                                 "ExposureTime",
                                 "Gain",
                                 "AcquisitionFrameRate",
                                 "DeviceTemperature",
                                 "AcquisitionStart",
                                 "AcquisitionStop",
                                 "AcquisitionMode",
                                 "AcquisitionFrameCount"};
        const QStringList trigger{"TriggerSelector", "TriggerMode", "TriggerSource", "TriggerActivation",
                                  "TriggerSoftware"};
        const QStringList lines{"LineSelector", "LineMode",           "LineSource",      "LineInverter",
                                "LineStatus",   "UserOutputSelector", "UserOutputValue", "ExposureMode"};
        QMap<QString, QStringList> own;
        own["SIM-LINE-ROUTING"] = common + trigger + lines + QStringList{"LineRouting", "ExposureAuto"};
        own["SIM-LINE-SFNC"] = common + trigger + lines;
        own["SIM-SYNCOUT"] =
            common + trigger +
            QStringList{"SyncOutSelector", "SyncOutSource", "SyncOutPolarity", "SyncOutLevels", "ExposureAuto"};
        own["SIM-LINEOUT"] =
            common + trigger +
            QStringList{"LineOutSelector", "LineOutSource", "LineOutPolarity", "LineOutLevels", "ExposureMode"};
        own["SIM-NO-TRIGGER"] = common;
        for (auto it = own.cbegin(); it != own.cend(); ++it) {
            for (const QString& feature : it.value())
                QTest::newRow(qPrintable(it.key() + " " + feature)) << it.key() << feature;
        }
    }

    void shouldHaveTheFeaturesOfItsFamily()
    {
        QFETCH(QString, id);
        QFETCH(QString, feature);
        Open(id);
        QVERIFY2(F(feature.toLatin1().constData()), qPrintable(feature));
    }

    void shouldLackTheFeaturesOfOtherFamilies_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("feature");
        QMap<QString, QStringList> absent;
        absent["SIM-LINE-ROUTING"] =
            QStringList{"LineOutLevels", "SyncOutLevels", "SyncOutSelector", "LineOutSelector"};
        absent["SIM-LINE-SFNC"] = QStringList{"LineRouting", "LineOutLevels", "SyncOutLevels"};
        absent["SIM-SYNCOUT"] =
            QStringList{"LineSelector", "LineMode", "ExposureMode", "LineOutLevels", "UserOutputSelector"};
        absent["SIM-LINEOUT"] = QStringList{"LineSelector", "SyncOutLevels", "SyncOutSelector", "UserOutputSelector"};
        for (auto it = absent.cbegin(); it != absent.cend(); ++it) {
            for (const QString& feature : it.value())
                QTest::newRow(qPrintable(it.key() + " " + feature)) << it.key() << feature;
        }
    }

    void shouldLackTheFeaturesOfOtherFamilies()
    {
        QFETCH(QString, id);
        QFETCH(QString, feature);
        Open(id);
        QVERIFY2(!F(feature.toLatin1().constData()), qPrintable(feature));
    }

    void shouldHaveNoTriggerOrLineFeaturesWithoutTrigger()
    {
        Open("SIM-NO-TRIGGER");
        std::vector<FeaturePtr> features;
        QCOMPARE(m_Camera->GetFeatures(features), int(PkoErrorSuccess));
        for (const FeaturePtr& feature : features) {
            const QString name = QString::fromStdString(NameOf(feature));
            for (const char* prefix : {"Trigger", "Line", "SyncOut", "UserOutput"})
                QVERIFY2(!name.startsWith(prefix), qPrintable(name));
        }
    }

    void shouldOfferTheEntriesOfItsFamily_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("feature");
        QTest::addColumn<QString>("entries");
        const QString lineSources =
            "Off,ExposureActive,FrameTriggerWait,Timer0Active,UserOutput0,UserOutput1,"
            "UserOutput2,Direct";
        const QString sfncActivations = "RisingEdge,FallingEdge,AnyEdge,LevelHigh,LevelLow";
        QTest::newRow("1 trigger selector") << "SIM-LINE-ROUTING"
                                            << "TriggerSelector"
                                            << "FrameStart,AcquisitionStart,ExposureStart,ExposureActive";
        QTest::newRow("1 trigger source") << "SIM-LINE-ROUTING"
                                          << "TriggerSource"
                                          << "InputLines,Line0,Line1,Line2,Line3,Software";
        QTest::newRow("1 activation") << "SIM-LINE-ROUTING"
                                      << "TriggerActivation"
                                      << "RisingEdge,FallingEdge,AnyEdge,HighLevel,LowLevel";
        QTest::newRow("1 trigger mode") << "SIM-LINE-ROUTING"
                                        << "TriggerMode"
                                        << "Off,On";
        QTest::newRow("1 exposure mode") << "SIM-LINE-ROUTING"
                                         << "ExposureMode"
                                         << "Timed,TriggerWidth";
        QTest::newRow("1 exposure auto") << "SIM-LINE-ROUTING"
                                         << "ExposureAuto"
                                         << "Off,Once,Continuous";
        QTest::newRow("1 line selector") << "SIM-LINE-ROUTING"
                                         << "LineSelector"
                                         << "Line0,Line1,Line2,Line3";
        QTest::newRow("1 line mode") << "SIM-LINE-ROUTING"
                                     << "LineMode"
                                     << "Input,Output";
        QTest::newRow("1 line source") << "SIM-LINE-ROUTING"
                                       << "LineSource" << lineSources;
        QTest::newRow("1 line routing") << "SIM-LINE-ROUTING"
                                        << "LineRouting"
                                        << "Off,Trigger";
        QTest::newRow("1 user outputs") << "SIM-LINE-ROUTING"
                                        << "UserOutputSelector"
                                        << "UserOutput0,UserOutput1,UserOutput2";
        QTest::newRow("1 acquisition mode") << "SIM-LINE-ROUTING"
                                            << "AcquisitionMode"
                                            << "Continuous,SingleFrame,MultiFrame";
        QTest::newRow("2 trigger selector") << "SIM-LINE-SFNC"
                                            << "TriggerSelector"
                                            << "FrameStart,AcquisitionStart";
        QTest::newRow("2 trigger source") << "SIM-LINE-SFNC"
                                          << "TriggerSource"
                                          << "Line0,Line1,Line2,Line3,Software";
        QTest::newRow("2 activation") << "SIM-LINE-SFNC"
                                      << "TriggerActivation" << sfncActivations;
        QTest::newRow("2 exposure mode") << "SIM-LINE-SFNC"
                                         << "ExposureMode"
                                         << "Timed,TriggerWidth";
        QTest::newRow("2 line selector") << "SIM-LINE-SFNC"
                                         << "LineSelector"
                                         << "Line0,Line1,Line2,Line3";
        QTest::newRow("2 line source") << "SIM-LINE-SFNC"
                                       << "LineSource" << lineSources;
        QTest::newRow("3 sync out selector") << "SIM-SYNCOUT"
                                             << "SyncOutSelector"
                                             << "SyncOut1,SyncOut2,SyncOut3,SyncOut4";
        QTest::newRow("3 sync out source")
            << "SIM-SYNCOUT"
            << "SyncOutSource"
            << "GPO,AcquisitionTriggerReady,FrameTriggerReady,FrameTrigger,Exposing,FrameReadout,Acquiring,SyncIn1,"
               "SyncIn2";
        QTest::newRow("3 polarity") << "SIM-SYNCOUT"
                                    << "SyncOutPolarity"
                                    << "Normal,Invert";
        QTest::newRow("3 exposure auto") << "SIM-SYNCOUT"
                                         << "ExposureAuto"
                                         << "Off,Once,Continuous,other";
        QTest::newRow("3 trigger selector") << "SIM-SYNCOUT"
                                            << "TriggerSelector"
                                            << "FrameStart,AcquisitionStart";
        QTest::newRow("3 trigger source") << "SIM-SYNCOUT"
                                          << "TriggerSource"
                                          << "Freerun,Line1,Line2,FixedRate,Software";
        QTest::newRow("3 activation") << "SIM-SYNCOUT"
                                      << "TriggerActivation" << sfncActivations;
        QTest::newRow("4 line out selector") << "SIM-LINEOUT"
                                             << "LineOutSelector"
                                             << "LineOut1,LineOut2,LineOut3,LineOut4";
        QTest::newRow("4 line out source")
            << "SIM-LINEOUT"
            << "LineOutSource"
            << "GPO,AcquisitionTriggerReady,FrameTriggerReady,Exposing,FrameReadout,Acquiring,LineIn1,LineIn2";
        QTest::newRow("4 polarity") << "SIM-LINEOUT"
                                    << "LineOutPolarity"
                                    << "Normal,Invert";
        QTest::newRow("4 exposure mode") << "SIM-LINEOUT"
                                         << "ExposureMode"
                                         << "Timed,TriggerWidth";
        QTest::newRow("4 trigger selector") << "SIM-LINEOUT"
                                            << "TriggerSelector"
                                            << "FrameStart,AcquisitionStart";
        QTest::newRow("4 trigger source") << "SIM-LINEOUT"
                                          << "TriggerSource"
                                          << "Line1,Line2,Software";
        QTest::newRow("4 activation") << "SIM-LINEOUT"
                                      << "TriggerActivation" << sfncActivations;
        QTest::newRow("5 acquisition mode") << "SIM-NO-TRIGGER"
                                            << "AcquisitionMode"
                                            << "Continuous,SingleFrame,MultiFrame";
    }

    void shouldOfferTheEntriesOfItsFamily()
    {
        QFETCH(QString, id);
        QFETCH(QString, feature);
        QFETCH(QString, entries);
        Open(id);
        QCOMPARE(Joined(EntriesOf(F(feature.toLatin1().constData()))), entries);
    }

    void shouldLetOnlyBidirectionalLinesChangeTheirMode_data()
    {
        QTest::addColumn<QString>("id");
        QTest::newRow("routing") << "SIM-LINE-ROUTING";
        QTest::newRow("sfnc") << "SIM-LINE-SFNC";
    }

    void shouldLetOnlyBidirectionalLinesChangeTheirMode()
    {
        QFETCH(QString, id);
        Open(id);
        QCOMPARE(Set("LineSelector", "Line0"), int(PkoErrorSuccess));
        QCOMPARE(TextOf(F("LineMode")), std::string("Input"));
        QVERIFY(!IsWritable(F("LineMode")));
        QCOMPARE(Joined(AvailableEntriesOf(F("LineMode"))), QString("Input"));
        QCOMPARE(Set("LineMode", "Output"), int(PkoErrorInvalidAccess));

        QCOMPARE(Set("LineSelector", "Line1"), int(PkoErrorSuccess));
        QCOMPARE(TextOf(F("LineMode")), std::string("Output"));
        QVERIFY(!IsWritable(F("LineMode")));
        QCOMPARE(Joined(AvailableEntriesOf(F("LineMode"))), QString("Output"));

        for (const char* line : {"Line2", "Line3"}) {
            QCOMPARE(Set("LineSelector", line), int(PkoErrorSuccess));
            QVERIFY(IsWritable(F("LineMode")));
            QCOMPARE(Joined(AvailableEntriesOf(F("LineMode"))), QString("Input,Output"));
        }
        QCOMPARE(Set("LineSelector", "Line2"), int(PkoErrorSuccess));
        QCOMPARE(Set("LineMode", "Output"), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText("LineMode", "Line2"), std::string("Output"));
        QCOMPARE(m_Camera->ValueText("LineMode", "Line0"), std::string("Input"));
    }

    void shouldLetLineStatusBeWrittenOnlyOnDirectlyDrivenOutputs()
    {
        Open("SIM-LINE-SFNC");
        QCOMPARE(Set("LineSelector", "Line0"), int(PkoErrorSuccess));
        QVERIFY(!IsWritable(F("LineStatus")));
        QVERIFY(!IsWritable(F("LineSource")));
        QCOMPARE(F("LineStatus")->SetValue(true), int(PkoErrorInvalidAccess));
        QCOMPARE(Set("LineSource", "Direct"), int(PkoErrorInvalidAccess));

        QCOMPARE(Set("LineSelector", "Line1"), int(PkoErrorSuccess));
        QCOMPARE(TextOf(F("LineSource")), std::string("ExposureActive"));
        QVERIFY(!IsWritable(F("LineStatus")));
        QCOMPARE(F("LineStatus")->SetValue(true), int(PkoErrorInvalidAccess));
        QCOMPARE(Set("LineSource", "Direct"), int(PkoErrorSuccess));
        QVERIFY(IsWritable(F("LineStatus")));
        QCOMPARE(F("LineStatus")->SetValue(true), int(PkoErrorSuccess));
        bool status = false;
        QCOMPARE(F("LineStatus")->GetValue(status), int(PkoErrorSuccess));
        QVERIFY(status);
        QCOMPARE(F("LineInverter")->SetValue(true), int(PkoErrorSuccess));
        QCOMPARE(F("LineStatus")->GetValue(status), int(PkoErrorSuccess));
        QVERIFY(!status);
        // Another source drives the line low whatever was written.
        QCOMPARE(F("LineInverter")->SetValue(false), int(PkoErrorSuccess));
        QCOMPARE(Set("LineSource", "ExposureActive"), int(PkoErrorSuccess));
        QCOMPARE(F("LineStatus")->GetValue(status), int(PkoErrorSuccess));
        QVERIFY(!status);
    }

    void shouldShowTheUserOutputALineFollowsAndNotifyItsStatus()
    {
        Open("SIM-LINE-ROUTING");
        auto* recorder = new RecordingObserver;
        IFeatureObserverPtr observer(recorder);
        QCOMPARE(Set("LineSelector", "Line3"), int(PkoErrorSuccess));
        QCOMPARE(Set("LineSource", "UserOutput1"), int(PkoErrorSuccess));
        QCOMPARE(F("LineStatus")->RegisterObserver(observer), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText("LineStatus"), std::string("false"));
        QCOMPARE(Set("UserOutputSelector", "UserOutput1"), int(PkoErrorSuccess));
        QCOMPARE(F("UserOutputValue")->SetValue(true), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText("LineStatus", "Line3"), std::string("true"));
        QCOMPARE(m_Camera->ValueText("LineStatus", "Line1"), std::string("false"));
        QVERIFY(!IsWritable(F("LineStatus")));
        QVERIFY(m_Camera->WaitForNotifications(kTimeoutMs));
        QVERIFY(recorder->CountFor("LineStatus") >= 1);
        recorder->Clear();
        QCOMPARE(F("LineInverter")->SetValue(true), int(PkoErrorSuccess));
        QVERIFY(m_Camera->WaitForNotifications(kTimeoutMs));
        QCOMPARE(recorder->CountFor("LineStatus"), 1);
        QCOMPARE(m_Camera->ValueText("LineStatus", "Line3"), std::string("false"));
    }

    void shouldShowInputLevelsSetByTheCamera()
    {
        Open("SIM-LINE-SFNC");
        QCOMPARE(m_Camera->ChangeFromCamera("LineStatus", "true", "Line0"), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText("LineStatus", "Line0"), std::string("true"));
        QCOMPARE(m_Camera->ValueText("LineStatus", "Line2"), std::string("false"));
        bool status = false;
        QCOMPARE(F("LineStatus")->GetValue(status), int(PkoErrorSuccess));
        QVERIFY(status);
    }

    void shouldRouteOnlyInputLines()
    {
        Open("SIM-LINE-ROUTING");
        QCOMPARE(Set("LineSelector", "Line0"), int(PkoErrorSuccess));
        QVERIFY(IsWritable(F("LineRouting")));
        QCOMPARE(Set("LineRouting", "Trigger"), int(PkoErrorSuccess));
        QCOMPARE(Set("LineSelector", "Line1"), int(PkoErrorSuccess));
        QVERIFY(!IsWritable(F("LineRouting")));
        QCOMPARE(Set("LineRouting", "Trigger"), int(PkoErrorInvalidAccess));
        QCOMPARE(m_Camera->ValueText("LineRouting", "Line0"), std::string("Trigger"));
        QCOMPARE(m_Camera->ValueText("LineRouting", "Line1"), std::string("Off"));
    }

    void shouldOfferTheExposureActiveTriggerOnlyForTriggerWidthExposure()
    {
        Open("SIM-LINE-ROUTING");
        auto* recorder = new RecordingObserver;
        IFeatureObserverPtr observer(recorder);
        QCOMPARE(F("TriggerSelector")->RegisterObserver(observer), int(PkoErrorSuccess));
        QCOMPARE(Joined(AvailableEntriesOf(F("TriggerSelector"))),
                 QString("FrameStart,AcquisitionStart,ExposureStart"));
        QCOMPARE(Set("TriggerSelector", "ExposureActive"), int(PkoErrorInvalidValue));

        QCOMPARE(Set("ExposureMode", "TriggerWidth"), int(PkoErrorSuccess));
        QCOMPARE(Joined(AvailableEntriesOf(F("TriggerSelector"))), QString("ExposureActive"));
        QCOMPARE(TextOf(F("TriggerSelector")), std::string("ExposureActive"));
        QVERIFY(m_Camera->WaitForNotifications(kTimeoutMs));
        QCOMPARE(recorder->CountFor("TriggerSelector"), 1);

        QCOMPARE(Set("ExposureMode", "Timed"), int(PkoErrorSuccess));
        QCOMPARE(TextOf(F("TriggerSelector")), std::string("FrameStart"));
    }

    void shouldKeepTriggerSettingsPerSelectorEntry()
    {
        Open("SIM-LINE-SFNC");
        QCOMPARE(Set("TriggerSelector", "FrameStart"), int(PkoErrorSuccess));
        QCOMPARE(Set("TriggerMode", "On"), int(PkoErrorSuccess));
        QCOMPARE(Set("TriggerSource", "Software"), int(PkoErrorSuccess));
        QCOMPARE(Set("TriggerSelector", "AcquisitionStart"), int(PkoErrorSuccess));
        QCOMPARE(TextOf(F("TriggerMode")), std::string("Off"));
        QCOMPARE(TextOf(F("TriggerSource")), std::string("Line0"));
        QCOMPARE(m_Camera->ValueText("TriggerSource", "FrameStart"), std::string("Software"));
    }

    void shouldLockTheInputConfigurationWhileAcquiring_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("locked");
        const QString common =
            "TriggerMode,TriggerSource,TriggerActivation,AcquisitionMode,AcquisitionFrameCount,"
            "Width,Height,PixelFormat";
        QTest::newRow("routing") << "SIM-LINE-ROUTING" << common + ",ExposureMode";
        QTest::newRow("sfnc") << "SIM-LINE-SFNC" << common + ",ExposureMode";
        QTest::newRow("syncout") << "SIM-SYNCOUT" << common;
        QTest::newRow("lineout") << "SIM-LINEOUT" << common + ",ExposureMode";
    }

    void shouldLockTheInputConfigurationWhileAcquiring()
    {
        QFETCH(QString, id);
        QFETCH(QString, locked);
        Open(id);
        const QStringList names = locked.split(",");
        for (const QString& name : names)
            QVERIFY2(IsWritable(F(name.toLatin1().constData())), qPrintable(name));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        for (const QString& name : names)
            QVERIFY2(!IsWritable(F(name.toLatin1().constData())), qPrintable(name));
        QVERIFY(IsWritable(F("TriggerSelector")));
        QCOMPARE(Set("TriggerMode", "On"), int(PkoErrorInvalidAccess));
        QCOMPARE(m_Camera->StopAcquisition(), int(PkoErrorSuccess));
        for (const QString& name : names)
            QVERIFY2(IsWritable(F(name.toLatin1().constData())), qPrintable(name));
    }

    void shouldTakeWrittenOutputBitsOnlyForGpoOutputs_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("prefix");
        QTest::newRow("syncout") << "SIM-SYNCOUT"
                                 << "SyncOut";
        QTest::newRow("lineout") << "SIM-LINEOUT"
                                 << "LineOut";
    }

    void shouldTakeWrittenOutputBitsOnlyForGpoOutputs()
    {
        QFETCH(QString, id);
        QFETCH(QString, prefix);
        Open(id);
        const QByteArray selector = (prefix + "Selector").toLatin1();
        const QByteArray polarity = (prefix + "Polarity").toLatin1();
        const QByteArray levels = (prefix + "Levels").toLatin1();
        FeaturePtr mask = F(levels.constData());
        QVERIFY(IsWritable(mask));
        QCOMPARE(IntOf(mask), 0LL);
        // Outputs 3 and 4 are GPO by default, 1 and 2 follow camera signals.
        QCOMPARE(mask->SetValue(15LL), int(PkoErrorSuccess));
        QCOMPARE(IntOf(mask), 12LL);
        QCOMPARE(mask->SetValue(16LL), int(PkoErrorInvalidValue));
        QCOMPARE(Set(selector.constData(), (prefix + "1").toLatin1().constData()), int(PkoErrorSuccess));
        QCOMPARE(Set(polarity.constData(), "Invert"), int(PkoErrorSuccess));
        QCOMPARE(IntOf(mask), 13LL);
        QCOMPARE(Set(selector.constData(), (prefix + "3").toLatin1().constData()), int(PkoErrorSuccess));
        QCOMPARE(Set(polarity.constData(), "Invert"), int(PkoErrorSuccess));
        QCOMPARE(IntOf(mask), 9LL);
        QCOMPARE(Set(selector.constData(), (prefix + "1").toLatin1().constData()), int(PkoErrorSuccess));
        QCOMPARE(Set((prefix + "Source").toLatin1().constData(), "GPO"), int(PkoErrorSuccess));
        QCOMPARE(IntOf(mask), 8LL);  // stored bit 0 is 1, inverted
    }

    void shouldShowTheAcquisitionOnAnOutputThatFollowsIt()
    {
        Open("SIM-SYNCOUT");
        // Nothing moves by itself: SyncOut1 shows the first exposure until the clock moves.
        m_Camera->UseManualClock();
        auto* recorder = new RecordingObserver;
        IFeatureObserverPtr observer(recorder);
        QCOMPARE(F("SyncOutLevels")->RegisterObserver(observer), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText("SyncOutSource", "SyncOut1"), std::string("Exposing"));
        QCOMPARE(m_Camera->ValueText("SyncOutSource", "SyncOut2"), std::string("Acquiring"));
        QCOMPARE(m_Camera->ValueText("SyncOutLevels"), std::string("0"));
        QCOMPARE(m_Camera->StartAcquisition(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText("SyncOutLevels"), std::string("3"));
        QVERIFY(m_Camera->WaitForNotifications(kTimeoutMs));
        QCOMPARE(recorder->CountFor("SyncOutLevels"), 1);
        QCOMPARE(m_Camera->StopAcquisition(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText("SyncOutLevels"), std::string("0"));
    }

    void shouldShowInputsOnOutputsThatFollowThem_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<QString>("input");
        QTest::newRow("syncout") << "SIM-SYNCOUT"
                                 << "SyncOut"
                                 << "SyncIn";
        QTest::newRow("lineout") << "SIM-LINEOUT"
                                 << "LineOut"
                                 << "LineIn";
    }

    void shouldShowInputsOnOutputsThatFollowThem()
    {
        QFETCH(QString, id);
        QFETCH(QString, prefix);
        QFETCH(QString, input);
        Open(id);
        const std::string levels = (prefix + "Levels").toStdString();
        QCOMPARE(Set((prefix + "Selector").toLatin1().constData(), (prefix + "1").toLatin1().constData()),
                 int(PkoErrorSuccess));
        QCOMPARE(Set((prefix + "Source").toLatin1().constData(), (input + "2").toLatin1().constData()),
                 int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText(levels), std::string("0"));
        QCOMPARE(m_Camera->ChangeFromCamera((input + "Levels").toStdString(), "2"), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText(levels), std::string("1"));
        QCOMPARE(m_Camera->ChangeFromCamera((input + "Levels").toStdString(), "1"), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText(levels), std::string("0"));
        QVERIFY(!IsWritable(F((input + "Levels").toLatin1().constData())));
    }

    void shouldRefuseImageSizesOffTheGrid()
    {
        Open("SIM-LINE-ROUTING");
        QCOMPARE(F("Width")->SetValue(1279LL), int(PkoErrorInvalidValue));
        QCOMPARE(F("Width")->SetValue(1288LL), int(PkoErrorInvalidValue));
        QCOMPARE(F("Width")->SetValue(1272LL), int(PkoErrorSuccess));
        QCOMPARE(F("Height")->SetValue(1023LL), int(PkoErrorInvalidValue));
        QCOMPARE(F("ExposureTime")->SetValue(15000.5), int(PkoErrorInvalidValue));
        QCOMPARE(F("ExposureTime")->SetValue(15000.0), int(PkoErrorSuccess));
    }

    void shouldFixTheExposureTimeWhileTheAutomaticDecides()
    {
        Open("SIM-LINE-SFNC");
        QVERIFY(IsWritable(F("ExposureTime")));
        QCOMPARE(Set("ExposureAuto", "Continuous"), int(PkoErrorSuccess));
        QVERIFY(!IsWritable(F("ExposureTime")));
        QCOMPARE(Set("ExposureAuto", "Off"), int(PkoErrorSuccess));
        QCOMPARE(Set("ExposureMode", "TriggerWidth"), int(PkoErrorSuccess));
        QVERIFY(!IsWritable(F("ExposureTime")));
    }
};

QTEST_GUILESS_MAIN(TestSimModels)
#include "tst_simmodels.moc"
