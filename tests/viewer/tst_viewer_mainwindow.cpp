// The viewer's window on simulated cameras, with the real plug-in loaded from
// bin/plugins: its tabs, the acquisition button and the streaming relay, the
// frame counter and the live, editable Features tab.

#include "FeatureTableModel.h"
#include "FeatureValueDelegate.h"
#include "FeaturesTab.h"
#include "MainWindow.h"
#include "PluginLoader.h"
#include "SimTestSupport.h"
#include "ViewerLog.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QStyleOptionViewItem>
#include <QTabWidget>
#include <QTableView>
#include <QtTest>

#include <memory>
#include <string>
#include <vector>

using ZMT::PkoAPI::Sim::JournalEntry;
using ZMT::PkoAPI::Sim::SimCameraPtr;

namespace {

SimCameraPtr Model(const char* id)
{
    return ZMT::PkoAPI::Sim::CreateModel(id);
}

QModelIndex ValueIndex(FeatureTableModel* model, const char* name)
{
    const int row = model->RowOf(QString::fromLatin1(name));
    return row < 0 ? QModelIndex() : model->index(row, FeatureTableModel::ValueColumn);
}

QString Value(FeatureTableModel* model, const char* name)
{
    return ValueIndex(model, name).data().toString();
}

}  // namespace

class MainWindowTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();

    void shouldShowTheTriggerIoAndMonitorTabsBesideTheFeaturesTab();
    void shouldRemoveThePageOfARefusingPluginAndSaySo();
    void shouldStartAndStopAcquisitionAndTellTheTabs();
    void shouldTellTheTabsWhenTheCameraStopsByItself();
    void shouldCountTheFramesOfASoftwareTrigger();
    void shouldListEveryFeatureWithItsCurrentValue();
    void shouldShowCameraSideChangesWithoutBeingAsked();
    void shouldWriteEditsAsTheViewer();
    void shouldReportARefusedEditAndKeepShowingTheCameraValue();
    void shouldOfferOnlyTheAvailableEntriesOfAnEnumeration();
    void shouldDestroyTheTabsOfTheOldCameraWhenAnotherOpens();
    void shouldRefuseAnUnknownCameraId();

private:
    std::unique_ptr<ViewerLog> m_Log;
    std::unique_ptr<PluginLoader> m_Plugins;
};

void MainWindowTest::initTestCase()
{
    m_Log.reset(new ViewerLog);
    m_Plugins.reset(new PluginLoader(*m_Log));
    QCOMPARE(m_Plugins->LoadDirectory(QStringLiteral("plugins")), 2);  // Trigger IO and I/O Monitor
}

void MainWindowTest::cleanupTestCase()
{
    m_Plugins.reset();
    m_Log.reset();
}

void MainWindowTest::shouldShowTheTriggerIoAndMonitorTabsBesideTheFeaturesTab()
{
    MainWindow window(*m_Plugins, *m_Log);
    SimCameraPtr camera = Model("SIM-LINE-ROUTING");
    QVERIFY(window.OpenCamera(camera));
    QCOMPARE(window.TabTitles(),
             (QStringList{QStringLiteral("Trigger IO"), QStringLiteral("I/O Monitor"), QStringLiteral("Features")}));
    QCOMPARE(window.Tabs()->currentIndex(), 0);
    QWidget* page = window.Tabs()->widget(0);
    QVERIFY(page->findChild<QWidget*>(QStringLiteral("IOTriggerWidget")) != nullptr);
    QVERIFY(camera->IsOpen());
    QCOMPARE(window.findChild<QLabel*>(QStringLiteral("stateLabel"))->text().contains(QStringLiteral("Idle")), true);
    QCOMPARE(window.findChild<QLineEdit*>(QStringLiteral("framesField"))->text(), QStringLiteral("0"));
}

void MainWindowTest::shouldRemoveThePageOfARefusingPluginAndSaySo()
{
    MainWindow window(*m_Plugins, *m_Log);
    QVERIFY(window.OpenCamera(Model("SIM-NO-TRIGGER")));
    QCOMPARE(window.TabTitles(), QStringList{QStringLiteral("Features")});
    // Both plug-ins refuse it; the last refusal is the one on the status bar.
    const QStringList problems = m_Log->Problems();
    QVERIFY(problems.contains(
        QStringLiteral("Camera SIM-NO-TRIGGER does not support the tabextensiontriggerio tab; tab removed")));
    QVERIFY(problems.contains(
        QStringLiteral("Camera SIM-NO-TRIGGER does not support the tabextensiontriggeriomonitor tab; tab removed")));
    QCOMPARE(window.statusBar()->currentMessage(), problems.last());
}

