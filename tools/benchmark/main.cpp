// Times the "Trigger IO" tab on a fake GigE Vision camera (loopback) of each
// naming generation and on the simulated model of the same family, and
// counts the register transactions of each step on the fake cameras.
//
//   pko-benchmark [--runs N] [--generation 1|2|3] [--part tab|settings|signals|monitor]
//
// The settings part saves every feature to a settings document and loads it
// back, against the minimum of one read per value (save) and one write and
// one read per value (load). The signals part plays a 100 kHz pulse train on
// the simulated cameras. The monitor part times the I/O Monitor's polls and
// counts their register transactions on the fake cameras (inside a
// loopback-only network namespace only).
//
// Figures are medians of N runs (default 5), all generations by default.
// PKO_BENCHMARK_BUSIEST=1 also prints the most read registers of each step;
// PKO_GENICAM_CACHE=off measures without the SDK's register cache.
//
// Needs arv-fake-gv-camera-0.8 on PATH; waits for the machine-wide lock of
// the loopback camera port while tests hold it.

#include "FakeCameraLookup.h"
#include "FakeGvCamera.h"
#include "MonitorBenchmark.h"
#include "SettingsBenchmark.h"
#include "SignalBenchmark.h"
#include "TabBenchmark.h"
#include "TransactionCounter.h"

#include <PkoAPI/PkoAPI.h>

#include <QApplication>
#include <QProcess>
#include <QStringList>
#include <QVector>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

struct Generation {
    const char* label;
    const char* description;
    const char* model;
    // The values the tab shows, as arguments of "arv-tool-0.8 control":
    // "Selector=Entry" selects (a host-side value in our descriptions).
    const char* shown;
};

const Generation kGenerations[] = {
    {"1 (Line*)", FakeGvCamera::Gen1Line, "SIM-LINE-ROUTING",
     "AcquisitionMode AcquisitionFrameCount ExposureMode ExposureAuto ExposureTime TriggerSelector=FrameStart "
     "TriggerMode TriggerSource TriggerActivation "
     "LineSelector=Line0 LineMode LineSource LineInverter LineStatus LineRouting "
     "LineSelector=Line1 LineMode LineSource LineInverter LineStatus LineRouting "
     "LineSelector=Line2 LineMode LineSource LineInverter LineStatus LineRouting "
     "LineSelector=Line3 LineMode LineSource LineInverter LineStatus LineRouting "
     "UserOutputSelector=UserOutput0 UserOutputValue UserOutputSelector=UserOutput1 UserOutputValue "
     "UserOutputSelector=UserOutput2 UserOutputValue"},
    {"2 (SyncOut*)", FakeGvCamera::Gen2SyncOut, "SIM-SYNCOUT",
     "AcquisitionMode AcquisitionFrameCount ExposureAuto ExposureTime TriggerSelector=FrameStart TriggerMode "
     "TriggerSource TriggerActivation SyncInLevels SyncOutLevels "
     "SyncOutSelector=SyncOut1 SyncOutSource SyncOutPolarity SyncOutSelector=SyncOut2 SyncOutSource SyncOutPolarity "
     "SyncOutSelector=SyncOut3 SyncOutSource SyncOutPolarity SyncOutSelector=SyncOut4 SyncOutSource SyncOutPolarity"},
    {"3 (LineOut*)", FakeGvCamera::Gen3LineOut, "SIM-LINEOUT",
     "AcquisitionMode AcquisitionFrameCount ExposureMode ExposureAuto ExposureTime TriggerSelector=FrameStart "
     "TriggerMode TriggerSource TriggerActivation LineInLevels LineOutLevels "
     "LineOutSelector=LineOut1 LineOutSource LineOutPolarity LineOutSelector=LineOut2 LineOutSource LineOutPolarity "
     "LineOutSelector=LineOut3 LineOutSource LineOutPolarity LineOutSelector=LineOut4 LineOutSource LineOutPolarity"},
};

const int kCheckReads = 20;

