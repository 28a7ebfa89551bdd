#include "SettingsBenchmark.h"

#include "FeatureLayout.h"
#include "LoadReport.h"
#include "SettingsChecker.h"
#include "SettingsLoader.h"
#include "SettingsSaver.h"
#include "TransactionCounter.h"

#include <QElapsedTimer>

SettingsBenchmark::Result SettingsBenchmark::Run(const ZMT::PkoAPI::CameraPtr& camera,
                                                 const TransactionCounter* counter)
{
    Result result;
    FeatureLayout layout;
    if (layout.Build(camera) != ZMT::PkoAPI::PkoErrorSuccess) {
        result.error = QStringLiteral("the features cannot be listed");
        return result;
    }
    auto measure = [counter](Figure& figure, const std::function<void()>& step) {
        const long long before = counter != nullptr ? counter->Count() : -1;
        const long long writesBefore = counter != nullptr ? counter->Writes() : -1;
        QElapsedTimer timer;
        timer.start();
        step();
        figure.nanoseconds = timer.nsecsElapsed();
        if (counter != nullptr) {
            figure.transactions = counter->Count() - before;
            figure.writes = counter->Writes() - writesBefore;
        }
    };

    SettingsDocument document;
    QStringList notes;
    int code = 0;
    measure(result.save,
            [&]() { code = SettingsSaver::Save(camera, layout, SettingsSaver::Scope::All, document, notes); });
    if (code != ZMT::PkoAPI::PkoErrorSuccess) {
        result.error = QStringLiteral("the save failed with %1").arg(QLatin1String(ZMT::PkoAPI::PkoErrorName(code)));
        return result;
    }
    result.values = document.entries.size();
    result.selectorMoves = int(result.save.writes);

    measure(result.check, [&]() {
        SettingsDocument checked = document;
        SettingsChecker::Check(checked, layout, QString());
    });

    LoadReport report;
    measure(result.load, [&]() {
        SettingsLoader loader(camera, layout);
        report = loader.Load(document, SettingsLoader::Options());
    });
    if (report.status != LoadReport::Status::Done) {
        result.error = QStringLiteral("the load ended early: %1").arg(report.statusMessage);
        return result;
    }
    result.applied = report.Count(EntryResult::Outcome::Applied) + report.Count(EntryResult::Outcome::Adjusted);
    return result;
}