void MainWindowTest::shouldStartAndStopAcquisitionAndTellTheTabs()
{
    MainWindow window(*m_Plugins, *m_Log);
    SimCameraPtr camera = Model("SIM-SYNCOUT");
    QVERIFY(window.OpenCamera(camera));
    QLabel* hint = window.Tabs()->widget(0)->findChild<QLabel*>(QStringLiteral("l_notAcquireHint"));
    QVERIFY(hint != nullptr);
    QVERIFY(hint->isHidden());
    QPushButton* button = window.findChild<QPushButton*>(QStringLiteral("acquisitionButton"));
    QCOMPARE(button->text(), QStringLiteral("Start Acquisition"));
    QSignalSpy windowSpy(&window, SIGNAL(streamingChanged(bool)));
    QSignalSpy pluginSpy(m_Plugins->Plugins().front()->instance.data(), SIGNAL(camStreaming(bool)));
    camera->ClearJournal();

    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(camera->IsAcquiring());
    QVERIFY(window.IsStreaming());
    QCOMPARE(windowSpy.count(), 1);
    QCOMPARE(windowSpy.at(0).at(0).toBool(), true);
    QCOMPARE(pluginSpy.count(), 1);
    QVERIFY(!hint->isHidden());
    QCOMPARE(button->text(), QStringLiteral("Stop Acquisition"));
    QVERIFY(window.findChild<QLabel*>(QStringLiteral("stateLabel"))->text().contains(QStringLiteral("Acquiring")));

    QTest::mouseClick(button, Qt::LeftButton);
    QVERIFY(!camera->IsAcquiring());
    QCOMPARE(windowSpy.count(), 2);
    QCOMPARE(windowSpy.at(1).at(0).toBool(), false);
    QVERIFY(hint->isHidden());
    QCOMPARE(button->text(), QStringLiteral("Start Acquisition"));

    QCOMPARE(TestSupport::JournalText(camera->Journal(), TestSupport::JournalStyle::Plain, "viewer"),
             (QStringList{"AcquisitionStart=(execute)", "AcquisitionStop=(execute)"}));
}

void MainWindowTest::shouldTellTheTabsWhenTheCameraStopsByItself()
{
    MainWindow window(*m_Plugins, *m_Log);
    SimCameraPtr camera = Model("SIM-LINEOUT");
    QVERIFY(window.OpenCamera(camera));
    FeatureTableModel* model = window.Features()->Model();
    QVERIFY(model->setData(ValueIndex(model, "TriggerMode"), QStringLiteral("Off")));
    QVERIFY(model->setData(ValueIndex(model, "AcquisitionMode"), QStringLiteral("SingleFrame")));
    QSignalSpy windowSpy(&window, SIGNAL(streamingChanged(bool)));

    window.ToggleAcquisition();
    QTRY_VERIFY(!camera->IsAcquiring());
    QTRY_COMPARE(windowSpy.count(), 2);
    QCOMPARE(windowSpy.at(0).at(0).toBool(), true);
    QCOMPARE(windowSpy.at(1).at(0).toBool(), false);
    QVERIFY(!window.IsStreaming());
    QVERIFY(window.findChild<QLabel*>(QStringLiteral("stateLabel"))->text().contains(QStringLiteral("Idle")));
}

void MainWindowTest::shouldCountTheFramesOfASoftwareTrigger()
{
    MainWindow window(*m_Plugins, *m_Log);
    SimCameraPtr camera = Model("SIM-LINE-SFNC");
    QVERIFY(window.OpenCamera(camera));
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    FeatureTableModel* model = window.Features()->Model();
    const char* const settings[][2] = {{"AcquisitionMode", "Continuous"},
                                       {"TriggerSelector", "FrameStart"},
                                       {"TriggerSource", "Software"},
                                       {"TriggerMode", "On"}};
    for (const auto& setting : settings) {
        QVERIFY2(model->setData(ValueIndex(model, setting[0]), QString::fromLatin1(setting[1])), setting[0]);
    }
    QLineEdit* frames = window.findChild<QLineEdit*>(QStringLiteral("framesField"));
    QVERIFY(frames->isReadOnly());
    QCOMPARE(frames->text(), QStringLiteral("0"));
    window.ToggleAcquisition();
    QVERIFY(window.IsStreaming());

    // The Execute button of the command in the Features table.
    window.Tabs()->setCurrentWidget(window.Features());
    QTableView* table = window.Features()->View();
    const QModelIndex command =
        table->model()->index(model->RowOf(QStringLiteral("TriggerSoftware")), FeatureTableModel::ValueColumn);
    table->scrollTo(command);
    const QRect cell = table->visualRect(command);
    QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(cell.left() + 12, cell.center().y()));
    QCOMPARE(camera->SoftwareTriggers(), 1ULL);
    QTRY_COMPARE(frames->text(), QStringLiteral("1"));

    // The tab's own "SW Trigger", enabled once the tab has seen the source.
    window.Tabs()->setCurrentIndex(0);
    QPushButton* swTrigger = window.Tabs()->widget(0)->findChild<QPushButton*>(QStringLiteral("pb_SWTrigger"));
    QVERIFY(swTrigger != nullptr);
    QTRY_VERIFY(swTrigger->isEnabled());
    QTest::mouseClick(swTrigger, Qt::LeftButton);
    QCOMPARE(camera->SoftwareTriggers(), 2ULL);
    QTRY_COMPARE(frames->text(), QStringLiteral("2"));
}

