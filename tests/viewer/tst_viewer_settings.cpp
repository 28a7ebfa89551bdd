// Settings in the viewer: Camera > Save Settings, Load Settings with its
// report dialog, Compare With File, on the real MainWindow with the Trigger
// IO plug-in; and the viewer's German texts.

#include "FeatureTableModel.h"
#include "FeaturesTab.h"
#include "MainWindow.h"
#include "PluginLoader.h"
#include "SettingsJson.h"
#include "SettingsLoadDialog.h"
#include "ViewerLog.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/SimCamera.h>

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTranslator>
#include <QtTest>

#include <memory>

using namespace ZMT::PkoAPI;

namespace {

QString Value(MainWindow& window, const char* name)
{
    FeatureTableModel* model = window.Features()->Model();
    const int row = model->RowOf(QString::fromLatin1(name));
    return row < 0 ? QString() : model->index(row, FeatureTableModel::ValueColumn).data().toString();
}

QString TabCombo(MainWindow& window, const char* objectName)
{
    QComboBox* combo = window.Tabs()->widget(0)->findChild<QComboBox*>(QString::fromLatin1(objectName));
    return combo != nullptr ? combo->currentText() : QStringLiteral("(no %1)").arg(objectName);
}

bool Write(const Sim::SimCameraPtr& camera, const char* feature, const char* value, const char* entry = "")
{
    return camera->ChangeFromCamera(feature, value, entry) == PkoErrorSuccess;
}

}  // namespace

class tst_ViewerSettings : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<ViewerLog> m_Log;
    std::unique_ptr<PluginLoader> m_Plugins;
    QTemporaryDir m_Dir;

