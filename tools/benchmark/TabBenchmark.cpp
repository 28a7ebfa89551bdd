#include "TabBenchmark.h"

#include "IOTriggerWidget.h"
#include "TabExtensionPlugin.h"
#include "TransactionCounter.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMetaObject>
#include <QPushButton>
#include <QSharedPointer>
#include <QThread>
#include <QVector>
#include <QWidget>
#include <QtTest>

#include <cstdio>
#include <memory>
#include <vector>

namespace {

// Long enough for the SDK to report the camera's answers to a write.
const int kSettleMs = 400;
const int kBackgroundMs = 2000;

class Measure {
public:
    explicit Measure(const TransactionCounter* counter) : m_Counter(counter)
    {
        if (m_Counter != nullptr)
            m_Before = m_Counter->Log().Count();
        m_Timer.start();
    }
    TabBenchmark::Figure Done() const
    {
        TabBenchmark::Figure figure;
        figure.nanoseconds = m_Timer.nsecsElapsed();
        if (m_Counter != nullptr) {
            const TransactionLog step = m_Counter->Log().Since(m_Before);
            figure.transactions = step.Count();
            figure.writes = step.Writes();
            figure.registers = step.DistinctAddresses();
            if (qEnvironmentVariableIsSet("PKO_BENCHMARK_BUSIEST"))
                std::fprintf(stderr, "busiest: %s\n", qPrintable(step.Busiest(8)));
        }
        return figure;
    }

private:
    const TransactionCounter* m_Counter;
    int m_Before = 0;
    QElapsedTimer m_Timer;
};

// Lets the SDK's reports arrive and hands the queued ones to the tab, but
// runs no timer.
void Settle()
{
    QThread::msleep(kSettleMs);
    QCoreApplication::sendPostedEvents();
}

void Tick(QWidget* tab)
{
    QMetaObject::invokeMethod(tab, "updateTimer", Qt::DirectConnection);
}

}  // namespace

const char* TabBenchmark::StepName(Step step)
{
    switch (step) {
        case OpenCamera:
            return "open";
        case CreateTab:
            return "CreateTabWidget";
        case Show:
            return "first refresh (show)";
        case FirstTick:
            return "first tick";
        case IdleTick:
            return "idle tick";
        case Preset:
            return "preset \"Edge\"";
        case PresetTick:
            return "tick after preset";
        case StepCount:
            break;
    }
    return "";
}

TabBenchmark::Result TabBenchmark::Run(const ZMT::PkoAPI::CameraPtr& camera, const TransactionCounter* counter,
                                       bool background)
{
    Result result;
    QSharedPointer<QVector<ZMT::PkoAPI::FeaturePtr>> features(new QVector<ZMT::PkoAPI::FeaturePtr>());
    {
        Measure measure(counter);
        const int opened = camera->Open();
        if (opened != 0) {
            result.error = QStringLiteral("Open failed with %1").arg(opened);
            return result;
        }
        std::vector<ZMT::PkoAPI::FeaturePtr> list;
        camera->GetFeatures(list);
        for (const ZMT::PkoAPI::FeaturePtr& feature : list)
            features->append(feature);
        result.steps[OpenCamera] = measure.Done();
    }

    TabExtensionPlugin plugin;
    std::unique_ptr<QWidget> page(new QWidget);
    {
        Measure measure(counter);
        const int created = plugin.CreateTabWidget(features, page.get());
        result.steps[CreateTab] = measure.Done();
        if (created != 0) {
            result.error = QStringLiteral("CreateTabWidget returned %1").arg(created);
            page.reset();
            camera->Close();
            return result;
        }
    }
    QWidget* tab = page->findChild<IOTriggerWidget*>();
    QPushButton* edge = page->findChild<QPushButton*>(QStringLiteral("pb_Edge"));
    if (tab == nullptr || edge == nullptr) {
        result.error = QStringLiteral("the page holds no tab with a button pb_Edge");
        page.reset();
        camera->Close();
        return result;
    }
    page->resize(760, 1000);

    {
        Measure measure(counter);
        page->show();
        result.steps[Show] = measure.Done();
    }
    {
        Measure measure(counter);
        Tick(tab);
        result.steps[FirstTick] = measure.Done();
    }
    Settle();
    Tick(tab);  // takes whatever arrived, so that the next tick has nothing to do
    {
        Measure measure(counter);
        Tick(tab);
        result.steps[IdleTick] = measure.Done();
    }
    if (counter != nullptr && background) {
        const int before = counter->Log().Count();
        QThread::msleep(kBackgroundMs);
        const TransactionLog idle = counter->Log().Since(before);
        result.backgroundPerSecond = idle.Count() * 1000.0 / kBackgroundMs;
        result.pollingPerSecond = idle.CountBesidesHeartbeat() * 1000.0 / kBackgroundMs;
    }
    // The preset pumps events: shown again, the tab's own timer is a second
    // away from its next tick, which would otherwise fall into the click.
    page->hide();
    page->show();
    Settle();
    Tick(tab);
    if (!edge->isEnabled()) {
        result.error = QStringLiteral("pb_Edge is disabled");
    } else {
        {
            Measure measure(counter);
            QTest::mouseClick(edge, Qt::LeftButton);
            result.steps[Preset] = measure.Done();
        }
        Settle();
        {
            Measure measure(counter);
            Tick(tab);
            result.steps[PresetTick] = measure.Done();
        }
    }
    page.reset();
    camera->Close();
    return result;
}