void MainWindowTest::shouldListEveryFeatureWithItsCurrentValue()
{
    MainWindow window(*m_Plugins, *m_Log);
    SimCameraPtr camera = Model("SIM-LINE-ROUTING");
    QVERIFY(window.OpenCamera(camera));
    std::vector<ZMT::PkoAPI::FeaturePtr> features;
    QCOMPARE(camera->GetFeatures(features), int(ZMT::PkoAPI::PkoErrorSuccess));
    FeatureTableModel* model = window.Features()->Model();
    QCOMPARE(model->rowCount(), int(features.size()));
    for (int row = 0; row < model->rowCount(); ++row) {
        const std::string name = model->index(row, FeatureTableModel::NameColumn).data().toString().toStdString();
        ZMT::PkoAPI::PkoFeatureDataType type = ZMT::PkoAPI::PkoFeatureDataUnknown;
        QCOMPARE(features[row]->GetDataType(type), int(ZMT::PkoAPI::PkoErrorSuccess));
        QCOMPARE(model->index(row, FeatureTableModel::TypeColumn).data().toString(), FeatureTableModel::TypeName(type));
        if (type == ZMT::PkoAPI::PkoFeatureDataEnum || type == ZMT::PkoAPI::PkoFeatureDataInt ||
            type == ZMT::PkoAPI::PkoFeatureDataBool || type == ZMT::PkoAPI::PkoFeatureDataString) {
            QCOMPARE(model->index(row, FeatureTableModel::ValueColumn).data().toString().toStdString(),
                     camera->ValueText(name));
        }
    }
}

void MainWindowTest::shouldShowCameraSideChangesWithoutBeingAsked()
{
    MainWindow window(*m_Plugins, *m_Log);
    SimCameraPtr camera = Model("SIM-LINE-ROUTING");
    QVERIFY(window.OpenCamera(camera));
    FeatureTableModel* model = window.Features()->Model();
    const QString before = Value(model, "TriggerMode");
    const char* after = before == QLatin1String("On") ? "Off" : "On";
    QSignalSpy changed(model, SIGNAL(dataChanged(QModelIndex, QModelIndex, QVector<int>)));
    QCOMPARE(camera->ChangeFromCamera("TriggerMode", after), int(ZMT::PkoAPI::PkoErrorSuccess));
    QTRY_COMPARE(Value(model, "TriggerMode"), QString::fromLatin1(after));
    QVERIFY(changed.count() >= 1);
}

void MainWindowTest::shouldWriteEditsAsTheViewer()
{
    MainWindow window(*m_Plugins, *m_Log);
    SimCameraPtr camera = Model("SIM-LINE-ROUTING");
    QVERIFY(window.OpenCamera(camera));
    FeatureTableModel* model = window.Features()->Model();
    const QModelIndex index = ValueIndex(model, "TriggerMode");
    const QString target =
        index.data().toString() == QLatin1String("On") ? QStringLiteral("Off") : QStringLiteral("On");
    camera->ClearJournal();
    QVERIFY(model->setData(index, target));
    const std::vector<JournalEntry> journal = camera->Journal();
    QCOMPARE(int(journal.size()), 1);
    QCOMPARE(journal[0].feature, std::string("TriggerMode"));
    QCOMPARE(journal[0].value, target.toStdString());
    QCOMPARE(journal[0].writer, std::string("viewer"));
    QCOMPARE(journal[0].result, int(ZMT::PkoAPI::PkoErrorSuccess));
    QCOMPARE(index.data().toString(), target);
}

