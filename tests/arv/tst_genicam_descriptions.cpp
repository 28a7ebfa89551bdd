// Our GenICam descriptions (PelkoSDK/genicam) served by the fake GigE Vision
// camera and read through the SDK's GenICam backend must behave like the
// simulated models they mirror, feature by feature and selector entry by
// selector entry: type, value, writability, range, and which entries are
// available, in the factory state and after the writes that change the
// dependent rules.

#include "ArvTabFixture.h"
#include "FakeGvCamera.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/SimCamera.h>

#include <QtTest>

#include <string>
#include <vector>

using namespace ZMT::PkoAPI;

namespace {

QString TextOf(const FeaturePtr& feature, int& result)
{
    unsigned int length = 0;
    result = feature->GetValue(nullptr, length);
    if (result != PkoErrorSuccess)
        return QString();
    std::string text(length + 1, '\0');
    length += 1;
    result = feature->GetValue(&text[0], length);
    return QString::fromLatin1(text.c_str());
}

// What a client of the SDK can learn of one feature, as one line.
QString Describe(const CameraPtr& camera, const QString& name)
{
    FeaturePtr feature;
    if (camera->GetFeatureByName(name.toLatin1().constData(), feature) != PkoErrorSuccess)
        return name + " missing";
    PkoFeatureDataType type = PkoFeatureDataUnknown;
    bool writable = false;
    const int typeResult = feature->GetDataType(type);
    QString line = name + QString(" type=%1/%2").arg(int(type)).arg(typeResult);
    const int writableResult = feature->IsWritable(writable);
    line += QString(" writable=%1/%2").arg(writable).arg(writableResult);
    int result = PkoErrorSuccess;
    switch (type) {
        case PkoFeatureDataEnum: {
            line += " value=" + TextOf(feature, result) + QString("/%1").arg(result);
            unsigned int count = 0;
            feature->GetValues(nullptr, count);
            std::vector<const char*> entries(count, nullptr);
            feature->GetValues(entries.data(), count);
            QStringList shown;
            for (const char* entry : entries) {
                bool available = false;
                feature->IsValueAvailable(entry, available);
                shown << QString::fromLatin1(entry) + (available ? "" : "(n/a)");
            }
            line += " entries=" + shown.join('|');
            break;
        }
        case PkoFeatureDataInt: {
            long long value = 0;
            long long minimum = 0;
            long long maximum = 0;
            long long increment = 0;
            result = feature->GetValue(value);
            feature->GetRange(minimum, maximum);
            feature->GetIncrement(increment);
            line += QString(" value=%1/%2 range=%3..%4 inc=%5")
                        .arg(value)
                        .arg(result)
                        .arg(minimum)
                        .arg(maximum)
                        .arg(increment);
            break;
        }
        case PkoFeatureDataBool: {
            bool value = false;
            result = feature->GetValue(value);
            line += QString(" value=%1/%2").arg(value).arg(result);
            break;
        }
        default:
            // Floats and commands: their type and writability are what the tab uses.
            break;
    }
    return line;
}

// The selected features at every entry of the selector, then the selector
// put back.
QStringList DescribeSelected(const CameraPtr& camera, const QString& selector, const QStringList& selected)
{
    FeaturePtr feature;
    if (camera->GetFeatureByName(selector.toLatin1().constData(), feature) != PkoErrorSuccess)
        return QStringList{selector + " missing"};
    int result = PkoErrorSuccess;
    const QString kept = TextOf(feature, result);
    unsigned int count = 0;
    feature->GetValues(nullptr, count);
    std::vector<const char*> entries(count, nullptr);
    feature->GetValues(entries.data(), count);
    QStringList lines;
    for (const char* entry : entries) {
        const QString prefix = selector + "=" + entry + ": ";
        result = feature->SetValue(entry);
        if (result != PkoErrorSuccess) {
            lines << prefix + QString("not selectable (%1)").arg(result);
            continue;
        }
        for (const QString& name : selected)
            lines << prefix + Describe(camera, name);
    }
    lines << selector + " put back to " + kept + ": " + QString::number(feature->SetValue(kept.toLatin1().constData()));
    return lines;
}

QStringList DescribeAll(const CameraPtr& camera)
{
    QStringList lines;
    for (const QString& name :
         QStringList{"AcquisitionMode", "AcquisitionFrameCount", "AcquisitionStart", "AcquisitionStop",
                     "TriggerSoftware", "ExposureMode", "ExposureAuto", "ExposureTime", "SyncInLevels", "SyncOutLevels",
                     "LineInLevels", "LineOutLevels", "LineRouting"}) {
        lines << Describe(camera, name);
    }
    lines << DescribeSelected(camera, "TriggerSelector", {"TriggerMode", "TriggerSource", "TriggerActivation"});
    lines << DescribeSelected(camera, "LineSelector",
                              {"LineMode", "LineSource", "LineInverter", "LineStatus", "LineRouting"});
    lines << DescribeSelected(camera, "UserOutputSelector", {"UserOutputValue"});
    lines << DescribeSelected(camera, "SyncOutSelector", {"SyncOutSource", "SyncOutPolarity"});
    lines << DescribeSelected(camera, "LineOutSelector", {"LineOutSource", "LineOutPolarity"});
    return lines;
}

// Writes "Feature=value" in order, each as the feature's type wants it;
// one line per write with the SDK's result.
QStringList Apply(const CameraPtr& camera, const QStringList& writes)
{
    QStringList results;
    for (const QString& write : writes) {
        const QString name = write.section('=', 0, 0);
        const QString value = write.section('=', 1);
        FeaturePtr feature;
        int result = camera->GetFeatureByName(name.toLatin1().constData(), feature);
        if (result == PkoErrorSuccess) {
            PkoFeatureDataType type = PkoFeatureDataUnknown;
            feature->GetDataType(type);
            if (type == PkoFeatureDataInt)
                result = feature->SetValue(value.toLongLong());
            else if (type == PkoFeatureDataBool)
                result = feature->SetValue(value == "true");
            else
                result = feature->SetValue(value.toLatin1().constData());
        }
        results << write + " -> " + QString::number(result);
    }
    return results;
}

QString Lines(const QStringList& actual, const QStringList& expected)
{
    QStringList onlyActual;
    QStringList onlyExpected;
    for (const QString& line : actual) {
        if (!expected.contains(line))
            onlyActual << line;
    }
    for (const QString& line : expected) {
        if (!actual.contains(line))
            onlyExpected << line;
    }
    return "\n   only on GenICam:\n      " + onlyActual.join("\n      ") + "\n   only simulated:\n      " +
           onlyExpected.join("\n      ");
}

}  // namespace

