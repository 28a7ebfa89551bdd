// pko-tool as a script runs it: the real binary, on simulated cameras (each
// run of the tool has simulated cameras of its own, fresh from the model).
// PKO_TOOL_JOURNAL makes the tool append its camera's write journal to a file.

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

namespace {

struct Run {
    int exitCode = -1;
    QString out;
    QString err;
};

}  // namespace

class tst_SettingsTool : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_Dir;

    QString Path(const QString& name) const { return m_Dir.filePath(name); }

    Run Tool(const QStringList& arguments, const QString& journal = QString())
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("PKO_GENICAM_DISCOVERY", "off");
        if (!journal.isEmpty())
            environment.insert("PKO_TOOL_JOURNAL", journal);
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral(PKO_TOOL_FILE), arguments);
        Run run;
        if (!process.waitForFinished(30000)) {
            process.kill();
            process.waitForFinished();
            run.err = "did not finish";
            return run;
        }
        run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
        run.out = QString::fromLocal8Bit(process.readAllStandardOutput());
        run.err = QString::fromLocal8Bit(process.readAllStandardError());
        return run;
    }

    static QString Text(const Run& run)
    {
        return QStringLiteral("exit %1\nout:\n%2\nerr:\n%3").arg(run.exitCode).arg(run.out, run.err);
    }

    QStringList Journal(const QString& path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return QStringList();
        return QString::fromUtf8(file.readAll()).split('\n', Qt::SkipEmptyParts);
    }

    QString WriteFile(const QString& name, const QByteArray& data)
    {
        QFile file(Path(name));
        file.open(QIODevice::WriteOnly);
        file.write(data);
        return file.fileName();
    }

