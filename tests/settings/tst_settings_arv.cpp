// Settings on fake GigE Vision cameras on loopback through the SDK's GenICam
// backend: round trips in process and with the real pko-tool, and a camera
// that dies in the middle of a load. Needs the loopback-only network
// namespace the test runner makes.

// Aravis's headers before Qt's, which define "signals".
#include "CameraPeer.h"

#include "SettingsTestSupport.h"

#include "FakeGvCamera.h"
#include "FeatureLayout.h"
#include "GenicamText.h"
#include "SettingsComparer.h"
#include "SettingsFile.h"
#include "SettingsLoader.h"
#include "SettingsSaver.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <signal.h>

using namespace ZMT::PkoAPI;
using namespace SettingsTest;
typedef EntryResult::Outcome Outcome;

namespace {

const char* const kCameraId = "ARV:127.0.0.1";

CameraPtr FindCamera(const FakeGvCamera& fake)
{
    for (const QString& id : {"ARV:Aravis-Fake-" + fake.Serial(), QString::fromLatin1(kCameraId)}) {
        CameraPtr camera;
        if (PkoSystem::GetInstance().GetCameraByID(id.toLatin1().constData(), camera) == PkoErrorSuccess && camera)
            return camera;
    }
    return CameraPtr();
}

QStringList Outcomes(const LoadReport& report)
{
    QStringList lines;
    for (const EntryResult& result : report.results) {
        lines << QStringLiteral("%1 %2 %3")
                     .arg(result.entry.Key(), EntryResult::OutcomeName(result.outcome), result.message);
    }
    return lines;
}

// Differences between the camera and document, read through the SDK.
QStringList Differences(const CameraPtr& camera, const FeatureLayout& layout, const SettingsDocument& document)
{
    QVector<SettingsDifference> differences;
    QVector<SettingsProblem> notes;
    int equal = 0;
    const int code = SettingsComparer::Compare(camera, layout, document, differences, equal, notes);
    QStringList lines;
    if (code != PkoErrorSuccess)
        lines << "compare failed: " + FeatureIo::ErrorName(code);
    for (const SettingsDifference& difference : differences) {
        lines << QStringLiteral("%1: camera %2, file %3 %4")
                     .arg(difference.entry.Key(), SettingsValue::ToText(difference.cameraValue),
                          SettingsValue::ToText(difference.entry.value), difference.message);
    }
    return lines;
}

// What a second connection reads for the non-float entries of document,
// against the file's values: empty when all agree.
QStringList PeerMismatches(const SettingsDocument& document)
{
    QVector<CameraPeer::Probe> probes;
    QStringList expected;
    for (const SettingsEntry& entry : document.entries) {
        if (entry.type == PkoFeatureDataFloat || entry.type == PkoFeatureDataString)
            continue;
        probes.append({entry.feature, entry.selector, entry.selectorEntry});
        const QString key =
            entry.selectorEntry.isEmpty() ? entry.feature : entry.feature + "[" + entry.selectorEntry + "]";
        expected << key + "=" + SettingsValue::ToText(entry.value);
    }
    QString error;
    const QStringList values = CameraPeer::Values(probes, error);
    if (!error.isEmpty())
        return {error};
    QStringList mismatches;
    for (int i = 0; i < expected.size(); ++i) {
        if (values.value(i) != expected.at(i))
            mismatches << values.value(i) + " (file: " + expected.at(i) + ")";
    }
    return mismatches;
}

// Our fake cameras' descriptions convert the frame rate to a period with a
// formula Aravis cannot write through (it divides by zero), so the camera
// refuses every write of AcquisitionFrameRate: left out of round trips.
void DropFrameRate(SettingsDocument& document)
{
    for (int i = document.entries.size() - 1; i >= 0; --i) {
        if (document.entries.at(i).feature == QLatin1String("AcquisitionFrameRate"))
            document.entries.remove(i);
    }
}

}  // namespace

class tst_SettingsArv : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_Dir;

    QString Path(const QString& name) const { return m_Dir.filePath(name); }

    static QProcessEnvironment ToolEnvironment()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("PKO_GENICAM_DISCOVERY", "off");
        return environment;
    }

    struct Run {
        int exitCode = -1;
        QString out;
        QString err;
        QString Text() const { return QStringLiteral("exit %1\nout:\n%2\nerr:\n%3").arg(exitCode).arg(out, err); }
    };

    Run Tool(const QStringList& arguments)
    {
        QProcess process;
        process.setProcessEnvironment(ToolEnvironment());
        process.start(QStringLiteral(PKO_TOOL_FILE), arguments);
        Run run;
        if (!process.waitForFinished(60000)) {
            process.kill();
            process.waitForFinished();
        }
        run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
        run.out = QString::fromLocal8Bit(process.readAllStandardOutput());
        run.err = QString::fromLocal8Bit(process.readAllStandardError());
        return run;
    }

