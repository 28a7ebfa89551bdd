#include "MonitorBenchmark.h"

#include "FakeCameraLookup.h"
#include "FakeGvCamera.h"
#include "IOMonitorWidget.h"
#include "SignalStripView.h"
#include "TransactionCounter.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>
#include <PkoAPI/Sim/SimCamera.h>

#include <QElapsedTimer>
#include <QImage>
#include <QSpinBox>

#include <ifaddrs.h>
#include <net/if.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using ZMT::PkoAPI::Sim::CameraBuilder;
using ZMT::PkoAPI::Sim::Context;
using ZMT::PkoAPI::Sim::FeatureBuilder;
using ZMT::PkoAPI::Sim::SimCameraPtr;

template <class T>
T Median(std::vector<T> values)
{
    if (values.empty())
        return T();
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

const int kEightLines = 8;
// Of the eight lines, the first six are inputs with pulse trains.
const int kEightLineInputs = 6;
const char* const kEightLineId = "BENCH-8-LINES";

std::vector<std::string> EightLineNames()
{
    std::vector<std::string> names;
    for (int i = 0; i < kEightLines; ++i)
        names.push_back("Line" + std::to_string(i));
    return names;
}

// No ready-made model has more than six lines: a camera with eight
// standard lines (six inputs, two outputs) and the three event counters,
// built through the SDK's public builder.
SimCameraPtr BuildEightLineCamera(std::string& error)
{
    const std::vector<std::string> lines = EightLineNames();
    CameraBuilder builder(kEightLineId, "PK-BENCH8");
    builder.AddEnumeration("LineSelector", lines, lines.front())
        .Selects({"LineMode", "LineSource", "LineInverter", "LineStatus"});
    FeatureBuilder mode = builder.AddEnumeration("LineMode", {"Input", "Output"}, "Input");
    for (int i = kEightLineInputs; i < kEightLines; ++i)
        mode.ValueAt(lines[i], "Output");
    mode.Notifies({"LineSource", "LineStatus"});
    builder
        .AddEnumeration("LineSource", {"Off", "ExposureActive", "FrameTriggerWait", "UserOutput0", "UserOutput1"},
                        "Off")
        .ValueAt(lines[kEightLineInputs], "ExposureActive")
        .ValueAt(lines[kEightLineInputs + 1], "UserOutput0")
        .WritableWhen([](const Context& c) { return c.Text("LineMode") == "Output"; })
        .Notifies({"LineStatus"});
    builder.AddBoolean("LineInverter", false).Notifies({"LineStatus"});
    builder.AddBoolean("LineStatus", false).ReadOnly().ComputedBy([](const Context& c) {
        return std::optional<std::string>(c.Level(c.SelectorEntry("LineStatus")) ? "true" : "false");
    });
    builder.AddInteger("LineStatusAll", 0, 0, (1LL << kEightLines) - 1)
        .ReadOnly()
        .ComputedBy([lines](const Context& c) {
            long long levels = 0;
            for (std::size_t i = 0; i < lines.size(); ++i) {
                if (c.Level(lines[i]))
                    levels |= 1LL << i;
            }
            return std::optional<std::string>(std::to_string(levels));
        });
    builder.AddEnumeration("UserOutputSelector", {"UserOutput0", "UserOutput1"}, "UserOutput0")
        .Selects({"UserOutputValue"});
    builder.AddBoolean("UserOutputValue", false).Notifies({"LineStatus"});
    builder.AddEnumeration("CounterSelector", {"Counter0", "Counter1", "Counter2"}, "Counter0")
        .Selects({"CounterEventSource", "CounterValue"});
    builder
        .AddEnumeration("CounterEventSource", {"Off", "FrameTrigger", "FrameTriggerMissed", "FrameEnd"}, "FrameTrigger")
        .ValueAt("Counter1", "FrameTriggerMissed")
        .ValueAt("Counter2", "FrameEnd");
    builder.AddInteger("CounterValue", 0, 0, 0x7fffffffffffffffLL).ReadOnly();
    builder.AddCommand("CounterReset").Notifies({"CounterValue"});
    SimCameraPtr camera = builder.Build();
    if (!camera)
        error = builder.Error();
    return camera;
}

struct SimulatedCamera {
    const char* id;
    // Inputs with pulse trains, the first changing at every 10 ms poll.
    std::vector<std::string> inputs;
};

SimCameraPtr MakeCamera(const SimulatedCamera& which, std::string& error)
{
    if (std::string(which.id) == kEightLineId)
        return BuildEightLineCamera(error);
    SimCameraPtr camera = ZMT::PkoAPI::Sim::CreateModel(which.id);
    if (!camera)
        error = "no such model";
    return camera;
}

typedef QSharedPointer<QVector<ZMT::PkoAPI::FeaturePtr>> FeatureList;

FeatureList FeaturesOf(const ZMT::PkoAPI::CameraPtr& camera)
{
    std::vector<ZMT::PkoAPI::FeaturePtr> features;
    camera->GetFeatures(features);
    return FeatureList(new QVector<ZMT::PkoAPI::FeaturePtr>(features.begin(), features.end()));
}

// The monitor in a page of the viewer's size, not shown (the benchmark
// polls by hand); null with the reason in error when it refuses the camera.
IOMonitorWidget* BuildMonitor(const FeatureList& features, QWidget& page, QString& error)
{
    page.resize(900, 700);
    try {
        IOMonitorWidget* widget = new IOMonitorWidget(features, &page);
        widget->resize(900, 700);
        return widget;
    } catch (const std::exception& failure) {
        error = QString::fromLocal8Bit(failure.what());
        return nullptr;
    }
}

struct GigEFigures {
    std::vector<int> levelPolls;    // transactions of each poll that reads the levels alone
    std::vector<int> counterPolls;  // of each poll that reads the counters too
    int levelRegisters = 0;         // distinct registers the level polls read
    QString masks;
    QString busiest;
    QString error;
};

const int kCounterPolls = 10;

// One camera of the generation: the polls of a monitor built on it, not
// shown, with its clock in our hands so that the counters are read only
// when the benchmark moves the clock on by their period.
GigEFigures MeasureGigE(const char* description)
{
    GigEFigures figures;
    FakeGvCamera fake(FakeGvCamera::GenicamFile(QString::fromLatin1(description)), QStringLiteral("BMON"));
    TransactionCounter::Prepare(fake);
    if (!fake.Start()) {
        figures.error = "fake camera: " + fake.ErrorString();
        return figures;
    }
    const TransactionCounter counter(fake);
    ZMT::PkoAPI::CameraPtr camera = FindFakeCamera(fake.Serial());
    if (!camera || camera->Open() != ZMT::PkoAPI::PkoErrorSuccess) {
        figures.error = "the SDK cannot open the fake camera " + fake.Serial();
        return figures;
    }
    {
        QWidget page;
        IOMonitorWidget* widget = BuildMonitor(FeaturesOf(camera), page, figures.error);
        if (widget != nullptr) {
            figures.masks = widget->Probe().MaskFeatures().join(QStringLiteral(", "));
            double nowMs = 0.0;
            widget->SetClock([&nowMs]() { return nowMs; });
            // The first poll reads the counters as well; a few more settle
            // whatever the first reads brought into the cache.
            for (int poll = 0; poll < 5; ++poll)
                widget->Poll();
            const int start = counter.Log().Count();
            for (int poll = 0; poll < MonitorBenchmark::kLevelPolls; ++poll) {
                const int before = counter.Log().Count();
                widget->Poll();
                figures.levelPolls.push_back(counter.Log().Since(before).CountBesidesHeartbeat());
            }
            const TransactionLog levels = counter.Log().Since(start);
            figures.levelRegisters = levels.DistinctAddresses();
            figures.busiest = levels.Busiest(4);
            for (int poll = 0; poll < kCounterPolls; ++poll) {
                nowMs += 250.0;
                const int before = counter.Log().Count();
                widget->Poll();
                figures.counterPolls.push_back(counter.Log().Since(before).CountBesidesHeartbeat());
            }
        }
    }
    camera->Close();
    return figures;
}

}  // namespace

