// Settings files without a camera: JSON and GenICam persistence text written
// and read back, and the messages for files that are not usable.

#include "GenicamText.h"
#include "SettingsFile.h"
#include "SettingsJson.h"
#include "SettingsValue.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace ZMT::PkoAPI;

namespace {

SettingsEntry Entry(const QString& feature, PkoFeatureDataType type, const QVariant& value,
                    const QString& selector = QString(), const QString& selectorEntry = QString())
{
    SettingsEntry entry;
    entry.feature = feature;
    entry.type = type;
    entry.value = value;
    entry.selector = selector;
    entry.selectorEntry = selectorEntry;
    return entry;
}

SettingsDocument Sample()
{
    SettingsDocument document;
    document.cameraModel = QStringLiteral("PK-LR1300m");
    document.cameraId = QStringLiteral("SIM-LINE-ROUTING");
    document.saved = QDateTime(QDate(2025, 3, 4), QTime(5, 6, 7), Qt::UTC);
    document.scope = QStringLiteral("all");
    document.entries << Entry("Width", PkoFeatureDataInt, QVariant(qlonglong(1280)))
                     << Entry("Huge", PkoFeatureDataInt, QVariant(qlonglong(9007199254740993LL)))
                     << Entry("ExposureTime", PkoFeatureDataFloat, QVariant(10000.3))
                     << Entry("ReverseX", PkoFeatureDataBool, QVariant(true))
                     << Entry("DeviceUserID", PkoFeatureDataString, QVariant(QStringLiteral("left \"cam\"")))
                     << Entry("TriggerSelector", PkoFeatureDataEnum, QVariant(QStringLiteral("FrameStart")))
                     << Entry("TriggerMode", PkoFeatureDataEnum, QVariant(QStringLiteral("On")), "TriggerSelector",
                              "FrameStart")
                     << Entry("TriggerMode", PkoFeatureDataEnum, QVariant(QStringLiteral("Off")), "TriggerSelector",
                              "AcquisitionStart")
                     << Entry("Gamma", PkoFeatureDataFloat, QVariant(0.1));
    return document;
}

QStringList Describe(const QVector<SettingsEntry>& entries)
{
    QStringList lines;
    for (const SettingsEntry& entry : entries)
        lines << entry.Key() + "=" + SettingsValue::ToText(entry.value);
    return lines;
}

}  // namespace

class tst_SettingsFiles : public QObject {
    Q_OBJECT

private slots:
    void shouldReadBackEveryValueOfTheJsonItWrote()
    {
        const SettingsDocument written = Sample();
        SettingsDocument read;
        QVector<SettingsProblem> problems;
        QVERIFY(SettingsJson::Read(SettingsJson::Write(written), "a.json", read, problems));
        QVERIFY(problems.isEmpty());
        QCOMPARE(read.cameraModel, written.cameraModel);
        QCOMPARE(read.cameraId, written.cameraId);
        QCOMPARE(read.saved, written.saved);
        QCOMPARE(read.scope, written.scope);
        QCOMPARE(read.entries.size(), written.entries.size());
        for (int i = 0; i < read.entries.size(); ++i) {
            QCOMPARE(read.entries.at(i).Key(), written.entries.at(i).Key());
            QCOMPARE(read.entries.at(i).type, written.entries.at(i).type);
            QVERIFY2(SettingsValue::Equal(read.entries.at(i).value, written.entries.at(i).value),
                     qPrintable(read.entries.at(i).Key()));
        }
    }

    void shouldGiveEachFeatureItsLineInTheJson()
    {
        const QByteArray json = SettingsJson::Write(Sample());
        SettingsDocument read;
        QVector<SettingsProblem> problems;
        QVERIFY(SettingsJson::Read(json, "a.json", read, problems));
        const QList<QByteArray> lines = json.split('\n');
        for (const SettingsEntry& entry : read.entries) {
            QVERIFY(entry.line > 0);
            // The line opens the entry's object; its name follows within it.
            QCOMPARE(lines.at(entry.line - 1).trimmed(), QByteArray("{"));
            bool named = false;
            for (int i = entry.line; i < lines.size() && !lines.at(i).trimmed().startsWith('}'); ++i)
                named = named || lines.at(i).contains("\"name\": \"" + entry.feature.toUtf8() + "\"");
            QVERIFY2(named, qPrintable(entry.Key()));
        }
    }