private slots:
    void initTestCase()
    {
        if (!FakeGvCamera::BinaryAvailable())
            QSKIP("arv-fake-gv-camera-0.8 is not installed");
        QVERIFY(m_Dir.isValid());
    }

    void shouldLoadWhatWasSavedOverGigE_data()
    {
        QTest::addColumn<QString>("description");
        QTest::addColumn<int>("format");
        QTest::newRow("gen1 Line*, json") << FakeGvCamera::Gen1Line << int(SettingsFile::Format::Json);
        QTest::newRow("gen1 SFNC, genicam") << FakeGvCamera::Gen1Sfnc << int(SettingsFile::Format::GenicamText);
        QTest::newRow("gen2 SyncOut*, json") << FakeGvCamera::Gen2SyncOut << int(SettingsFile::Format::Json);
        QTest::newRow("gen3 LineOut*, genicam") << FakeGvCamera::Gen3LineOut << int(SettingsFile::Format::GenicamText);
    }
    void shouldLoadWhatWasSavedOverGigE()
    {
        QFETCH(QString, description);
        QFETCH(int, format);
        FakeGvCamera fake(FakeGvCamera::GenicamFile(description), QStringLiteral("SETS"));
        QVERIFY2(fake.Start(), qPrintable(fake.ErrorString()));
        CameraPtr camera = FindCamera(fake);
        QVERIFY(camera);
        QCOMPARE(camera->Open(), int(PkoErrorSuccess));
        FeatureLayout layout;
        QCOMPARE(layout.Build(camera), int(PkoErrorSuccess));
        SettingsDocument saved;
        QStringList notes;
        QCOMPARE(SettingsSaver::Save(camera, layout, SettingsSaver::Scope::All, saved, notes), int(PkoErrorSuccess));
        QVERIFY2(notes.isEmpty(), qPrintable(notes.join('\n')));
        QVERIFY(saved.entries.size() > 10);
        DropFrameRate(saved);
        const QString file = Path("gige." + QString::number(format));
        QString error;
        QVERIFY(SettingsFile::Write(file, saved, SettingsFile::Format(format), error));

        const QStringList changed = ChangeEverything(camera, layout, saved);
        QVERIFY2(changed.size() * 2 > saved.entries.size(), qPrintable(changed.join(", ")));
        QVERIFY(!Differences(camera, layout, saved).isEmpty());

        SettingsDocument read;
        QVector<SettingsProblem> problems;
        QVERIFY(SettingsFile::Read(file, read, problems));
        SettingsLoader loader(camera, layout);
        const LoadReport report = loader.Load(read, SettingsLoader::Options());
        QStringList problemsOnly;
        for (const QString& outcome : Outcomes(report))
            if (!outcome.contains(QStringLiteral(" applied")))
                problemsOnly << outcome;
        QVERIFY2(report.AllApplied(), qPrintable(problemsOnly.join(QLatin1Char(10))));
        QCOMPARE(Differences(camera, layout, saved), QStringList());
        camera->Close();
        // What the camera holds, seen over a connection of its own.
        QCOMPARE(PeerMismatches(saved), QStringList());
    }

    void shouldRoundTripTriggerIoAndTextWithTheTool()
    {
        FakeGvCamera fake(FakeGvCamera::GenicamFile(FakeGvCamera::Gen1Line), QStringLiteral("TOOL"));
        QVERIFY2(fake.Start(), qPrintable(fake.ErrorString()));
        const QString file = Path("trigger-io.txt");
        Run run = Tool({"save", kCameraId, file, "--only", "trigger-io"});
        QVERIFY2(run.exitCode == 0, qPrintable(run.Text()));
        run = Tool({"set", kCameraId, "TriggerMode@TriggerSelector=FrameStart=On", "LineInverter@LineSelector=Line1=1",
                    "AcquisitionFrameCount=7"});
        QVERIFY2(run.exitCode == 0, qPrintable(run.Text()));
        run = Tool({"diff", kCameraId, file});
        QVERIFY2(run.exitCode == 1, qPrintable(run.Text()));
        QVERIFY2(run.out.contains("TriggerMode@TriggerSelector=FrameStart: camera On, file Off\n"),
                 qPrintable(run.Text()));
        QVERIFY(run.out.contains("LineInverter@LineSelector=Line1: camera true, file false\n"));
        QVERIFY(run.out.contains("AcquisitionFrameCount: camera 7, file 1\n"));
        QVERIFY(run.out.contains("3 differences, "));
        run = Tool({"load", kCameraId, file});
        QVERIFY2(run.exitCode == 0, qPrintable(run.Text()));
        run = Tool({"diff", kCameraId, file});
        QVERIFY2(run.exitCode == 0, qPrintable(run.Text()));
        QVERIFY(run.out.startsWith("0 differences, "));
    }

    void shouldReportWhatWasWrittenWhenTheCameraDiesInTheMiddle()
    {
        FakeGvCamera fake(FakeGvCamera::GenicamFile(FakeGvCamera::Gen2SyncOut), QStringLiteral("LOST"));
        QVERIFY2(fake.Start(), qPrintable(fake.ErrorString()));
        CameraPtr camera = FindCamera(fake);
        QVERIFY(camera);
        QCOMPARE(camera->Open(), int(PkoErrorSuccess));
        FeatureLayout layout;
        QCOMPARE(layout.Build(camera), int(PkoErrorSuccess));
        SettingsDocument saved;
        QStringList notes;
        QCOMPARE(SettingsSaver::Save(camera, layout, SettingsSaver::Scope::All, saved, notes), int(PkoErrorSuccess));
        DropFrameRate(saved);
        SettingsLoader loader(camera, layout);
        loader.SetProgress([&fake](int done, int) {
            if (done == 5)
                fake.Kill();
        });
        SettingsLoader::Options options;
        options.backupPath = Path("lost-kept.json");
        const LoadReport report = loader.Load(saved, options);
        camera->Close();
        QCOMPARE(report.status, LoadReport::Status::CameraLost);
        QVERIFY2(report.statusMessage.startsWith("The camera stopped answering at "), qPrintable(report.statusMessage));
        QCOMPARE(report.Count(Outcome::Applied), 5);
        QCOMPARE(report.results.at(5).outcome, Outcome::Refused);
        QVERIFY(FeatureIo::IsLost(report.results.at(5).code));
        QCOMPARE(report.Count(Outcome::NotWritten), saved.entries.size() - 6);
        SettingsDocument kept;
        QVector<SettingsProblem> problems;
        QVERIFY(SettingsFile::Read(options.backupPath, kept, problems));
        QCOMPARE(kept.entries.size(), saved.entries.size());
    }

    void shouldExitWithThreeWhenTheCameraIsLostDuringALoad()
    {
        const QString file = Path("lost.json");
        const QString backup = Path("lost-backup.json");
        // The tool keeps the current values in the backup file just before
        // its first write: as soon as the file is there the tool is frozen,
        // the camera killed and the tool let go, so the rest of the load
        // meets a dead camera. Should the tool outrun the freeze, try again.
        for (int attempt = 0; attempt < 3; ++attempt) {
            QFile::remove(backup);
            FakeGvCamera fake(FakeGvCamera::GenicamFile(FakeGvCamera::Gen1Line), QStringLiteral("DIE%1").arg(attempt));
            QVERIFY2(fake.Start(), qPrintable(fake.ErrorString()));
            if (attempt == 0) {
                const Run save = Tool({"save", kCameraId, file});
                QVERIFY2(save.exitCode == 0, qPrintable(save.Text()));
                SettingsDocument document;
                QVector<SettingsProblem> problems;
                QVERIFY(SettingsFile::Read(file, document, problems));
                DropFrameRate(document);
                QString error;
                QVERIFY(SettingsFile::Write(file, document, SettingsFile::Format::Json, error));
            }
            QProcess process;
            process.setProcessEnvironment(ToolEnvironment());
            process.start(QStringLiteral(PKO_TOOL_FILE), {"load", kCameraId, file, "--backup", backup, "--verbose"});
            QVERIFY(process.waitForStarted());
            QElapsedTimer waited;
            waited.start();
            while (!QFile::exists(backup) && waited.elapsed() < 30000 && ::kill(process.processId(), 0) == 0)
                QThread::usleep(200);
            // A few writes may pass before the freeze.
            QThread::msleep(2);
            const bool frozen = process.state() == QProcess::Running && ::kill(process.processId(), SIGSTOP) == 0;
            fake.Kill();
            if (frozen)
                ::kill(process.processId(), SIGCONT);
            QVERIFY(process.waitForFinished(60000));
            const QString err = QString::fromLocal8Bit(process.readAllStandardError());
            const QString out = QString::fromLocal8Bit(process.readAllStandardOutput());
            const QString text = QStringLiteral("exit %1\nout:\n%2\nerr:\n%3").arg(process.exitCode()).arg(out, err);
            if (!frozen) {
                qWarning("the load finished before the camera died; again");
                continue;
            }
            QCOMPARE(process.exitCode(), 3);
            QVERIFY2(out.contains("The camera stopped answering at "), qPrintable(text));
            QVERIFY2(out.contains(
                         QRegularExpression("\n(applied|refused|not available) .*PkoError(Timeout|ConnectionLost)")),
                     qPrintable(text));
            QVERIFY2(out.contains("(not written: the camera was lost)"), qPrintable(text));
            QVERIFY2(out.contains("Kept the current values of "), qPrintable(text));
            SettingsDocument saved;
            SettingsDocument kept;
            QVector<SettingsProblem> problems;
            QVERIFY(SettingsFile::Read(file, saved, problems));
            QVERIFY(SettingsFile::Read(backup, kept, problems));
            QCOMPARE(kept.entries.size(), saved.entries.size());
            return;
        }
        QFAIL("the load always finished before the camera died");
    }
};

QTEST_GUILESS_MAIN(tst_SettingsArv)
#include "tst_settings_arv.moc"