bool MonitorBenchmark::LoopbackOnly()
{
    struct ifaddrs* interfaces = nullptr;
    if (::getifaddrs(&interfaces) != 0)
        return false;
    bool loopbackOnly = true;
    for (const struct ifaddrs* entry = interfaces; entry != nullptr; entry = entry->ifa_next) {
        if ((entry->ifa_flags & IFF_UP) != 0 && (entry->ifa_flags & IFF_LOOPBACK) == 0)
            loopbackOnly = false;
    }
    ::freeifaddrs(interfaces);
    return loopbackOnly;
}

QStringList MonitorBenchmark::Run(int runs)
{
    QStringList rows;
    rows << "| camera | lines | history | median poll + repaint | 99th percentile |";
    rows << "|---|---|---|---|---|";
    const SimulatedCamera cameras[] = {
        {"SIM-LINE-ROUTING", {"Line0", "Line2"}},
        {"SIM-SYNCOUT", {"SyncIn1", "SyncIn2"}},
        {"SIM-LINEOUT", {"LineIn1", "LineIn2"}},
        {kEightLineId, {"Line0", "Line1", "Line2", "Line3", "Line4", "Line5"}},
    };
    for (const SimulatedCamera& which : cameras) {
        std::vector<double> medians;
        std::vector<double> tails;
        int lines = 0;
        for (int run = 0; run < runs; ++run) {
            std::string error;
            SimCameraPtr camera = MakeCamera(which, error);
            if (!camera || camera->Open() != ZMT::PkoAPI::PkoErrorSuccess) {
                rows << QString("| %1 | could not be opened: %2 | | | |").arg(which.id, QString::fromStdString(error));
                break;
            }
            camera->UseManualClock();
            QWidget page;
            QString refused;
            IOMonitorWidget* widget = BuildMonitor(FeaturesOf(camera), page, refused);
            if (widget == nullptr) {
                rows << QString("| %1 | refused: %2 | | | |").arg(which.id, refused);
                camera->Close();
                break;
            }
            widget->findChild<QSpinBox*>("spin_Window")->setValue(60);
            widget->SetClock([camera]() { return static_cast<double>(camera->ClockNs()) / 1e6; });
            lines = widget->Probe().Lines().size();
            // Every input has a pulse train of its own, twice as long as the
            // one before: the first changes at every 10 ms poll.
            double periodMs = 20.0;
            for (const std::string& input : which.inputs) {
                camera->StartPulses(input, periodMs, periodMs / 2, 0);
                periodMs *= 2;
            }
            SignalStripView* strip = widget->findChild<SignalStripView*>("strip");
            QImage canvas(strip->size(), QImage::Format_ARGB32_Premultiplied);
            std::vector<double> times;
            QElapsedTimer timer;
            for (int poll = 0; poll < 7000; ++poll) {
                camera->AdvanceClock(10.0);
                timer.start();
                widget->Poll();
                strip->render(&canvas);
                if (poll >= 6000)
                    times.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
            }
            std::sort(times.begin(), times.end());
            medians.push_back(Median(times));
            tails.push_back(times[times.size() * 99 / 100]);
            camera->Close();
        }
        if (!medians.empty()) {
            rows << QString("| %1 | %2 | 60 s at 100 Hz | %3 ms | %4 ms |")
                        .arg(which.id)
                        .arg(lines)
                        .arg(Median(medians), 0, 'f', 2)
                        .arg(Median(tails), 0, 'f', 2);
        }
    }
    return rows;
}