// The tab's base class drops every Qt message for good: print directly.
void Print(const QString& text)
{
    std::fputs(text.toLocal8Bit().constData(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

template <class T>
T Median(QVector<T> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? T() : values.at(values.size() / 2);
}

QString Milliseconds(qint64 nanoseconds)
{
    return QString::number(nanoseconds / 1e6, 'f', nanoseconds < 10000000 ? 2 : 1) + " ms";
}

QString Cell(const QVector<TabBenchmark::Result>& results, int step)
{
    QVector<qint64> times;
    QVector<long long> transactions;
    QVector<long long> registers;
    for (const TabBenchmark::Result& result : results) {
        times << result.steps[step].nanoseconds;
        transactions << result.steps[step].transactions;
        registers << result.steps[step].registers;
    }
    std::sort(transactions.begin(), transactions.end());
    const long long count = Median(transactions);
    if (count < 0)
        return Milliseconds(Median(times)) + " / n/a";
    QString cell = Milliseconds(Median(times)) + " / " + QString::number(count);
    if (transactions.first() != transactions.last())
        cell += QStringLiteral(" (%1..%2)").arg(transactions.first()).arg(transactions.last());
    return cell + QStringLiteral(" [%1]").arg(Median(registers));
}

QString Row(const QString& camera, const QVector<TabBenchmark::Result>& results)
{
    QString row = "| " + camera;
    for (int step = 0; step < TabBenchmark::StepCount; ++step)
        row += " | " + Cell(results, step);
    return row + " |";
}

QString RunLine(const QString& what, int run, const TabBenchmark::Result& result)
{
    QString line = QStringLiteral("  %1, run %2:").arg(what).arg(run + 1);
    for (int step = 0; step < TabBenchmark::StepCount; ++step) {
        const TabBenchmark::Figure& figure = result.steps[step];
        line += QStringLiteral(" %1 %2").arg(QString::fromLatin1(TabBenchmark::StepName(TabBenchmark::Step(step))),
                                             Milliseconds(figure.nanoseconds));
        if (figure.transactions >= 0)
            line += QStringLiteral("/%1(%2w,%3r)").arg(figure.transactions).arg(figure.writes).arg(figure.registers);
        line += QLatin1Char(';');
    }
    if (result.backgroundPerSecond >= 0)
        line += QStringLiteral(" background %1/s (%2/s besides the heartbeat)")
                    .arg(result.backgroundPerSecond, 0, 'f', 1)
                    .arg(result.pollingPerSecond, 0, 'f', 1);
    return line;
}

// One run on a fake camera of its own; false with the reason printed on
// failure. The first run of each generation checks the counter first and
// measures the background traffic.
bool RunFake(const Generation& generation, int run, QVector<TabBenchmark::Result>& results, QVector<double>& background,
             QVector<double>& polling)
{
    FakeGvCamera fake(FakeGvCamera::GenicamFile(QString::fromLatin1(generation.description)), QStringLiteral("BNCH"));
    TransactionCounter::Prepare(fake);
    if (!fake.Start()) {
        Print("fake camera: " + fake.ErrorString());
        return false;
    }
    const TransactionCounter counter(fake);
    if (run == 0) {
        QString error;
        const long long before = counter.Count();
        const int read = TransactionCounter::ReadDirectly(kCheckReads, error);
        const long long counted = counter.Count() - before;
        Print(QStringLiteral("  counter check: %1 direct register reads acknowledged, %2 counted%3")
                  .arg(read)
                  .arg(counted)
                  .arg(read == kCheckReads && counted == read ? QString() : QStringLiteral(" (MISMATCH) ") + error));
        if (read != kCheckReads || counted != read)
            return false;
    }
    ZMT::PkoAPI::CameraPtr camera = FindFakeCamera(fake.Serial());
    if (!camera) {
        Print("the SDK does not know the fake camera " + fake.Serial());
        return false;
    }
    const TabBenchmark::Result result = TabBenchmark::Run(camera, &counter, run == 0);
    if (!result.error.isEmpty()) {
        Print("  GigE run failed: " + result.error);
        return false;
    }
    Print(RunLine(QStringLiteral("GigE"), run, result));
    results << result;
    if (result.backgroundPerSecond >= 0) {
        background << result.backgroundPerSecond;
        polling << result.pollingPerSecond;
    }
    return true;
}

// Runs arv-tool-0.8 on the fake camera with arguments; false with the reason
// in error.
bool RunTool(const QStringList& arguments, QString& error)
{
    QProcess tool;
    tool.start(QStringLiteral("arv-tool-0.8"), QStringList{"-a", FakeGvCamera::Address()} + arguments);
    if (!tool.waitForFinished(30000) || tool.exitStatus() != QProcess::NormalExit || tool.exitCode() != 0) {
        error = QStringLiteral("arv-tool-0.8 failed: ") + QString::fromLocal8Bit(tool.readAllStandardError());
        return false;
    }
    return true;
}

// A plain read of the values the tab shows with Aravis's command-line tool
// on a fake camera of the generation: one line for the table.
QString ToolLine(const Generation& generation)
{
    FakeGvCamera fake(FakeGvCamera::GenicamFile(QString::fromLatin1(generation.description)), QStringLiteral("TOOL"));
    TransactionCounter::Prepare(fake);
    if (!fake.Start())
        return "fake camera: " + fake.ErrorString();
    const TransactionCounter counter(fake);
    const QStringList shown = QString::fromLatin1(generation.shown).split(QLatin1Char(' '));
    int values = 0;
    for (const QString& argument : shown)
        values += argument.contains(QLatin1Char('=')) ? 0 : 1;
    QString error;
    // Connecting alone, then connecting and reading: the reads follow the
    // connection's own transactions.
    const int start = counter.Log().Count();
    if (!RunTool({QStringLiteral("control")}, error))
        return error;
    const int connecting = counter.Log().Count() - start;
    const int before = counter.Log().Count();
    if (!RunTool(QStringList{QStringLiteral("control")} + shown, error))
        return error;
    const TransactionLog reading = counter.Log().Since(before + connecting);
    return QStringLiteral("gen %1, arv-tool-0.8 control: %2 values in %3 transactions [%4] after connecting (%5)")
        .arg(QString::fromLatin1(generation.label))
        .arg(values)
        .arg(reading.Count())
        .arg(reading.DistinctAddresses())
        .arg(connecting);
}

bool RunSimulated(const Generation& generation, int run, QVector<TabBenchmark::Result>& results)
{
    ZMT::PkoAPI::CameraPtr camera;
    if (ZMT::PkoAPI::PkoSystem::GetInstance().GetCameraByID(generation.model, camera) != 0 || !camera) {
        Print(QStringLiteral("no simulated camera %1").arg(QString::fromLatin1(generation.model)));
        return false;
    }
    const TabBenchmark::Result result = TabBenchmark::Run(camera, nullptr, false);
    if (!result.error.isEmpty()) {
        Print("  simulated run failed: " + result.error);
        return false;
    }
    Print(RunLine(QString::fromLatin1(generation.model), run, result));
    results << result;
    return true;
}

QString SettingsCell(const QVector<SettingsBenchmark::Result>& results,
                     SettingsBenchmark::Figure SettingsBenchmark::Result::*step)
{
    QVector<qint64> times;
    QVector<long long> transactions;
    for (const SettingsBenchmark::Result& result : results) {
        const SettingsBenchmark::Figure& figure = result.*step;
        times << figure.nanoseconds;
        transactions << figure.transactions;
    }
    std::sort(transactions.begin(), transactions.end());
    const long long count = Median(transactions);
    if (count < 0)
        return Milliseconds(Median(times)) + " / n/a";
    QString cell = Milliseconds(Median(times)) + " / " + QString::number(count);
    if (transactions.first() != transactions.last())
        cell += QStringLiteral(" (%1..%2)").arg(transactions.first()).arg(transactions.last());
    return cell;
}

QString SettingsRow(const QString& camera, const QVector<SettingsBenchmark::Result>& results)
{
    const int values = results.isEmpty() ? 0 : results.first().values;
    const bool counted = !results.isEmpty() && results.first().save.transactions >= 0;
    return QStringLiteral("| %1 | %2 | %3 | %4 | %5 | %6 | %7 |")
        .arg(camera)
        .arg(values)
        .arg(SettingsCell(results, &SettingsBenchmark::Result::save),
             counted ? QString::number(values) : QStringLiteral("n/a"),
             SettingsCell(results, &SettingsBenchmark::Result::check),
             SettingsCell(results, &SettingsBenchmark::Result::load),
             counted ? QString::number(2 * values) : QStringLiteral("n/a"));
}

QString SettingsRunLine(const QString& what, int run, const SettingsBenchmark::Result& result)
{
    QString line = QStringLiteral("  %1, run %2: %3 values; save %4")
                       .arg(what)
                       .arg(run + 1)
                       .arg(result.values)
                       .arg(Milliseconds(result.save.nanoseconds));
    if (result.save.transactions >= 0)
        line += QStringLiteral("/%1(%2w)").arg(result.save.transactions).arg(result.save.writes);
    line += QStringLiteral("; dry run %1").arg(Milliseconds(result.check.nanoseconds));
    if (result.check.transactions >= 0)
        line += QStringLiteral("/%1").arg(result.check.transactions);
    line += QStringLiteral("; load %1").arg(Milliseconds(result.load.nanoseconds));
    if (result.load.transactions >= 0)
        line += QStringLiteral("/%1(%2w)").arg(result.load.transactions).arg(result.load.writes);
    return line + QStringLiteral("; %1 applied").arg(result.applied);
}

// One settings run on a fake camera of its own; false with the reason
// printed on failure.
bool RunSettingsFake(const Generation& generation, int run, QVector<SettingsBenchmark::Result>& results)
{
    FakeGvCamera fake(FakeGvCamera::GenicamFile(QString::fromLatin1(generation.description)), QStringLiteral("BSET"));
    TransactionCounter::Prepare(fake);
    if (!fake.Start()) {
        Print("fake camera: " + fake.ErrorString());
        return false;
    }
    const TransactionCounter counter(fake);
    ZMT::PkoAPI::CameraPtr camera = FindFakeCamera(fake.Serial());
    if (!camera || camera->Open() != 0) {
        Print("the SDK cannot open the fake camera " + fake.Serial());
        return false;
    }
    const SettingsBenchmark::Result result = SettingsBenchmark::Run(camera, &counter);
    camera->Close();
    if (!result.error.isEmpty()) {
        Print("  GigE settings run failed: " + result.error);
        return false;
    }
    Print(SettingsRunLine(QStringLiteral("GigE"), run, result));
    results << result;
    return true;
}

bool RunSettingsSimulated(const Generation& generation, int run, QVector<SettingsBenchmark::Result>& results)
{
    ZMT::PkoAPI::CameraPtr camera;
    if (ZMT::PkoAPI::PkoSystem::GetInstance().GetCameraByID(generation.model, camera) != 0 || !camera ||
        camera->Open() != 0) {
        Print(QStringLiteral("no simulated camera %1").arg(QString::fromLatin1(generation.model)));
        return false;
    }
    const SettingsBenchmark::Result result = SettingsBenchmark::Run(camera, nullptr);
    camera->Close();
    if (!result.error.isEmpty()) {
        Print("  simulated settings run failed: " + result.error);
        return false;
    }
    Print(SettingsRunLine(QString::fromLatin1(generation.model), run, result));
    results << result;
    return true;
}

}  // namespace

int main(int argc, char* argv[])
{
    int runs = 5;
    int only = 0;
    QString part;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--runs") == 0 && i + 1 < argc) {
            runs = std::max(1, std::atoi(argv[++i]));
        } else if (std::strcmp(argv[i], "--generation") == 0 && i + 1 < argc) {
            only = std::atoi(argv[++i]);
        } else if (std::strcmp(argv[i], "--part") == 0 && i + 1 < argc) {
            part = QString::fromLatin1(argv[++i]);
        } else if (std::strcmp(argv[i], "-platform") != 0 && argv[i][0] == '-') {
            std::fprintf(stderr, "usage: %s [--runs N] [--generation 1|2|3] [--part tab|settings|signals|monitor]\n",
                         argv[0]);
            return 2;
        }
    }
    // Timings without a display unless one is asked for.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const auto printSignals = [runs] {
        Print(QStringLiteral("\nSimulated signals, medians of %1 runs:\n").arg(runs));
        for (const QString& row : SignalBenchmark::Run(runs))
            Print(row);
    };
    if (part == QLatin1String("monitor")) {
        Print(QStringLiteral("\nI/O Monitor, GUI thread per poll and repaint, medians of %1 runs:\n").arg(runs));
        for (const QString& row : MonitorBenchmark::Run(runs))
            Print(row);
        Print(QStringLiteral("\nI/O Monitor, register transactions per poll on fake GigE Vision cameras (besides "
                             "the heartbeat), medians of %1 runs of %2 polls:\n")
                  .arg(runs)
                  .arg(MonitorBenchmark::kLevelPolls));
        for (const QString& row : MonitorBenchmark::RunGigE(runs))
            Print(row);
        return 0;
    }
    if (part == QLatin1String("signals")) {
        printSignals();
        return 0;
    }
    if (!FakeGvCamera::BinaryAvailable()) {
        Print("arv-fake-gv-camera-0.8 is not on PATH (Debian: aravis-tools-cli)");
        return 1;
    }

    QStringList rows;
    QStringList backgrounds;
    QStringList tools;
    QStringList settingsRows;
    bool ok = true;
    for (const Generation& generation : kGenerations) {
        if (part == QLatin1String("tab") || (only != 0 && generation.label[0] != '0' + only))
            continue;
        Print(QStringLiteral("settings, generation %1: %2 / %3")
                  .arg(QString::fromLatin1(generation.label), QString::fromLatin1(generation.description),
                       QString::fromLatin1(generation.model)));
        QVector<SettingsBenchmark::Result> fake;
        QVector<SettingsBenchmark::Result> simulated;
        for (int run = 0; run < runs && ok; ++run)
            ok = RunSettingsFake(generation, run, fake);
        for (int run = 0; run < runs && ok; ++run)
            ok = RunSettingsSimulated(generation, run, simulated);
        if (!ok)
            return 1;
        settingsRows << SettingsRow(QStringLiteral("gen %1, GigE loopback").arg(QString::fromLatin1(generation.label)),
                                    fake);
        settingsRows << SettingsRow(
            QStringLiteral("gen %1, %2")
                .arg(QString::fromLatin1(generation.label), QString::fromLatin1(generation.model)),
            simulated);
    }
    for (const Generation& generation : kGenerations) {
        if (part == QLatin1String("settings"))
            continue;
        if (only != 0 && generation.label[0] != '0' + only)
            continue;
        Print(QStringLiteral("generation %1: %2 / %3")
                  .arg(QString::fromLatin1(generation.label), QString::fromLatin1(generation.description),
                       QString::fromLatin1(generation.model)));
        QVector<TabBenchmark::Result> fake;
        QVector<TabBenchmark::Result> simulated;
        QVector<double> background;
        QVector<double> polling;
        for (int run = 0; run < runs && ok; ++run)
            ok = RunFake(generation, run, fake, background, polling);
        for (int run = 0; run < runs && ok; ++run)
            ok = RunSimulated(generation, run, simulated);
        if (!ok)
            break;
        rows << Row(QStringLiteral("gen %1, GigE loopback").arg(QString::fromLatin1(generation.label)), fake);
        rows << Row(QStringLiteral("gen %1, %2")
                        .arg(QString::fromLatin1(generation.label), QString::fromLatin1(generation.model)),
                    simulated);
        backgrounds << QStringLiteral("gen %1: %2 transactions/s (%3/s besides the heartbeat)")
                           .arg(QString::fromLatin1(generation.label))
                           .arg(Median(background), 0, 'f', 1)
                           .arg(Median(polling), 0, 'f', 1);
        tools << ToolLine(generation);
    }
    if (!ok)
        return 1;

    if (!settingsRows.isEmpty()) {
        Print(QStringLiteral("\nSettings of all features, medians of %1 runs, wall time / register transactions "
                             "(range when runs differ), against the minimum:\n")
                  .arg(runs));
        Print(QStringLiteral("| camera | values | save | minimum | dry run (check) | load | minimum |"));
        Print(QStringLiteral("|---|---|---|---|---|---|---|"));
        for (const QString& row : settingsRows)
            Print(row);
    }
    if (rows.isEmpty())
        return 0;

    Print(QStringLiteral("\nMedians of %1 runs, wall time / register transactions (range when runs differ) "
                         "[distinct registers]:\n")
              .arg(runs));
    QString header = QStringLiteral("| camera");
    QString rule = QStringLiteral("|---");
    for (int step = 0; step < TabBenchmark::StepCount; ++step) {
        header += QStringLiteral(" | ") + QString::fromLatin1(TabBenchmark::StepName(TabBenchmark::Step(step)));
        rule += QStringLiteral("|---");
    }
    Print(header + " |");
    Print(rule + "|");
    for (const QString& row : rows)
        Print(row);
    Print(QStringLiteral("\nBackground while the tab is shown and idle: ") + backgrounds.join(QStringLiteral("; ")));
    Print(
        QStringLiteral("\nThe values the tab shows, read by Aravis's own tool on the same fake camera "
                       "[distinct registers] (the tool's connection):"));
    for (const QString& line : tools)
        Print(line);
    if (part.isEmpty())
        printSignals();
    return 0;
}
