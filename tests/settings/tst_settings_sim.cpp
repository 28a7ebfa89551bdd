// Settings on every simulated model: save, load with verification, backup,
// rollback, compare; the write journal shows what reached the camera.

#include "SettingsTestSupport.h"

#include "FeatureLayout.h"
#include "GenicamText.h"
#include "SettingsChecker.h"
#include "SettingsComparer.h"
#include "SettingsFile.h"
#include "SettingsJson.h"
#include "SettingsLoader.h"
#include "SettingsSaver.h"

#include <QTemporaryDir>
#include <QtTest>

#include <atomic>

using namespace ZMT::PkoAPI;
using namespace SettingsTest;
typedef EntryResult::Outcome Outcome;

namespace {

struct Opened {
    Sim::SimCameraPtr camera;
    FeatureLayout layout;
};

bool Open(const QString& model, Opened& opened)
{
    opened.camera = Sim::CreateModel(model.toStdString());
    return opened.camera && opened.camera->Open() == PkoErrorSuccess &&
           opened.layout.Build(opened.camera) == PkoErrorSuccess;
}

SettingsDocument Saved(Opened& opened, SettingsSaver::Scope scope = SettingsSaver::Scope::All)
{
    SettingsDocument document;
    QStringList notes;
    const int code = SettingsSaver::Save(opened.camera, opened.layout, scope, document, notes);
    if (code != PkoErrorSuccess || !notes.isEmpty())
        qWarning() << "save:" << code << notes;
    return document;
}

// The document as it comes back from a file of that format.
SettingsDocument ThroughFile(const SettingsDocument& document, SettingsFile::Format format)
{
    const QByteArray data =
        format == SettingsFile::Format::Json ? SettingsJson::Write(document) : GenicamText::Write(document);
    SettingsDocument read;
    QVector<SettingsProblem> problems;
    if (!SettingsFile::Parse(data, "file", read, problems))
        qWarning() << "parse:" << problems.first().ToText();
    return read;
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

void AddModels()
{
    QTest::addColumn<QString>("model");
    for (const std::string& id : Sim::ModelIds())
        QTest::newRow(id.c_str()) << QString::fromStdString(id);
}

}  // namespace

class tst_SettingsSim : public QObject {
    Q_OBJECT

private slots:
    void shouldLoadWhatWasSavedAfterEverySavedValueChanged_data()
    {
        QTest::addColumn<QString>("model");
        QTest::addColumn<int>("format");
        for (const std::string& id : Sim::ModelIds()) {
            QTest::newRow((id + " json").c_str()) << QString::fromStdString(id) << int(SettingsFile::Format::Json);
            QTest::newRow((id + " genicam").c_str())
                << QString::fromStdString(id) << int(SettingsFile::Format::GenicamText);
        }
    }
    void shouldLoadWhatWasSavedAfterEverySavedValueChanged()
    {
        QFETCH(QString, model);
        QFETCH(int, format);
        Opened opened;
        QVERIFY(Open(model, opened));
        const SettingsDocument saved = Saved(opened);
        QVERIFY(saved.entries.size() > 5);
        const QStringList changed = ChangeEverything(opened.camera, opened.layout, saved);
        QVERIFY2(changed.size() * 3 > saved.entries.size() * 2, qPrintable(changed.join(", ")));
        QVERIFY(!Mismatches(opened.camera, saved).isEmpty());

        const SettingsDocument file = ThroughFile(saved, SettingsFile::Format(format));
        QCOMPARE(file.entries.size(), saved.entries.size());
        SettingsLoader loader(opened.camera, opened.layout);
        const LoadReport report = loader.Load(file, SettingsLoader::Options());
        QCOMPARE(report.status, LoadReport::Status::Done);
        QVERIFY2(report.AllApplied(), qPrintable(Outcomes(report).join('\n')));
        QCOMPARE(report.Count(Outcome::Applied), saved.entries.size());
        QCOMPARE(Mismatches(opened.camera, saved), QStringList());
        // A value under a selector entry that cannot be chosen now (another
        // exposure mode) cannot be read, so it cannot be kept: a note says so.
        int notKept = 0;
        for (const SettingsProblem& problem : report.problems)
            notKept += problem.message.contains("so it is not kept") ? 1 : 0;
        QCOMPARE(report.backup.entries.size() + notKept, saved.entries.size());
    }