QStringList MonitorBenchmark::RunGigE(int runs)
{
    if (!LoopbackOnly()) {
        return {
            QStringLiteral("Register transactions per poll over GigE: not measured, because this process sees a "
                           "network interface other than loopback and the fake cameras' discovery would go out "
                           "on it. Run it inside a loopback-only namespace: unshare --net sh -c 'ip link set lo "
                           "up && build/bin/pko-benchmark --part monitor'")};
    }
    if (!FakeGvCamera::BinaryAvailable())
        return {
            QStringLiteral("Register transactions per poll over GigE: not measured, arv-fake-gv-camera-0.8 is not "
                           "on PATH (Debian: aravis-tools-cli)")};
    const struct {
        const char* label;
        const char* description;
    } generations[] = {{"1 (Line*)", FakeGvCamera::Gen1Line},
                       {"2 (SyncOut*)", FakeGvCamera::Gen2SyncOut},
                       {"3 (LineOut*)", FakeGvCamera::Gen3LineOut}};
    const bool busiest = !qEnvironmentVariableIsEmpty("PKO_BENCHMARK_BUSIEST");
    QStringList rows;
    rows << "| camera | masks read | transactions per poll (range) [registers] | poll with the counters (range) | "
            "average per poll at 20 Hz |";
    rows << "|---|---|---|---|---|";
    for (const auto& generation : generations) {
        std::vector<int> levelMedians;
        std::vector<int> levelMaxima;
        std::vector<int> counterMedians;
        std::vector<int> counterMaxima;
        std::vector<int> levelMinima;
        std::vector<int> counterMinima;
        int registers = 0;
        QString masks;
        QString error;
        for (int run = 0; run < runs && error.isEmpty(); ++run) {
            const GigEFigures figures = MeasureGigE(generation.description);
            error = figures.error;
            if (!error.isEmpty() || figures.levelPolls.empty() || figures.counterPolls.empty())
                break;
            levelMedians.push_back(Median(figures.levelPolls));
            levelMinima.push_back(*std::min_element(figures.levelPolls.begin(), figures.levelPolls.end()));
            levelMaxima.push_back(*std::max_element(figures.levelPolls.begin(), figures.levelPolls.end()));
            counterMedians.push_back(Median(figures.counterPolls));
            counterMinima.push_back(*std::min_element(figures.counterPolls.begin(), figures.counterPolls.end()));
            counterMaxima.push_back(*std::max_element(figures.counterPolls.begin(), figures.counterPolls.end()));
            registers = figures.levelRegisters;
            masks = figures.masks;
            if (busiest)
                rows << QStringLiteral("  gen %1, run %2, busiest registers of the level polls: %3")
                            .arg(QString::fromLatin1(generation.label))
                            .arg(run + 1)
                            .arg(figures.busiest);
        }
        const QString camera = QStringLiteral("gen %1, GigE loopback").arg(QString::fromLatin1(generation.label));
        if (!error.isEmpty() || levelMedians.empty()) {
            rows << QStringLiteral("| %1 | not measured: %2 | | | |").arg(camera, error);
            continue;
        }
        const int level = Median(levelMedians);
        const int withCounters = Median(counterMedians);
        // Four counter reads a second against twenty polls: one poll in five.
        const double average = level + (withCounters - level) / 5.0;
        rows << QStringLiteral("| %1 | %2 | %3 (%4..%5) [%6] | %7 (%8..%9) | %10 |")
                    .arg(camera, masks)
                    .arg(level)
                    .arg(*std::min_element(levelMinima.begin(), levelMinima.end()))
                    .arg(*std::max_element(levelMaxima.begin(), levelMaxima.end()))
                    .arg(registers)
                    .arg(withCounters)
                    .arg(*std::min_element(counterMinima.begin(), counterMinima.end()))
                    .arg(*std::max_element(counterMaxima.begin(), counterMaxima.end()))
                    .arg(average, 0, 'f', 1);
    }
    return rows;
}