void MainWindowTest::shouldReportARefusedEditAndKeepShowingTheCameraValue()
{
    MainWindow window(*m_Plugins, *m_Log);
    SimCameraPtr camera = Model("SIM-LINE-ROUTING");
    QVERIFY(window.OpenCamera(camera));
    FeatureTableModel* model = window.Features()->Model();
    const QModelIndex index = ValueIndex(model, "TriggerMode");
    const QString before = index.data().toString();
    const QString target = before == QLatin1String("On") ? QStringLiteral("Off") : QStringLiteral("On");
    camera->InjectFault("TriggerMode", ZMT::PkoAPI::Sim::Operation::SetValue, ZMT::PkoAPI::PkoErrorTimeout);

    QVERIFY(!model->setData(index, target));
    const QString expected = QStringLiteral("Could not set TriggerMode to \"%1\": PkoErrorTimeout (-12)").arg(target);
    QCOMPARE(m_Log->Problems().last(), expected);
    QCOMPARE(window.statusBar()->currentMessage(), expected);
    QCOMPARE(index.data().toString(), before);

    QVERIFY(!model->setData(ValueIndex(model, "AcquisitionFrameCount"), QStringLiteral("many")));
    QCOMPARE(m_Log->Problems().last(), QStringLiteral("\"many\" is no value for AcquisitionFrameCount (Integer)"));
    camera->ClearFaults();
}

void MainWindowTest::shouldOfferOnlyTheAvailableEntriesOfAnEnumeration()
{
    MainWindow window(*m_Plugins, *m_Log);
    SimCameraPtr camera = Model("SIM-LINE-ROUTING");
    QVERIFY(window.OpenCamera(camera));
    FeatureTableModel* model = window.Features()->Model();
    const QModelIndex index = ValueIndex(model, "TriggerSource");
    QVERIFY(index.flags() & Qt::ItemIsEditable);

    ZMT::PkoAPI::FeaturePtr feature;
    QCOMPARE(camera->GetFeatureByName("TriggerSource", feature), int(ZMT::PkoAPI::PkoErrorSuccess));
    unsigned int count = 0;
    QCOMPARE(feature->GetValues(nullptr, count), int(ZMT::PkoAPI::PkoErrorSuccess));
    std::vector<const char*> entries(count);
    QCOMPARE(feature->GetValues(entries.data(), count), int(ZMT::PkoAPI::PkoErrorSuccess));
    QStringList available;
    for (const char* entry : entries) {
        bool isAvailable = false;
        if (feature->IsValueAvailable(entry, isAvailable) == ZMT::PkoAPI::PkoErrorSuccess && isAvailable) {
            available.append(QString::fromLatin1(entry));
        }
    }
    QVERIFY(!available.isEmpty());

    FeatureValueDelegate delegate;
    QWidget parent;
    std::unique_ptr<QWidget> editor(delegate.createEditor(&parent, QStyleOptionViewItem(), index));
    QComboBox* combo = qobject_cast<QComboBox*>(editor.get());
    QVERIFY(combo != nullptr);
    QStringList offered;
    for (int i = 0; i < combo->count(); ++i) {
        offered.append(combo->itemText(i));
    }
    QCOMPARE(offered, available);

    // Choosing another entry in the editor writes it.
    const QString other = available.last() == index.data().toString() ? available.first() : available.last();
    combo->setCurrentText(other);
    delegate.setModelData(combo, model, index);
    QCOMPARE(QString::fromStdString(camera->ValueText("TriggerSource")), other);
}

void MainWindowTest::shouldDestroyTheTabsOfTheOldCameraWhenAnotherOpens()
{
    MainWindow window(*m_Plugins, *m_Log);
    SimCameraPtr first = Model("SIM-LINE-ROUTING");
    SimCameraPtr second = Model("SIM-LINEOUT");
    QVERIFY(window.OpenCamera(first));
    QPointer<QWidget> oldWidget = window.Tabs()->widget(0)->findChild<QWidget*>(QStringLiteral("IOTriggerWidget"));
    QVERIFY(!oldWidget.isNull());

    QVERIFY(window.OpenCamera(second));
    QVERIFY(oldWidget.isNull());
    QVERIFY(!first->IsOpen());
    QVERIFY(second->IsOpen());
    QCOMPARE(window.TabTitles(),
             (QStringList{QStringLiteral("Trigger IO"), QStringLiteral("I/O Monitor"), QStringLiteral("Features")}));
    QVERIFY(window.Tabs()->widget(0)->findChild<QWidget*>(QStringLiteral("IOTriggerWidget")) != nullptr);
}

void MainWindowTest::shouldRefuseAnUnknownCameraId()
{
    MainWindow window(*m_Plugins, *m_Log);
    QVERIFY(!window.OpenCameraById(QStringLiteral("NO-SUCH-CAMERA")));
    QVERIFY(!window.Camera());
    QVERIFY2(m_Log->Problems().last().startsWith(
                 QStringLiteral("No camera with ID NO-SUCH-CAMERA (PkoErrorNotFound (-3)); known cameras: ")),
             qPrintable(m_Log->Problems().last()));
    QCOMPARE(window.TabTitles(), QStringList{QStringLiteral("Features")});
    QVERIFY(!window.findChild<QPushButton*>(QStringLiteral("acquisitionButton"))->isEnabled());
}

QTEST_MAIN(MainWindowTest)
#include "tst_viewer_mainwindow.moc"