    void shouldRoundTripOnlyTheTriggerIoFeatures_data() { AddModels(); }
    void shouldRoundTripOnlyTheTriggerIoFeatures()
    {
        QFETCH(QString, model);
        Opened opened;
        QVERIFY(Open(model, opened));
        const SettingsDocument saved = Saved(opened, SettingsSaver::Scope::TriggerIo);
        QCOMPARE(saved.scope, QStringLiteral("trigger-io"));
        for (const SettingsEntry& entry : saved.entries) {
            const bool watched = SettingsSaver::TriggerIoFeatures().contains(entry.feature);
            bool selectsWatched = false;
            for (const QString& name : opened.layout.SelectedBy(entry.feature))
                selectsWatched = selectsWatched || SettingsSaver::TriggerIoFeatures().contains(name);
            QVERIFY2(watched || selectsWatched, qPrintable(entry.Key()));
        }
        QVERIFY(!saved.entries.isEmpty());
        ChangeEverything(opened.camera, opened.layout, saved);
        SettingsLoader loader(opened.camera, opened.layout);
        const LoadReport report =
            loader.Load(ThroughFile(saved, SettingsFile::Format::Json), SettingsLoader::Options());
        QVERIFY2(report.AllApplied(), qPrintable(Outcomes(report).join('\n')));
        QCOMPARE(Mismatches(opened.camera, saved), QStringList());
    }

    void shouldWriteOnlyTheFileAndItsSelectors()
    {
        Opened opened;
        QVERIFY(Open("SIM-LINE-ROUTING", opened));
        const SettingsDocument saved = Saved(opened);
        ChangeEverything(opened.camera, opened.layout, saved);
        opened.camera->ClearJournal();
        SettingsLoader loader(opened.camera, opened.layout);
        QVERIFY(loader.Load(saved, SettingsLoader::Options()).AllApplied());
        QSet<QString> allowed;
        for (const SettingsEntry& entry : saved.entries)
            allowed << entry.feature << entry.selector;
        int writes = 0;
        for (const Sim::JournalEntry& write : opened.camera->Journal()) {
            QCOMPARE(QString::fromStdString(write.writer), QStringLiteral("settings"));
            QVERIFY2(allowed.contains(QString::fromStdString(write.feature)), write.feature.c_str());
            ++writes;
        }
        // One write per entry, the selector moves and the writes that had to
        // wait for others (the trigger selector's entries wait for the
        // exposure mode), no more.
        QVERIFY(writes >= saved.entries.size());
        QVERIFY2(writes < saved.entries.size() * 2, qPrintable(JournalLines(opened.camera).join('\n')));
    }

    void shouldWriteNothingOnADryRun_data() { AddModels(); }
    void shouldWriteNothingOnADryRun()
    {
        QFETCH(QString, model);
        Opened opened;
        QVERIFY(Open(model, opened));
        SettingsDocument saved = Saved(opened);
        opened.camera->ClearJournal();
        // The dry run is the check alone.
        const SettingsCheck check = SettingsChecker::Check(saved, opened.layout, QString());
        QVERIFY(!check.HasErrors());
        QCOMPARE(check.UsableCount(), saved.entries.size());
        QCOMPARE(JournalLines(opened.camera), QStringList());
    }