private slots:
    void initTestCase() { QVERIFY(m_Dir.isValid()); }

    void shouldPrintHelpWithTheExitCodes()
    {
        const Run run = Tool({"--help"});
        QCOMPARE(run.exitCode, 0);
        for (const char* text : {"list", "features CAMERA", "get CAMERA", "set CAMERA", "save CAMERA FILE",
                                 "load CAMERA FILE", "diff CAMERA FILE", "--json", "Exit codes:", "0  all applied",
                                 "1  some write refused", "2  bad file or arguments", "3  camera not found"}) {
            QVERIFY2(run.out.contains(text), text);
        }
    }

    void shouldExitWithTheCodeOfTheProblem_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("message");
        QTest::newRow("no command") << QStringList() << 2 << "Usage:";
        QTest::newRow("unknown command") << QStringList{"copy"} << 2 << "unknown command \"copy\"";
        QTest::newRow("unknown option") << QStringList{"save", "SIM-SYNCOUT", "x.json", "--fast"} << 2
                                        << "save takes no option --fast";
        QTest::newRow("missing argument") << QStringList{"diff", "SIM-SYNCOUT"} << 2 << "usage: pko-tool diff";
        QTest::newRow("bad scope") << QStringList{"save", "SIM-SYNCOUT", "x.json", "--only", "io"} << 2
                                   << "--only takes trigger-io or all";
        QTest::newRow("unknown camera") << QStringList{"get", "SIM-NOTHING", "Width"} << 3 << "no camera SIM-NOTHING";
        QTest::newRow("unknown feature") << QStringList{"get", "SIM-SYNCOUT", "Mirror"} << 2
                                         << "camera SIM-SYNCOUT has no feature Mirror";
        QTest::newRow("value of wrong type") << QStringList{"set", "SIM-SYNCOUT", "Width=wide"} << 2
                                             << "Width is Integer: expected an integer, found \"wide\"";
        QTest::newRow("missing file") << QStringList{"load", "SIM-SYNCOUT", "/nonexistent/x.json"} << 2
                                      << "cannot read the file";
    }
    void shouldExitWithTheCodeOfTheProblem()
    {
        QFETCH(QStringList, arguments);
        QFETCH(int, exitCode);
        QFETCH(QString, message);
        const Run run = Tool(arguments);
        QCOMPARE(run.exitCode, exitCode);
        QVERIFY2(run.err.contains(message), qPrintable(Text(run)));
    }

    void shouldListTheSimulatedCameras()
    {
        const Run run = Tool({"list"});
        QCOMPARE(run.exitCode, 0);
        const QStringList lines = run.out.split('\n', Qt::SkipEmptyParts);
        QVERIFY(lines.size() >= 5);
        QVERIFY(lines.first().startsWith("SIM-LINE-ROUTING\tPK-LR1300m\t"));
    }

    void shouldListFeaturesOfOneCategory()
    {
        const Run run = Tool({"features", "SIM-LINE-ROUTING", "--category", "DigitalIOControl"});
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(run.out.contains(QRegularExpression("\nLineSelector +Enumeration +RW +Line0 +entries Line0, Line1")),
                 qPrintable(run.out));
        QVERIFY(!run.out.contains("ExposureTime"));
    }

    void shouldPrintTheValueTheCameraSnappedTo()
    {
        const Run run = Tool({"set", "SIM-LINE-SFNC", "ExposureTime=2500.4", "Width=1001"});
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(run.out.contains("ExposureTime=2500 (adjusted from 2500.4; minimum 10, maximum 1e+06, increment 1)"),
                 qPrintable(Text(run)));
        QVERIFY2(run.out.contains("Width=1000 (adjusted from 1001; minimum 16, maximum"), qPrintable(Text(run)));

        const Run json = Tool({"--json", "set", "SIM-LINE-SFNC", "ExposureTime=2500.4"});
        QCOMPARE(json.exitCode, 0);
        const QJsonObject result = QJsonDocument::fromJson(json.out.toUtf8()).object();
        const QJsonObject first = result.value("results").toArray().first().toObject();
        QCOMPARE(first.value("outcome").toString(), QStringLiteral("adjusted"));
        QCOMPARE(first.value("readBack").toDouble(), 2500.0);
        QCOMPARE(first.value("requested").toDouble(), 2500.4);
        QCOMPARE(first.value("increment").toDouble(), 1.0);
        QCOMPARE(result.value("exitCode").toInt(), 0);
    }

    void shouldShowTheRangeOfARefusedWrite()
    {
        const Run run = Tool({"set", "SIM-LINE-SFNC", "Gain=30", "PixelFormat=YUV9"});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.out.contains("Gain: refused 30 (PkoErrorInvalidValue); minimum 0, maximum 24, increment 0.1"),
                 qPrintable(Text(run)));
        QVERIFY2(run.out.contains("PixelFormat: refused YUV9 (PkoErrorInvalidValue); entries "), qPrintable(Text(run)));
    }

    void shouldReadAndWriteUnderASelectorEntry()
    {
        const QString journal = Path("selector.journal");
        const Run run = Tool({"set", "SIM-LINE-ROUTING", "TriggerMode@TriggerSelector=AcquisitionStart=On"}, journal);
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.out, QStringLiteral("TriggerMode@TriggerSelector=AcquisitionStart=On\n"));
        // Selected, written, put back.
        QCOMPARE(Journal(journal),
                 QStringList({"TriggerSelector\tAcquisitionStart\tpko-tool\t0", "TriggerMode\tOn\tpko-tool\t0",
                              "TriggerSelector\tFrameStart\tpko-tool\t0"}));
        const Run get = Tool({"get", "SIM-LINE-ROUTING", "TriggerMode@TriggerSelector=AcquisitionStart", "Width"});
        QCOMPARE(get.exitCode, 0);
        QCOMPARE(get.out, QStringLiteral("TriggerMode@TriggerSelector=AcquisitionStart=Off\nWidth=1280\n"));
    }

    void shouldSaveLoadAndCompareAFile_data()
    {
        QTest::addColumn<QString>("format");
        QTest::newRow("json") << "json";
        QTest::newRow("genicam") << "genicam";
    }
    void shouldSaveLoadAndCompareAFile()
    {
        QFETCH(QString, format);
        const QString file = Path("saved." + format);
        const Run save = Tool({"save", "SIM-LINE-ROUTING", file, "--format", format});
        QCOMPARE(save.exitCode, 0);
        const QRegularExpressionMatch saved =
            QRegularExpression("^Saved (\\d+) values of \\d+ features of SIM-LINE-ROUTING to ").match(save.out);
        QVERIFY2(saved.hasMatch() && save.out.contains(file), qPrintable(Text(save)));
        const QString values = saved.captured(1);
        const QString backup = Path("kept-" + format + ".json");
        const Run load = Tool({"load", "SIM-LINE-ROUTING", file, "--backup", backup});
        QCOMPARE(load.exitCode, 0);
        QVERIFY2(load.out.contains(values + " applied, 0 adjusted, 0 refused, 0 not available, 0 skipped."),
                 qPrintable(Text(load)));
        QVERIFY(QFile::exists(backup));
        const Run diff = Tool({"diff", "SIM-LINE-ROUTING", file});
        QCOMPARE(diff.exitCode, 0);
        QCOMPARE(diff.out, "0 differences, " + values + " equal\n");
    }

    void shouldListOnlyTheDifferences()
    {
        const QString file = Path("diff.json");
        QCOMPARE(Tool({"save", "SIM-SYNCOUT", file}).exitCode, 0);
        QFile changed(file);
        QVERIFY(changed.open(QIODevice::ReadOnly));
        QByteArray json = changed.readAll();
        changed.close();
        json.replace("\"name\": \"Gain\",\n            \"type\": \"Float\",\n            \"value\": 0",
                     "\"name\": \"Gain\",\n            \"type\": \"Float\",\n            \"value\": 2.5");
        const Run diff = Tool({"diff", "SIM-SYNCOUT", WriteFile("diff-changed.json", json)});
        QCOMPARE(diff.exitCode, 1);
        QVERIFY2(diff.out.startsWith("Gain: camera 0, file 2.5\n1 differences, "), qPrintable(Text(diff)));
    }

    void shouldWriteNothingOnADryRun()
    {
        const QString file = Path("dry.json");
        QCOMPARE(Tool({"save", "SIM-LINEOUT", file}).exitCode, 0);
        const QString journal = Path("dry.journal");
        const Run run = Tool({"load", "SIM-LINEOUT", file, "--dry-run"}, journal);
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(run.out.contains("Dry run: "), qPrintable(Text(run)));
        QVERIFY(run.out.contains("nothing was written"));
        QCOMPARE(Journal(journal), QStringList());
    }

    void shouldWriteNothingForABadFile_data()
    {
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");
        QTest::addColumn<QString>("message");
        QTest::newRow("syntax") << QByteArray("\"value\": 1024") << QByteArray("\"value\" 1024")
                                << ": expected ':' after a member name";
        QTest::newRow("truncated") << QByteArray() << QByteArray() << "(is the file cut short?)";
        QTest::newRow("unknown feature") << QByteArray("\"name\": \"Gamma\"") << QByteArray("\"name\": \"Gammma\"")
                                         << ": Gammma: the camera has no feature Gammma";
        QTest::newRow("out of range") << QByteArray("\"value\": 1024") << QByteArray("\"value\": 4096")
                                      << ": Height: 4096 is outside the range 8 to 1024";
    }
    void shouldWriteNothingForABadFile()
    {
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        QFETCH(QString, message);
        const QString file = Path("good.json");
        QCOMPARE(Tool({"save", "SIM-LINE-ROUTING", file}).exitCode, 0);
        QFile good(file);
        QVERIFY(good.open(QIODevice::ReadOnly));
        QByteArray json = good.readAll();
        if (from.isEmpty())
            json.truncate(json.size() / 2 + 1);
        else
            json.replace(from, to);
        const QString bad = WriteFile("bad.json", json);
        const QString journal = Path(QString("bad-%1.journal").arg(QTest::currentDataTag()));
        const Run run = Tool({"load", "SIM-LINE-ROUTING", bad}, journal);
        QCOMPARE(run.exitCode, 2);
        QVERIFY2(run.err.contains(QRegularExpression("pko-tool: " + QRegularExpression::escape(bad) + ":\\d+: ")),
                 qPrintable(Text(run)));
        QVERIFY2(run.err.contains(message), qPrintable(Text(run)));
        QCOMPARE(Journal(journal), QStringList());
    }

    void shouldExitWithOneWhenAWriteIsNotAvailable()
    {
        // Line0 is an input: its source cannot be written.
        const QString file = WriteFile("input-source.txt", "LineSelector\tLine0\nLineSource\tOff\nGamma\t2\n");
        const Run run = Tool({"load", "SIM-LINE-ROUTING", file});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.out.contains(QRegularExpression(
                     "not available +LineSource@LineSelector=Line0 = Off  \\(PkoErrorInvalidAccess\\)")),
                 qPrintable(Text(run)));
        QVERIFY(run.out.contains("1 applied, 0 adjusted, 0 refused, 1 not available, 0 skipped."));

        const Run json = Tool({"--json", "load", "SIM-LINE-ROUTING", file});
        QCOMPARE(json.exitCode, 1);
        const QJsonObject result = QJsonDocument::fromJson(json.out.toUtf8()).object();
        QCOMPARE(result.value("status").toString(), QStringLiteral("done"));
        QCOMPARE(result.value("exitCode").toInt(), 1);
        const QJsonArray results = result.value("results").toArray();
        QCOMPARE(results.size(), 2);
        QCOMPARE(results.at(0).toObject().value("outcome").toString(), QStringLiteral("not available"));
        QCOMPARE(results.at(0).toObject().value("error").toString(), QStringLiteral("PkoErrorInvalidAccess"));
        QCOMPARE(results.at(1).toObject().value("readBack").toDouble(), 2.0);
        QCOMPARE(result.value("counts").toObject().value("applied").toInt(), 1);
    }
};

QTEST_GUILESS_MAIN(tst_SettingsTool)
#include "tst_settings_tool.moc"