private slots:
    void initTestCase()
    {
        m_Log.reset(new ViewerLog);
        m_Plugins.reset(new PluginLoader(*m_Log));
        QCOMPARE(m_Plugins->LoadDirectory(QStringLiteral("plugins")), 2);  // Trigger IO and I/O Monitor
        QVERIFY(m_Dir.isValid());
    }

    void cleanupTestCase()
    {
        m_Plugins.reset();
        m_Log.reset();
    }

    void shouldOfferSaveLoadAndCompareInTheCameraMenu()
    {
        MainWindow window(*m_Plugins, *m_Log);
        QStringList texts;
        for (QAction* action : window.menuBar()->actions().first()->menu()->actions())
            texts << action->text();
        QVERIFY2(texts.contains(QString::fromUtf8("&Save Settings…")), qPrintable(texts.join('|')));
        QVERIFY(texts.contains(QString::fromUtf8("&Load Settings…")));
        QVERIFY(texts.contains(QString::fromUtf8("Compare &With File…")));
    }

    void shouldShowTheReportAndTheLoadedValuesInTheTabs()
    {
        MainWindow window(*m_Plugins, *m_Log);
        Sim::SimCameraPtr camera = Sim::CreateModel("SIM-LINE-ROUTING");
        QVERIFY(window.OpenCamera(camera));
        window.show();
        // The file holds a single frame acquisition with the trigger on.
        QVERIFY(Write(camera, "AcquisitionMode", "SingleFrame"));
        QVERIFY(Write(camera, "TriggerMode", "On", "FrameStart"));
        const QString path = m_Dir.filePath("viewer.json");
        QVERIFY(window.SaveSettings(path, SettingsFile::Format::Json, SettingsSaver::Scope::All));
        QVERIFY(Write(camera, "AcquisitionMode", "Continuous"));
        QVERIFY(Write(camera, "TriggerMode", "Off", "FrameStart"));
        QVERIFY(Write(camera, "ExposureTime", "1234"));
        window.RefreshTabs();
        QCOMPARE(TabCombo(window, "combo_AcquisitionMode"), QStringLiteral("Continuous"));
        QCOMPARE(TabCombo(window, "combo_TriggerMode"), QStringLiteral("Off"));

        QPointer<SettingsLoadDialog> dialog = window.LoadSettings(path);
        QVERIFY(dialog);
        QVERIFY(dialog->isVisible());
        QSignalSpy finished(dialog.data(), SIGNAL(loadFinished()));
        QVERIFY(finished.wait(10000) || finished.count() == 1);
        QCOMPARE(dialog->Report().status, LoadReport::Status::Done);
        QVERIFY(dialog->Report().AllApplied());

        QTableWidget* table = dialog->Table();
        const int entries = dialog->Report().results.size();
        QCOMPARE(table->rowCount(), entries);
        QCOMPARE(table->item(0, SettingsLoadDialog::ResultColumn)->text(), QStringLiteral("applied"));
        int row = -1;
        for (int i = 0; i < entries; ++i) {
            if (table->item(i, SettingsLoadDialog::FeatureColumn)->text() == QLatin1String("AcquisitionMode"))
                row = i;
        }
        QVERIFY(row >= 0);
        QCOMPARE(table->item(row, SettingsLoadDialog::FileColumn)->text(), QStringLiteral("SingleFrame"));
        QCOMPARE(table->item(row, SettingsLoadDialog::CameraColumn)->text(), QStringLiteral("SingleFrame"));
        QProgressBar* progress = dialog->findChild<QProgressBar*>(QStringLiteral("loadProgress"));
        QCOMPARE(progress->value(), progress->maximum());
        // Nothing went wrong: the filter hides every row.
        dialog->findChild<QCheckBox*>(QStringLiteral("onlyProblems"))->setChecked(true);
        for (int i = 0; i < entries; ++i)
            QVERIFY(table->isRowHidden(i));

        // The tabs were made anew from the camera.
        QCOMPARE(window.TabTitles(), (QStringList{QStringLiteral("Trigger IO"), QStringLiteral("I/O Monitor"),
                                                  QStringLiteral("Features")}));
        QCOMPARE(TabCombo(window, "combo_AcquisitionMode"), QStringLiteral("SingleFrame"));
        QCOMPARE(TabCombo(window, "combo_TriggerMode"), QStringLiteral("On"));
        QCOMPARE(Value(window, "AcquisitionMode"), QStringLiteral("SingleFrame"));
        QCOMPARE(Value(window, "ExposureTime"), QStringLiteral("10000"));

        QVector<SettingsDifference> differences;
        QVERIFY(window.CompareWithFile(path, differences, false));
        QCOMPARE(differences.size(), 0);
        dialog->findChild<QPushButton*>(QStringLiteral("closeLoad"))->click();
        QTRY_VERIFY(dialog.isNull());
    }

    void shouldListOnlyTheProblemsWhenAsked()
    {
        MainWindow window(*m_Plugins, *m_Log);
        Sim::SimCameraPtr camera = Sim::CreateModel("SIM-SYNCOUT");
        QVERIFY(window.OpenCamera(camera));
        const QString path = m_Dir.filePath("problems.json");
        QVERIFY(window.SaveSettings(path, SettingsFile::Format::Json, SettingsSaver::Scope::All));
        camera->InjectFault("Gain", Sim::Operation::SetValue, PkoErrorOther);
        QPointer<SettingsLoadDialog> dialog = window.LoadSettings(path);
        QVERIFY(dialog);
        QSignalSpy finished(dialog.data(), SIGNAL(loadFinished()));
        QVERIFY(finished.wait(10000) || finished.count() == 1);
        dialog->findChild<QCheckBox*>(QStringLiteral("onlyProblems"))->setChecked(true);
        QTableWidget* table = dialog->Table();
        QStringList shown;
        for (int i = 0; i < table->rowCount(); ++i) {
            if (!table->isRowHidden(i)) {
                shown << table->item(i, SettingsLoadDialog::ResultColumn)->text() + " " +
                             table->item(i, SettingsLoadDialog::FeatureColumn)->text() + " " +
                             table->item(i, SettingsLoadDialog::MessageColumn)->text();
            }
        }
        QCOMPARE(shown, QStringList{QStringLiteral("refused Gain PkoErrorOther")});
    }

    void shouldCancelAndReportWhatWasWritten()
    {
        MainWindow window(*m_Plugins, *m_Log);
        Sim::SimCameraPtr camera = Sim::CreateModel("SIM-LINE-ROUTING");
        QVERIFY(window.OpenCamera(camera));
        // A long file, so that the load is still running when cancelled.
        SettingsDocument document;
        SettingsEntry gamma;
        gamma.feature = QStringLiteral("Gamma");
        gamma.type = PkoFeatureDataFloat;
        for (int i = 0; i < 20000; ++i) {
            gamma.value = QVariant(1.0 + (i % 2) * 0.05);
            document.entries << gamma;
        }
        const QString path = m_Dir.filePath("long.json");
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(SettingsJson::Write(document));
        file.close();
        QPointer<SettingsLoadDialog> dialog = window.LoadSettings(path);
        QVERIFY(dialog);
        QProgressBar* progress = dialog->findChild<QProgressBar*>(QStringLiteral("loadProgress"));
        QTRY_VERIFY(progress->value() > 0);
        QVERIFY(dialog->IsRunning());
        dialog->findChild<QPushButton*>(QStringLiteral("cancelLoad"))->click();
        QTRY_VERIFY_WITH_TIMEOUT(!dialog->IsRunning(), 10000);
        const LoadReport& report = dialog->Report();
        QCOMPARE(report.status, LoadReport::Status::Cancelled);
        const int written = report.Count(EntryResult::Outcome::Applied);
        QVERIFY(written > 0);
        QVERIFY(report.Count(EntryResult::Outcome::NotWritten) > 0);
        QCOMPARE(written + report.Count(EntryResult::Outcome::NotWritten), 20000);
        QCOMPARE(dialog->Table()->rowCount(), 20000);
        QCOMPARE(dialog->Table()->item(written, SettingsLoadDialog::ResultColumn)->text(),
                 QStringLiteral("not written"));
        // The tabs are back.
        QCOMPARE(window.TabTitles().size(), 3);
    }

    void shouldWriteNothingForAFileWithErrors()
    {
        MainWindow window(*m_Plugins, *m_Log);
        Sim::SimCameraPtr camera = Sim::CreateModel("SIM-LINEOUT");
        QVERIFY(window.OpenCamera(camera));
        const QString path = m_Dir.filePath("broken.txt");
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("Gamma\t2\nMirror\t1\n");
        file.close();
        camera->ClearJournal();
        QVERIFY(window.LoadSettings(path) == nullptr);
        QVERIFY(camera->Journal().empty());
        QVERIFY(m_Log->Problems().last().contains("the camera has no feature Mirror"));
    }

    void shouldSpeakGermanWithTheTranslation()
    {
        QTranslator translator;
        QVERIFY(translator.load(QStringLiteral("pelkoviewer_de.qm"), QCoreApplication::applicationDirPath()));
        QCoreApplication::installTranslator(&translator);
        {
            MainWindow window(*m_Plugins, *m_Log);
            QMenu* menu = window.menuBar()->actions().first()->menu();
            QCOMPARE(menu->title(), QStringLiteral("&Kamera"));
            QStringList texts;
            for (QAction* action : menu->actions())
                texts << action->text();
            QVERIFY2(texts.contains(QString::fromUtf8("Einstellungen &laden…")), qPrintable(texts.join('|')));
            QVERIFY(texts.contains(QString::fromUtf8("Mit &Datei vergleichen…")));
            QVERIFY(window.TabTitles().contains(QStringLiteral("Features")));
            SettingsLoadDialog dialog{CameraPtr(), SettingsDocument(), SettingsLoader::Options()};
            QCOMPARE(dialog.findChild<QCheckBox*>(QStringLiteral("onlyProblems"))->text(),
                     QStringLiteral("Nur Probleme"));
            QCOMPARE(dialog.Table()->horizontalHeaderItem(SettingsLoadDialog::ResultColumn)->text(),
                     QStringLiteral("Ergebnis"));
        }
        QCoreApplication::removeTranslator(&translator);
    }
};

QTEST_MAIN(tst_ViewerSettings)
#include "tst_viewer_settings.moc"