    void shouldWriteNothingForAFileWithErrors_data()
    {
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("message");
        QTest::newRow("syntax error") << QByteArray("\"value\": 1280") << QByteArray("\"value\": 1280 1")
                                      << int(SettingsProblem::Kind::Syntax) << "expected ',' or '}'";
        QTest::newRow("truncated") << QByteArray("TRUNCATE") << QByteArray() << int(SettingsProblem::Kind::Syntax)
                                   << "cut short";
        QTest::newRow("wrong type") << QByteArray("\"type\": \"Integer\",\n            \"value\": 1280")
                                    << QByteArray("\"value\": \"wide\"") << int(SettingsProblem::Kind::WrongType)
                                    << "expected a value of type Integer, found the text wide";
        QTest::newRow("unknown feature") << QByteArray("\"name\": \"ReverseX\"") << QByteArray("\"name\": \"Mirror\"")
                                         << int(SettingsProblem::Kind::UnknownFeature)
                                         << "the camera has no feature Mirror";
        QTest::newRow("unknown entry") << QByteArray("\"value\": \"Mono8\"") << QByteArray("\"value\": \"RGB8\"")
                                       << int(SettingsProblem::Kind::UnknownEntry)
                                       << "the camera's PixelFormat has no entry RGB8";
        QTest::newRow("selector entry the camera lacks")
            << QByteArray("\"entry\": \"ExposureStart\"") << QByteArray("\"entry\": \"LineStart\"")
            << int(SettingsProblem::Kind::UnknownEntry) << "the camera's TriggerSelector has no entry LineStart";
        QTest::newRow("out of range") << QByteArray("\"value\": 1024") << QByteArray("\"value\": 4096")
                                      << int(SettingsProblem::Kind::OutOfRange)
                                      << "4096 is outside the range 8 to 1024";
    }
    void shouldWriteNothingForAFileWithErrors()
    {
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        QFETCH(int, kind);
        QFETCH(QString, message);
        Opened opened;
        QVERIFY(Open("SIM-LINE-ROUTING", opened));
        QByteArray json = SettingsJson::Write(Saved(opened));
        if (from == "TRUNCATE") {
            json.truncate(json.size() / 2);
        } else {
            QVERIFY2(json.contains(from), from.constData());
            json.replace(json.indexOf(from), from.size(), to);
        }
        opened.camera->ClearJournal();
        SettingsDocument document;
        QVector<SettingsProblem> problems;
        if (SettingsFile::Parse(json, "bad.json", document, problems)) {
            SettingsLoader loader(opened.camera, opened.layout);
            const LoadReport report = loader.Load(document, SettingsLoader::Options());
            QCOMPARE(report.status, LoadReport::Status::FileRejected);
            problems += report.problems;
        }
        QVERIFY(!problems.isEmpty());
        QCOMPARE(int(problems.first().kind), kind);
        QVERIFY2(problems.first().message.contains(message), qPrintable(problems.first().ToText()));
        QVERIFY(problems.first().line > 1);
        QCOMPARE(JournalLines(opened.camera), QStringList());
    }

    void shouldWriteTheGoodEntriesOfAPartialLoad()
    {
        Opened opened;
        QVERIFY(Open("SIM-SYNCOUT", opened));
        SettingsDocument document = Saved(opened);
        SettingsEntry unknown = document.entries.first();
        unknown.feature = QStringLiteral("Mirror");
        document.entries.insert(2, unknown);
        ChangeEverything(opened.camera, opened.layout, document);
        SettingsLoader loader(opened.camera, opened.layout);
        SettingsLoader::Options options;
        options.partial = true;
        const LoadReport report = loader.Load(document, options);
        QCOMPARE(report.status, LoadReport::Status::Done);
        QCOMPARE(report.results.at(2).outcome, Outcome::Skipped);
        QVERIFY(report.results.at(2).message.contains("no feature Mirror"));
        QCOMPARE(report.Count(Outcome::Applied), document.entries.size() - 1);
        QVERIFY(!report.AllApplied());
        document.entries.remove(2);
        QCOMPARE(Mismatches(opened.camera, document), QStringList());
    }

