#include "SignalBenchmark.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/SimCamera.h>

#include <algorithm>
#include <atomic>
#include <ctime>
#include <vector>

using namespace ZMT::PkoAPI;

namespace {

class CountingObserver : public IFeatureObserver {
public:
    void FeatureChanged(const FeaturePtr&) override { ++m_Count; }
    int Count() const { return m_Count; }

private:
    std::atomic<int> m_Count{0};
};

double ThreadCpuSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return now.tv_sec + now.tv_nsec / 1e9;
}

struct Figure {
    double cpuMs = 0.0;
    int notifications = 0;
    QString error;
};

Figure Measure(const char* model, const char* statusFeature)
{
    Figure figure;
    Sim::SimCameraPtr camera = Sim::CreateModel(model);
    if (!camera || camera->Open() != PkoErrorSuccess) {
        figure.error = QStringLiteral("cannot open");
        return figure;
    }
    camera->UseManualClock();
    FeaturePtr status;
    camera->GetFeatureByName(statusFeature, status);
    auto* counter = new CountingObserver;
    IFeatureObserverPtr observer(counter);
    if (!status || status->RegisterObserver(observer) != PkoErrorSuccess) {
        figure.error = QStringLiteral("no %1").arg(QString::fromLatin1(statusFeature));
        return figure;
    }
    camera->WaitForNotifications(5000);
    const int before = counter->Count();
    const std::string input = camera->Lines().front();
    const double start = ThreadCpuSeconds();
    if (camera->StartPulses(input, 0.01, 0.004, 0) != PkoErrorSuccess ||
        camera->AdvanceClock(1000.0) != PkoErrorSuccess) {
        figure.error = QStringLiteral("pulses refused");
        return figure;
    }
    figure.cpuMs = (ThreadCpuSeconds() - start) * 1000.0;
    camera->StopPulses(input);
    camera->WaitForNotifications(5000);
    figure.notifications = counter->Count() - before;
    status->UnregisterObserver(observer);
    return figure;
}

}  // namespace

QStringList SignalBenchmark::Run(int runs)
{
    struct Case {
        const char* model;
        const char* status;
    };
    const Case cases[] = {{"SIM-LINE-ROUTING", "LineStatusAll"},
                          {"SIM-LINE-SFNC", "LineStatusAll"},
                          {"SIM-SYNCOUT", "SyncInLevels"},
                          {"SIM-LINEOUT", "LineInLevels"}};
    QStringList rows{QStringLiteral("| camera | observed feature | CPU time for 1 s at 100 kHz (200,000 edges) | "
                                    "notifications delivered |"),
                     QStringLiteral("|---|---|---|---|")};
    for (const Case& c : cases) {
        std::vector<double> cpu;
        std::vector<int> notified;
        QString error;
        for (int run = 0; run < runs && error.isEmpty(); ++run) {
            const Figure figure = Measure(c.model, c.status);
            error = figure.error;
            cpu.push_back(figure.cpuMs);
            notified.push_back(figure.notifications);
        }
        if (!error.isEmpty()) {
            rows << QStringLiteral("| %1 | %2 | %3 | |")
                        .arg(QString::fromLatin1(c.model), QString::fromLatin1(c.status), error);
            continue;
        }
        std::sort(cpu.begin(), cpu.end());
        std::sort(notified.begin(), notified.end());
        rows << QStringLiteral("| %1 | %2 | %3 ms | %4 |")
                    .arg(QString::fromLatin1(c.model), QString::fromLatin1(c.status))
                    .arg(cpu[cpu.size() / 2], 0, 'f', 1)
                    .arg(notified[notified.size() / 2]);
    }
    return rows;
}