class TestGenicamDescriptions : public QObject {
    Q_OBJECT

private slots:
    void init();
    void shouldBehaveLikeTheSimulatedModel_data();
    void shouldBehaveLikeTheSimulatedModel();
};

void TestGenicamDescriptions::init()
{
    if (!FakeGvCamera::BinaryAvailable())
        QSKIP("arv-fake-gv-camera-0.8 is not installed (Debian: aravis-tools-cli)");
}

void TestGenicamDescriptions::shouldBehaveLikeTheSimulatedModel_data()
{
    QTest::addColumn<QString>("description");
    QTest::addColumn<QString>("model");
    QTest::addColumn<QStringList>("writes");
    // Lines expected only on GenICam, and in their place on the model.
    QTest::addColumn<QStringList>("genicamOnly");
    QTest::addColumn<QStringList>("simulatedOnly");

    const QStringList lineWrites{"LineSelector=Line2",     "LineMode=Output",
                                 "LineSource=Direct",      "LineStatus=true",
                                 "LineSelector=Line3",     "LineInverter=true",
                                 "LineSource=UserOutput1", "LineSelector=Line0",
                                 "LineStatus=true",        "UserOutputSelector=UserOutput1",
                                 "UserOutputValue=true"};
    for (const QString& description : {QString(FakeGvCamera::Gen1Line), QString(FakeGvCamera::Gen1Sfnc)}) {
        const QString model = description == FakeGvCamera::Gen1Line ? "SIM-LINE-ROUTING" : "SIM-LINE-SFNC";
        QStringList genicamOnly;
        QStringList simulatedOnly;
        if (description == FakeGvCamera::Gen1Line) {
            // A GenICam selector keeps an entry that became unavailable (the
            // tab moves it on); the model moves it to the first available one.
            genicamOnly << "TriggerSelector put back to FrameStart: " + QString::number(PkoErrorInvalidValue);
            simulatedOnly << "TriggerSelector put back to ExposureActive: 0";
        }
        QTest::newRow(qPrintable(description + " as delivered"))
            << description << model << QStringList() << QStringList() << QStringList();
        QTest::newRow(qPrintable(description + " in TriggerWidth exposure"))
            << description << model << QStringList{"ExposureMode=TriggerWidth"} << genicamOnly << simulatedOnly;
        QTest::newRow(qPrintable(description + " with automatic exposure"))
            << description << model << QStringList{"ExposureAuto=Continuous"} << QStringList() << QStringList();
        QTest::newRow(qPrintable(description + " with lines switched"))
            << description << model << lineWrites << QStringList() << QStringList();
    }
    QTest::newRow("generation 2 as delivered")
        << FakeGvCamera::Gen2SyncOut << "SIM-SYNCOUT" << QStringList() << QStringList() << QStringList();
    QTest::newRow("generation 2 with levels, polarity and sources")
        << FakeGvCamera::Gen2SyncOut << "SIM-SYNCOUT"
        << QStringList{"SyncOutLevels=13",         "SyncOutSelector=SyncOut4", "SyncOutPolarity=Invert",
                       "SyncOutSelector=SyncOut1", "SyncOutSource=GPO",        "SyncOutLevels=16",
                       "ExposureAuto=other"}
        << QStringList() << QStringList();
    QTest::newRow("generation 3 as delivered")
        << FakeGvCamera::Gen3LineOut << "SIM-LINEOUT" << QStringList() << QStringList() << QStringList();
    QTest::newRow("generation 3 with levels, polarity and sources")
        << FakeGvCamera::Gen3LineOut << "SIM-LINEOUT"
        << QStringList{"LineOutLevels=14",         "LineOutSelector=LineOut3", "LineOutPolarity=Invert",
                       "LineOutSelector=LineOut2", "LineOutSource=GPO",        "ExposureMode=TriggerWidth",
                       "ExposureAuto=Once"}
        << QStringList() << QStringList();
}