    void shouldReportAFaultInTheFifthWriteAndApplyTheRest_data() { AddModels(); }
    void shouldReportAFaultInTheFifthWriteAndApplyTheRest()
    {
        QFETCH(QString, model);
        Opened opened;
        QVERIFY(Open(model, opened));
        const SettingsDocument saved = Saved(opened);
        const QString faulty = saved.entries.at(4).feature;
        QVERIFY(!opened.layout.IsSelector(faulty));
        ChangeEverything(opened.camera, opened.layout, saved);
        opened.camera->InjectFault(faulty.toStdString(), Sim::Operation::SetValue, PkoErrorOther);
        opened.camera->ClearJournal();
        SettingsLoader loader(opened.camera, opened.layout);
        const LoadReport report = loader.Load(saved, SettingsLoader::Options());
        opened.camera->ClearFaults();
        QCOMPARE(report.status, LoadReport::Status::Done);
        QCOMPARE(report.results.at(4).outcome, Outcome::Refused);
        QCOMPARE(report.results.at(4).code, int(PkoErrorOther));
        QCOMPARE(report.results.at(4).message, QStringLiteral("PkoErrorOther"));
        QCOMPARE(report.Count(Outcome::Refused), 1);
        QCOMPARE(report.Count(Outcome::Applied), saved.entries.size() - 1);
        QVERIFY(!report.AllApplied());
        SettingsDocument rest = saved;
        rest.entries.remove(4);
        QCOMPARE(Mismatches(opened.camera, rest), QStringList());
        // Written once, not tried again: the fault is no matter of order.
        int tries = 0;
        for (const Sim::JournalEntry& write : opened.camera->Journal())
            tries += write.feature == faulty.toStdString() ? 1 : 0;
        QCOMPARE(tries, 1);
    }

    void shouldRestoreEveryEarlierValueOnRollback_data() { AddModels(); }
    void shouldRestoreEveryEarlierValueOnRollback()
    {
        QFETCH(QString, model);
        Opened opened;
        QVERIFY(Open(model, opened));
        const SettingsDocument saved = Saved(opened);
        const QString faulty = saved.entries.at(4).feature;
        ChangeEverything(opened.camera, opened.layout, saved);
        const QStringList before = Snapshot(opened.camera, saved);
        opened.camera->InjectFault(faulty.toStdString(), Sim::Operation::SetValue, PkoErrorOther);
        QTemporaryDir dir;
        SettingsLoader loader(opened.camera, opened.layout);
        SettingsLoader::Options options;
        options.rollbackOnError = true;
        options.backupPath = dir.filePath("kept.json");
        const LoadReport report = loader.Load(saved, options);
        opened.camera->ClearFaults();
        QCOMPARE(report.status, LoadReport::Status::Stopped);
        for (int i = 0; i < 4; ++i)
            QVERIFY(report.results.at(i).outcome == Outcome::Applied);
        QCOMPARE(report.results.at(4).outcome, Outcome::Refused);
        for (int i = 5; i < report.results.size(); ++i)
            QCOMPARE(report.results.at(i).outcome, Outcome::NotWritten);
        QVERIFY(report.rolledBack);
        QVERIFY(report.rollbackComplete);
        QCOMPARE(report.rollback.size(), 4);
        QCOMPARE(Snapshot(opened.camera, saved), before);

        // The kept values on disk are those of every entry of the file.
        SettingsDocument kept;
        QVector<SettingsProblem> problems;
        QVERIFY(SettingsFile::Read(options.backupPath, kept, problems));
        QCOMPARE(kept.entries.size(), report.backup.entries.size());
        QVERIFY(kept.entries.size() >= saved.entries.size() / 2);
        QCOMPARE(Mismatches(opened.camera, kept), QStringList());
    }

    void shouldShowWrittenAndReadValueOfAnAdjustedEntry()
    {
        Opened opened;
        QVERIFY(Open("SIM-LINE-SFNC", opened));
        SettingsDocument document;
        SettingsEntry entry;
        entry.feature = QStringLiteral("ExposureTime");
        entry.value = QVariant(2500.4);
        document.entries << entry;
        SettingsLoader loader(opened.camera, opened.layout);
        const LoadReport report = loader.Load(document, SettingsLoader::Options());
        QCOMPARE(report.results.first().outcome, Outcome::Adjusted);
        QCOMPARE(report.results.first().readBack, QVariant(2500.0));
        QCOMPARE(report.results.first().message, QStringLiteral("2500 written, the camera holds 2500"));
        QVERIFY(report.AllApplied());
        QCOMPARE(report.problems.size(), 1);
        QVERIFY(report.problems.first().message.contains("off the increment 1; it will be written as 2500"));
    }

