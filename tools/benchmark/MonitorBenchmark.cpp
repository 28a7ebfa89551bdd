#include "MonitorBenchmark.h"

#include "IOMonitorWidget.h"
#include "SignalStripView.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/SimCamera.h>

#include <QElapsedTimer>
#include <QImage>
#include <QSpinBox>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

double Median(std::vector<double> values)
{
    if (values.empty())
        return 0.0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

QStringList MonitorBenchmark::Run(int runs)
{
    QStringList rows;
    rows << "| camera | lines | history | median poll + repaint | 99th percentile |";
    rows << "|---|---|---|---|---|";
    const char* const models[][3] = {{"SIM-LINE-ROUTING", "Line0", "Line2"},
                                     {"SIM-SYNCOUT", "SyncIn1", "SyncIn2"},
                                     {"SIM-LINEOUT", "LineIn1", "LineIn2"}};
    for (const auto& model : models) {
        std::vector<double> medians;
        std::vector<double> tails;
        int lines = 0;
        for (int run = 0; run < runs; ++run) {
            ZMT::PkoAPI::Sim::SimCameraPtr camera = ZMT::PkoAPI::Sim::CreateModel(model[0]);
            if (!camera || camera->Open() != ZMT::PkoAPI::PkoErrorSuccess) {
                rows << QString("| %1 | could not be opened | | | |").arg(model[0]);
                break;
            }
            camera->UseManualClock();
            std::vector<ZMT::PkoAPI::FeaturePtr> features;
            camera->GetFeatures(features);
            QSharedPointer<QVector<ZMT::PkoAPI::FeaturePtr>> list(
                new QVector<ZMT::PkoAPI::FeaturePtr>(features.begin(), features.end()));
            QWidget page;
            page.resize(900, 700);
            IOMonitorWidget* widget = new IOMonitorWidget(list, &page);
            widget->resize(900, 700);
            widget->findChild<QSpinBox*>("spin_Window")->setValue(60);
            widget->SetClock([camera]() { return static_cast<double>(camera->ClockNs()) / 1e6; });
            lines = widget->Probe().Lines().size();
            // Both inputs change at every 10 ms poll: the busiest strip there is.
            camera->StartPulses(model[1], 20.0, 10.0, 0);
            camera->StartPulses(model[2], 40.0, 20.0, 0);
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
                        .arg(model[0])
                        .arg(lines)
                        .arg(Median(medians), 0, 'f', 2)
                        .arg(Median(tails), 0, 'f', 2);
        }
    }
    return rows;
}