void TestGenicamDescriptions::shouldBehaveLikeTheSimulatedModel()
{
    QFETCH(QString, description);
    QFETCH(QString, model);
    QFETCH(QStringList, writes);
    QFETCH(QStringList, genicamOnly);
    QFETCH(QStringList, simulatedOnly);

    FakeGvCamera fake(FakeGvCamera::GenicamFile(description), QStringLiteral("DSC"));
    QVERIFY2(fake.Start(), qPrintable(fake.ErrorString()));
    QString error;
    const CameraPtr genicam = ArvTabFixture::FindCamera(fake.Serial(), error);
    QVERIFY2(genicam, qPrintable(error));
    QCOMPARE(genicam->Open(), int(PkoErrorSuccess));
    const CameraPtr simulated = Sim::CreateModel(model.toStdString());
    QVERIFY(simulated);
    QCOMPARE(simulated->Open(), int(PkoErrorSuccess));

    const QStringList genicamWrites = Apply(genicam, writes);
    const QStringList simulatedWrites = Apply(simulated, writes);
    QCOMPARE(genicamWrites, simulatedWrites);

    const QStringList seen = DescribeAll(genicam);
    QStringList expected = DescribeAll(simulated);
    for (int i = 0; i < simulatedOnly.size(); ++i) {
        const int at = expected.indexOf(simulatedOnly.at(i));
        QVERIFY2(at >= 0, qPrintable(simulatedOnly.at(i) + " no longer differs"));
        expected[at] = genicamOnly.at(i);
    }
    QVERIFY2(seen.size() > 25, qPrintable(seen.join('\n')));
    QVERIFY2(seen == expected, qPrintable(Lines(seen, expected)));

    QCOMPARE(genicam->Close(), int(PkoErrorSuccess));
    QCOMPARE(simulated->Close(), int(PkoErrorSuccess));
}

QTEST_MAIN(TestGenicamDescriptions)
#include "tst_genicam_descriptions.moc"