    void shouldReportLockedFeaturesAsNotAvailableWhileAcquiring()
    {
        Opened opened;
        QVERIFY(Open("SIM-LINE-ROUTING", opened));
        const SettingsDocument saved = Saved(opened);
        QCOMPARE(opened.camera->StartAcquisition(), int(PkoErrorSuccess));
        SettingsLoader loader(opened.camera, opened.layout);
        const LoadReport report = loader.Load(saved, SettingsLoader::Options());
        opened.camera->StopAcquisition();
        bool widthSeen = false;
        for (const EntryResult& result : report.results) {
            if (result.entry.feature == QLatin1String("Width")) {
                QCOMPARE(result.outcome, Outcome::NotAvailable);
                QCOMPARE(result.message, QStringLiteral("PkoErrorInvalidAccess"));
                widthSeen = true;
            }
        }
        QVERIFY(widthSeen);
        QVERIFY(report.Count(Outcome::Applied) > 0);
    }

    void shouldStopBeforeTheNextWriteWhenCancelled()
    {
        Opened opened;
        QVERIFY(Open("SIM-LINEOUT", opened));
        const SettingsDocument saved = Saved(opened);
        std::atomic<bool> cancel(false);
        SettingsLoader loader(opened.camera, opened.layout);
        loader.SetCancelFlag(&cancel);
        loader.SetProgress([&cancel](int done, int) {
            if (done == 3)
                cancel = true;
        });
        opened.camera->ClearJournal();
        const LoadReport report = loader.Load(saved, SettingsLoader::Options());
        QCOMPARE(report.status, LoadReport::Status::Cancelled);
        QCOMPARE(report.Count(Outcome::Applied), 3);
        QCOMPARE(report.Count(Outcome::NotWritten), saved.entries.size() - 3);
        QCOMPARE(report.results.at(3).message, QStringLiteral("not written: cancelled"));
    }

    void shouldListOnlyTheDifferences()
    {
        Opened opened;
        QVERIFY(Open("SIM-LINE-ROUTING", opened));
        const SettingsDocument saved = Saved(opened);
        {
            Sim::WriterScope writer("test");
            FeaturePtr gain;
            QCOMPARE(opened.camera->GetFeatureByName("Gain", gain), int(PkoErrorSuccess));
            QCOMPARE(gain->SetValue(2.5), int(PkoErrorSuccess));
            QCOMPARE(opened.camera->ChangeFromCamera("TriggerMode", "On", "AcquisitionStart"), int(PkoErrorSuccess));
        }
        QVector<SettingsDifference> differences;
        QVector<SettingsProblem> notes;
        int equal = 0;
        QCOMPARE(SettingsComparer::Compare(opened.camera, opened.layout, saved, differences, equal, notes),
                 int(PkoErrorSuccess));
        QCOMPARE(differences.size(), 2);
        QCOMPARE(differences.at(0).entry.Key(), QStringLiteral("TriggerMode@TriggerSelector=AcquisitionStart"));
        QCOMPARE(differences.at(0).cameraValue, QVariant(QStringLiteral("On")));
        QCOMPARE(differences.at(1).entry.Key(), QStringLiteral("Gain"));
        QCOMPARE(differences.at(1).cameraValue, QVariant(2.5));
        QCOMPARE(equal, saved.entries.size() - 2);
        // The comparison put the selector back.
        QCOMPARE(opened.camera->ValueText("TriggerSelector"), std::string("FrameStart"));
    }
};

QTEST_GUILESS_MAIN(tst_SettingsSim)
#include "tst_settings_sim.moc"