    void shouldFindNoFeatureLineInTheJsonOfAnEmptyList()
    {
        // Found by fuzz_settingsjson: every entry is unusable, so the JSON
        // written from what was read has an empty "features" list, followed
        // by another member.
        const QByteArray json =
            "{\"format\": \"pelko-camera-settings\", \"formatVersion\": 1, \"features\": [\n"
            " {\"name\": \"Width\", \"type\": \"Integer\", \"value\": \"wide\"},\n"
            " {\"name\": \"\", \"value\": 1},\n"
            " {\"name\": \"Gain\", \"type\": \"Matrix\", \"value\": 1},\n"
            " {\"name\": \"OffsetX\", \"selector\": \"X\", \"value\": 0},\n"
            " 7,\n"
            " {\"name\": \"Height\", \"value\": [1]}\n"
            "]}\n";
        SettingsDocument read;
        QVector<SettingsProblem> problems;
        QVERIFY(SettingsJson::Read(json, "bad-entries.json", read, problems));
        QCOMPARE(problems.size(), 6);
        QVERIFY(read.entries.isEmpty());
        const QByteArray written = SettingsJson::Write(read);
        QVERIFY(written.indexOf("\"features\"") < written.indexOf("\"format\""));
        QCOMPARE(SettingsJson::FeatureLines(written), QVector<int>());
        QCOMPARE(SettingsJson::FeatureLines("{\"features\": [],\n\"x\": 1}"), QVector<int>());
        QCOMPARE(SettingsJson::FeatureLines("{\"features\": [\n{},\n{}], \"x\": [1]}"), QVector<int>({2, 3}));
    }

    void shouldNameLineAndExpectationOfAJsonSyntaxError_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<int>("line");
        QTest::addColumn<QString>("expected");
        QTest::newRow("missing comma") << QByteArray("{\n\"format\": \"pelko-camera-settings\"\n\"features\": []\n}")
                                       << 3 << "expected ',' or '}'";
        QTest::newRow("missing colon") << QByteArray("{\n\"format\" \"pelko-camera-settings\"\n}") << 2
                                       << "expected ':'";
        QTest::newRow("bad value") << QByteArray(
                                          "{\n\"format\": \"pelko-camera-settings\",\n\"features\": [\n{\"name\": "
                                          "\"Width\", \"value\": twelve}\n]\n}")
                                   << 4 << "expected a value";
        QTest::newRow("empty file") << QByteArray("\n\n") << 1 << "expected settings, the file is empty";
    }
    void shouldNameLineAndExpectationOfAJsonSyntaxError()
    {
        QFETCH(QByteArray, data);
        QFETCH(int, line);
        QFETCH(QString, expected);
        SettingsDocument document;
        QVector<SettingsProblem> problems;
        QVERIFY(!SettingsFile::Parse(data, "bad.json", document, problems));
        QCOMPARE(problems.size(), 1);
        QCOMPARE(problems.first().kind, SettingsProblem::Kind::Syntax);
        QCOMPARE(problems.first().line, line);
        QVERIFY2(problems.first().ToText().startsWith(QStringLiteral("bad.json:%1: ").arg(line)),
                 qPrintable(problems.first().ToText()));
        QVERIFY2(problems.first().message.contains(expected), qPrintable(problems.first().message));
    }

    void shouldSayWhereATruncatedFileEnds_data()
    {
        QTest::addColumn<bool>("json");
        QTest::newRow("json") << true;
        QTest::newRow("genicam") << false;
    }
    void shouldSayWhereATruncatedFileEnds()
    {
        QFETCH(bool, json);
        const QByteArray whole = json ? SettingsJson::Write(Sample()) : GenicamText::Write(Sample());
        const QByteArray cut = whole.left(whole.size() * 2 / 3);
        SettingsDocument document;
        QVector<SettingsProblem> problems;
        QVERIFY(!SettingsFile::Parse(cut, "cut", document, problems));
        QCOMPARE(problems.size(), 1);
        QVERIFY(problems.first().line >= cut.count('\n'));
        QVERIFY2(problems.first().message.contains("cut short"), qPrintable(problems.first().ToText()));
    }

    void shouldRefuseJsonThatIsNoSettingsFile()
    {
        SettingsDocument document;
        QVector<SettingsProblem> problems;
        QVERIFY(!SettingsFile::Parse("{\"features\": []}", "other.json", document, problems));
        QCOMPARE(problems.first().kind, SettingsProblem::Kind::Format);
        QVERIFY(problems.first().message.contains("\"format\": \"pelko-camera-settings\""));
        problems.clear();
        QVERIFY(!SettingsFile::Parse("{\"format\": \"pelko-camera-settings\", \"formatVersion\": 7, \"features\": []}",
                                     "new.json", document, problems));
        QVERIFY(problems.first().message.contains("newer program"));
    }

    void shouldListEntriesThatDoNotFitTheirTypeWithTheirLine()
    {
        SettingsDocument document = Sample();
        QByteArray json = SettingsJson::Write(document);
        json.replace("\"value\": 1280", "\"value\": \"wide\"");
        QVector<SettingsProblem> problems;
        SettingsDocument read;
        QVERIFY(SettingsJson::Read(json, "typed.json", read, problems));
        QCOMPARE(problems.size(), 1);
        QCOMPARE(problems.first().kind, SettingsProblem::Kind::WrongType);
        QCOMPARE(problems.first().entry, QStringLiteral("Width"));
        QVERIFY(problems.first().line > 1);
        QVERIFY2(problems.first().message.contains("expected an integer"), qPrintable(problems.first().message));
        QCOMPARE(read.entries.size(), document.entries.size() - 1);
    }

    void shouldReadBackTheSameValuesFromTextWithStrayCarriageReturns()
    {
        // Found by fuzz_genicamtext: a line that ends in "\\r\\r\\n" kept one
        // carriage return in its value, which the text written from it lost.
        const QByteArray text = QByteArray::fromBase64(
            "IyBTYXZlZEFjdGl2ZSMgU2F2ZWQgYnkgYW5db3RoZXIgdG9vbA0KIyBjb21tZW50DYpXaWR0aAk2NDANClRyaWdnZXJTZWxlY3Rv"
            "cglGcmFkIGJ5IFVzZXJPdXRwdXSxDQplck91dHB1dFZhbHVlCTAxDQJFeHANAkV4cG9zdXJlVGnBbWUJb3N1cmVUaW1lCTIxMjUw"
            "NTAwLjUuNQ0NCgoNCg==");
        SettingsDocument read;
        QVector<SettingsProblem> problems;
        QVERIFY(GenicamText::Read(text, "other.txt", read, problems));
        QCOMPARE(read.entries.size(), 2);
        QVERIFY(read.entries.last().value.toString().endsWith("21250500.5.5"));
        SettingsDocument again;
        QVERIFY(GenicamText::Read(GenicamText::Write(read), "again.txt", again, problems));
        QVERIFY(problems.isEmpty());
        QCOMPARE(Describe(again.entries), Describe(read.entries));

        QVERIFY(GenicamText::Read("Width\t640\r\r\nGain\t3\r\n", "crs.txt", read, problems));
        QCOMPARE(Describe(read.entries), QStringList({"Width=640", "Gain=3"}));
    }

    void shouldReadBackTheGenicamTextItWrote()
    {
        const SettingsDocument written = Sample();
        const QByteArray text = GenicamText::Write(written);
        QVERIFY(text.contains("TriggerSelector\tFrameStart\nTriggerMode\tOn\n"));
        QVERIFY(text.contains("ReverseX\t1\n"));
        SettingsDocument read;
        QVector<SettingsProblem> problems;
        QVERIFY(GenicamText::Read(text, "a.txt", read, problems));
        QVERIFY(problems.isEmpty());
        QCOMPARE(read.cameraModel, written.cameraModel);
        QCOMPARE(read.saved, written.saved);
        QStringList expected = Describe(written.entries);
        expected.replace(expected.indexOf("ReverseX=true"), "ReverseX=1");
        QCOMPARE(Describe(read.entries), expected);
        for (const SettingsEntry& entry : read.entries)
            QVERIFY(entry.fromText);
    }

    void shouldReadSelectorLinesOfOtherTools()
    {
        // No header, no end line, and the last selector line stands alone:
        // it is where the selector stays.
        const QByteArray text =
            "# written elsewhere\r\nWidth\t640\r\nTriggerSelector\tFrameStart\r\nTriggerMode\tOn\r\n"
            "TriggerSelector\tAcquisitionStart\r\nTriggerMode\tOff\r\nTriggerSource\tLine1\r\n"
            "\r\nTriggerSelector\tFrameStart\r\nGain\t3.5\r\n";
        SettingsDocument read;
        QVector<SettingsProblem> problems;
        QVERIFY(SettingsFile::Parse(text, "other.txt", read, problems));
        QCOMPARE(Describe(read.entries), QStringList({"Width=640", "TriggerMode@TriggerSelector=FrameStart=On",
                                                      "TriggerMode@TriggerSelector=AcquisitionStart=Off",
                                                      "TriggerSource@TriggerSelector=AcquisitionStart=Line1",
                                                      "TriggerSelector=FrameStart", "Gain=3.5"}));
        QCOMPARE(read.entries.at(4).line, 9);
    }

    void shouldNameTheLineOfAGenicamSyntaxError_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("line");
        QTest::addColumn<QString>("expected");
        QTest::newRow("no tab") << QByteArray("Width\t640\nHeight 480\n") << 2 << "expected a feature name, a tab";
        QTest::newRow("bad name") << QByteArray("# c\nWidth\t640\n\nGain value\t3\n") << 4 << "expected a feature name";
        QTest::newRow("after end") << QByteArray(QByteArray(GenicamText::kHeader) + "\nWidth\t1\n" +
                                                 GenicamText::kEndMarker + "\nGain\t1\n")
                                   << 4 << "expected nothing after";
    }
    void shouldNameTheLineOfAGenicamSyntaxError()
    {
        QFETCH(QByteArray, text);
        QFETCH(int, line);
        QFETCH(QString, expected);
        SettingsDocument document;
        QVector<SettingsProblem> problems;
        QVERIFY(!GenicamText::Read(text, "bad.txt", document, problems));
        QCOMPARE(problems.size(), 1);
        QCOMPARE(problems.first().line, line);
        QVERIFY2(problems.first().message.contains(expected), qPrintable(problems.first().message));
    }

    void shouldConvertTextsByType_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("value");  // empty: refused
        QTest::newRow("decimal") << int(PkoFeatureDataInt) << "-42"
                                 << "-42";
        QTest::newRow("hex") << int(PkoFeatureDataInt) << "0x1F"
                             << "31";
        QTest::newRow("int from float") << int(PkoFeatureDataInt) << "1.5"
                                        << "";
        QTest::newRow("float") << int(PkoFeatureDataFloat) << "2.5e3"
                               << "2500";
        QTest::newRow("nan") << int(PkoFeatureDataFloat) << "nan"
                             << "";
        QTest::newRow("bool 1") << int(PkoFeatureDataBool) << "1"
                                << "true";
        QTest::newRow("bool False") << int(PkoFeatureDataBool) << "False"
                                    << "false";
        QTest::newRow("bool yes") << int(PkoFeatureDataBool) << "yes"
                                  << "";
        QTest::newRow("enum") << int(PkoFeatureDataEnum) << "On"
                              << "On";
        QTest::newRow("command") << int(PkoFeatureDataCommand) << "x"
                                 << "";
    }
    void shouldConvertTextsByType()
    {
        QFETCH(int, type);
        QFETCH(QString, text);
        QFETCH(QString, value);
        QVariant converted;
        QString expected;
        const bool ok = SettingsValue::FromText(PkoFeatureDataType(type), text, converted, expected);
        QCOMPARE(ok, !value.isEmpty());
        if (ok)
            QCOMPARE(SettingsValue::ToText(converted), value);
        else
            QVERIFY(!expected.isEmpty());
    }

    void shouldLeaveTheOldFileWhenWritingFails()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("missing-folder/settings.json");
        QString error;
        QVERIFY(!SettingsFile::Write(path, Sample(), SettingsFile::Format::Json, error));
        QVERIFY(error.contains(path));
        QVERIFY(SettingsFile::Write(dir.filePath("ok.txt"), Sample(), SettingsFile::Format::GenicamText, error));
        SettingsDocument read;
        QVector<SettingsProblem> problems;
        QVERIFY(SettingsFile::Read(dir.filePath("ok.txt"), read, problems));
        QCOMPARE(read.entries.size(), Sample().entries.size());
    }
};

QTEST_GUILESS_MAIN(tst_SettingsFiles)
#include "tst_settings_files.moc"
