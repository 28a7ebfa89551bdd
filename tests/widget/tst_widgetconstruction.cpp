// Construction of the "Trigger IO" tab: when the camera gets the tab at all,
// which features it watches, and how the camera's offer shapes the groups.

#include "TENotSupported.h"
#include "TabExtensionException.h"
#include "WidgetTestSupport.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QtTest>

#include <memory>

using ZMT::PkoAPI::Sim::SimCameraPtr;
typedef WidgetTestSupport::CameraParts CameraParts;

namespace {

// The cameras of these tests by name: a ready-made model ("SIM-...") or one
// made to measure here.
SimCameraPtr CameraFor(const QString& name, std::string& error)
{
    if (name.startsWith("SIM-"))
        return WidgetTestSupport::Model(name.toStdString());

    CameraParts parts;
    if (name == "lines without levels") {
        // The defaults: trigger features and two lines, no output levels.
    } else if (name == "LineOutLevels only") {
        parts.lines.clear();
        parts.integers = {"LineOutLevels"};
    } else if (name == "SyncOutLevels only") {
        parts.lines.clear();
        parts.integers = {"SyncOutLevels"};
    } else if (name == "names that only look alike") {
        parts.lines.clear();
        parts.integers = {"Lineselector", "LineSelectors", "LineOutLevel", "syncOutLevels", "LineMode"};
    } else if (name == "auto other and mode Timed") {
        parts.exposureAutos = {"Off", "Continuous", "other"};
        parts.exposureModes = {"Timed", "TriggerWidth"};
    } else if (name == "auto other only") {
        parts.exposureAutos = {"Off", "other"};
    } else if (name == "mode Timed only") {
        parts.exposureAutos = {"Off", "Continuous"};
        parts.exposureModes = {"Timed"};
    } else if (name == "auto Other capitalised") {
        parts.exposureAutos = {"Off", "Other"};
        parts.exposureModes = {"Timed", "TriggerWidth"};
    } else if (name == "mode timed lower-case") {
        parts.exposureAutos = {"Off"};
        parts.exposureModes = {"timed", "TriggerWidth"};
    } else if (name == "InputLines last") {
        parts.sources = {"Line0", "Software", "InputLines"};
    } else if (name == "inputlines lower-case") {
        parts.sources = {"Line0", "inputlines"};
    } else if (name == "routing") {
        parts.routing = true;
    } else if (name == "input lines only") {
        parts.lines = {{"Line0", "Input"}, {"Line1", "Input"}};
    } else {
        error = "no camera named " + name.toStdString();
        return SimCameraPtr();
    }
    return WidgetTestSupport::Build(name.toStdString(), parts, error);
}

}  // namespace

class TestWidgetConstruction : public QObject {
    Q_OBJECT

private slots:
    void shouldRefuseACameraWithoutTriggerFunctionality_data();
    void shouldRefuseACameraWithoutTriggerFunctionality();
    void shouldBuildTheTabNamedTriggerIOForTheTriggerFeatures_data();
    void shouldBuildTheTabNamedTriggerIOForTheTriggerFeatures();
    void shouldNameTheTabWithoutAParentToo();
    void shouldWatchTheTwentyTwoFeatureNamesInTheirOrder();
    void shouldRegisterObserversOnTheWatchedFeaturesTheCameraHas_data();
    void shouldRegisterObserversOnTheWatchedFeaturesTheCameraHas();
    void shouldNotWatchTheUserOutputSelectorItself();
    void shouldGiveTheInputGroup470PixelsOnlyWhenTheSourceOffersInputLines_data();
    void shouldGiveTheInputGroup470PixelsOnlyWhenTheSourceOffersInputLines();
    void shouldCreateTheExposureAutoComboInPreferenceToTheExposureModeCombo_data();
    void shouldCreateTheExposureAutoComboInPreferenceToTheExposureModeCombo();
    void shouldMakeTheTriggerGroupTallerForTheLineSelectorRow_data();
    void shouldMakeTheTriggerGroupTallerForTheLineSelectorRow();
    void shouldHideSelectableOutputOnlyWithoutOutputLines_data();
    void shouldHideSelectableOutputOnlyWithoutOutputLines();
};

void TestWidgetConstruction::shouldRefuseACameraWithoutTriggerFunctionality_data()
{
    QTest::addColumn<QString>("camera");
    QTest::newRow("model without trigger features") << "SIM-NO-TRIGGER";
    // Names are compared exactly: near misses do not count.
    QTest::newRow("names that only look alike") << "names that only look alike";
}

void TestWidgetConstruction::shouldRefuseACameraWithoutTriggerFunctionality()
{
    QFETCH(QString, camera);
    std::string error;
    SimCameraPtr sim = CameraFor(camera, error);
    QVERIFY2(sim, error.c_str());
    QCOMPARE(sim->Open(), 0);

    QWidget page;
    page.setAccessibleName("before");
    bool refused = false;
    try {
        WidgetTestSupport::Tab tab(TestSupport::FeaturesOf(sim), &page);
    } catch (const TENotSupported& refusal) {
        refused = true;
        QCOMPARE(refusal.m_ErrorCode, 4);
        QCOMPARE(refusal.m_Origin, QString("IOTriggerWidget"));
        QCOMPARE(refusal.m_Message, QString("Trigger functionality not available, widget not constructed"));
        // The plug-in catches the base class; the refusal must reach it as one.
        const TabExtensionException& general = refusal;
        QCOMPARE(general.m_ErrorCode, 4);
    }
    QVERIFY(refused);
    // The empty name is given to the page before the refusal.
    QCOMPARE(page.accessibleName(), QString(""));
    QVERIFY(page.findChildren<QWidget*>().isEmpty());
}

void TestWidgetConstruction::shouldBuildTheTabNamedTriggerIOForTheTriggerFeatures_data()
{
    TestSupport::AddTriggerModels("camera");
    QTest::newRow("line selector, no output levels") << "lines without levels";
    QTest::newRow("LineOutLevels alone") << "LineOutLevels only";
    QTest::newRow("SyncOutLevels alone") << "SyncOutLevels only";
}

void TestWidgetConstruction::shouldBuildTheTabNamedTriggerIOForTheTriggerFeatures()
{
    QFETCH(QString, camera);
    std::string error;
    SimCameraPtr sim = CameraFor(camera, error);
    QVERIFY2(sim, error.c_str());

    std::unique_ptr<WidgetTestSupport> support;
    try {
        support.reset(new WidgetTestSupport(sim));
    } catch (const TabExtensionException& refusal) {
        QFAIL(qPrintable("refused: " + refusal.m_Message));
    }
    QCOMPARE(support->TabWidget()->accessibleName(), QString("Trigger IO"));
    QCOMPARE(support->Page()->accessibleName(), QString("Trigger IO"));
    QCOMPARE(support->TabWidget()->objectName(), QString("IOTriggerWidget"));
    // Idle camera: the lock hint starts hidden.
    QVERIFY(support->Find<QLabel>("l_notAcquireHint")->isHidden());
}

void TestWidgetConstruction::shouldNameTheTabWithoutAParentToo()
{
    SimCameraPtr sim = WidgetTestSupport::Model("SIM-LINE-SFNC");
    QCOMPARE(sim->Open(), 0);
    std::unique_ptr<WidgetTestSupport::Tab> tab(new WidgetTestSupport::Tab(TestSupport::FeaturesOf(sim), nullptr));
    QCOMPARE(tab->accessibleName(), QString("Trigger IO"));
    QVERIFY(tab->parentWidget() == nullptr);
}

void TestWidgetConstruction::shouldWatchTheTwentyTwoFeatureNamesInTheirOrder()
{
    WidgetTestSupport support(WidgetTestSupport::Model("SIM-LINE-ROUTING"));
    const QStringList watched = support.TabWidget()->ObservedFeatures();
    QCOMPARE(watched.size(), 22);
    QCOMPARE(watched, WidgetTestSupport::WatchedFeatureNames());
    QVERIFY(watched.contains("UserOutSelector"));
    QVERIFY(!watched.contains("UserOutputSelector"));
}

void TestWidgetConstruction::shouldRegisterObserversOnTheWatchedFeaturesTheCameraHas_data()
{
    TestSupport::AddTriggerModels();
}

void TestWidgetConstruction::shouldRegisterObserversOnTheWatchedFeaturesTheCameraHas()
{
    QFETCH(QString, model);
    WidgetTestSupport support(WidgetTestSupport::Model(model.toStdString()));

    // The last construction step registers the observer on each watched
    // feature the camera has, in the camera's order, and queues its name.
    const QStringList watched = WidgetTestSupport::WatchedFeatureNames();
    QStringList expected;
    for (const QString& name : WidgetTestSupport::FeatureNamesOf(support.Camera())) {
        if (watched.contains(name))
            expected << name;
    }
    QVERIFY(expected.size() >= 10);
    QCOMPARE(support.TabWidget()->ChangedFeatures(), expected);
}

void TestWidgetConstruction::shouldNotWatchTheUserOutputSelectorItself()
{
    WidgetTestSupport support(WidgetTestSupport::Model("SIM-LINE-ROUTING"));
    support.Camera()->WaitForNotifications(5000);
    QCoreApplication::processEvents();
    support.TabWidget()->ClearChangedFeatures();

    // The selector reports itself and the value it selects; only the value is watched.
    QCOMPARE(support.Camera()->ChangeFromCamera("UserOutputSelector", "UserOutput1"), 0);
    // Not among the watched names at all.
    QCOMPARE(support.Camera()->ChangeFromCamera("TriggerDelay", "5"), 0);
    QVERIFY(support.Camera()->WaitForNotifications(5000));
    QCoreApplication::processEvents();
    QCOMPARE(support.TabWidget()->ChangedFeatures(), QStringList{"UserOutputValue"});

    QCOMPARE(support.Camera()->ChangeFromCamera("TriggerActivation", "FallingEdge"), 0);
    QVERIFY(support.Camera()->WaitForNotifications(5000));
    QCoreApplication::processEvents();
    QCOMPARE(support.TabWidget()->ChangedFeatures(), (QStringList{"UserOutputValue", "TriggerActivation"}));
}

void TestWidgetConstruction::shouldGiveTheInputGroup470PixelsOnlyWhenTheSourceOffersInputLines_data()
{
    QTest::addColumn<QString>("camera");
    QTest::addColumn<int>("height");
    QTest::newRow("line routing model") << "SIM-LINE-ROUTING" << 470;
    QTest::newRow("InputLines as last source") << "InputLines last" << 470;
    // Without the entry the form's 425 pixels stay.
    QTest::newRow("line sfnc model") << "SIM-LINE-SFNC" << 425;
    QTest::newRow("sync out model") << "SIM-SYNCOUT" << 425;
    QTest::newRow("inputlines in lower case") << "inputlines lower-case" << 425;
}

void TestWidgetConstruction::shouldGiveTheInputGroup470PixelsOnlyWhenTheSourceOffersInputLines()
{
    QFETCH(QString, camera);
    QFETCH(int, height);
    std::string error;
    SimCameraPtr sim = CameraFor(camera, error);
    QVERIFY2(sim, error.c_str());
    WidgetTestSupport support(sim);

    QGroupBox* input = support.Find<QGroupBox>("gb_TriggerInput");
    QVERIFY(input != nullptr);
    QCOMPARE(input->minimumHeight(), height);
    QCOMPARE(input->maximumHeight(), height);
}

void TestWidgetConstruction::shouldCreateTheExposureAutoComboInPreferenceToTheExposureModeCombo_data()
{
    QTest::addColumn<QString>("camera");
    QTest::addColumn<QStringList>("autoEntries");  // empty: no exposure auto combo
    QTest::addColumn<QStringList>("modeEntries");  // empty: no exposure mode combo
    QTest::newRow("both conditions hold")
        << "auto other and mode Timed" << QStringList{"Off", "Continuous", "other"} << QStringList();
    QTest::newRow("exposure auto alone") << "auto other only" << QStringList{"Off", "other"} << QStringList();
    QTest::newRow("exposure mode alone") << "mode Timed only" << QStringList() << QStringList{"Timed"};
    // The tests of "other" and "Timed" are case-sensitive.
    QTest::newRow("Other is not other") << "auto Other capitalised" << QStringList()
                                        << QStringList{"Timed", "TriggerWidth"};
    QTest::newRow("timed is not Timed") << "mode timed lower-case" << QStringList() << QStringList();
    QTest::newRow("sync out model") << "SIM-SYNCOUT" << QStringList{"Off", "Once", "Continuous", "other"}
                                    << QStringList();
    QTest::newRow("line sfnc model") << "SIM-LINE-SFNC" << QStringList() << QStringList{"Timed", "TriggerWidth"};
}

void TestWidgetConstruction::shouldCreateTheExposureAutoComboInPreferenceToTheExposureModeCombo()
{
    QFETCH(QString, camera);
    QFETCH(QStringList, autoEntries);
    QFETCH(QStringList, modeEntries);
    std::string error;
    SimCameraPtr sim = CameraFor(camera, error);
    QVERIFY2(sim, error.c_str());
    WidgetTestSupport support(sim);

    QComboBox* exposureAuto = support.Find<QComboBox>("combo_ExposureAuto");
    QComboBox* exposureMode = support.Find<QComboBox>("combo_ExposureMode");
    QLabel* autoLabel = support.Find<QLabel>("l_ExposureAuto");
    QLabel* modeLabel = support.Find<QLabel>("l_ExposureMode");

    QCOMPARE(exposureAuto != nullptr, !autoEntries.isEmpty());
    QCOMPARE(autoLabel != nullptr, !autoEntries.isEmpty());
    if (exposureAuto != nullptr) {
        QCOMPARE(TestSupport::ItemTexts(exposureAuto), autoEntries);
        QCOMPARE(exposureAuto->currentText(), QString("Off"));
        QCOMPARE(autoLabel->text(), QString("Exp. Auto:"));
    }

    QCOMPARE(exposureMode != nullptr, !modeEntries.isEmpty());
    QCOMPARE(modeLabel != nullptr, !modeEntries.isEmpty());
    if (exposureMode != nullptr) {
        QCOMPARE(TestSupport::ItemTexts(exposureMode), modeEntries);
        QCOMPARE(exposureMode->currentText(), QString("Timed"));
        QCOMPARE(modeLabel->text(), QString("Exp. Mode:"));
    }
}

void TestWidgetConstruction::shouldMakeTheTriggerGroupTallerForTheLineSelectorRow_data()
{
    TestSupport::AddTriggerModels("camera", "lineRow", {"SIM-LINE-ROUTING"});
    QTest::newRow("camera with routing") << "routing" << true;
}

void TestWidgetConstruction::shouldMakeTheTriggerGroupTallerForTheLineSelectorRow()
{
    QFETCH(QString, camera);
    QFETCH(bool, lineRow);
    std::string error;
    SimCameraPtr sim = CameraFor(camera, error);
    QVERIFY2(sim, error.c_str());
    WidgetTestSupport support(sim);

    QGroupBox* trigger = support.Find<QGroupBox>("gb_Trigger");
    QVERIFY(trigger != nullptr);
    QCOMPARE(trigger->title(), QString("Trigger"));
    const int height = lineRow ? 220 : 170;
    QCOMPARE(trigger->minimumHeight(), height);
    QCOMPARE(trigger->maximumHeight(), height);
    QCOMPARE(support.Find<QComboBox>("combo_InputLineSelector") != nullptr, lineRow);
    QCOMPARE(support.Find<QCheckBox>("cb_LineRouting") != nullptr, lineRow);
    QCOMPARE(support.Find<QLabel>("l_InputLineSelector") != nullptr, lineRow);
    QCOMPARE(support.Find<QLabel>("l_LineRouting") != nullptr, lineRow);

    QGroupBox* acquisition = support.Find<QGroupBox>("gb_Acquisition");
    QVERIFY(acquisition != nullptr);
    QCOMPARE(acquisition->minimumHeight(), 125);
    QCOMPARE(acquisition->maximumHeight(), 125);
    QGroupBox* quick = support.Find<QGroupBox>("gb_QuickSettings");
    QVERIFY(quick != nullptr);
    QCOMPARE(quick->minimumHeight(), 75);
    QCOMPARE(quick->maximumHeight(), 75);
}

void TestWidgetConstruction::shouldHideSelectableOutputOnlyWithoutOutputLines_data()
{
    QTest::addColumn<QString>("camera");
    QTest::addColumn<bool>("hasOutputs");
    QTest::newRow("every line an input") << "input lines only" << false;
    QTest::newRow("line routing model") << "SIM-LINE-ROUTING" << true;
    QTest::newRow("sync out model") << "SIM-SYNCOUT" << true;
}

void TestWidgetConstruction::shouldHideSelectableOutputOnlyWithoutOutputLines()
{
    QFETCH(QString, camera);
    QFETCH(bool, hasOutputs);
    std::string error;
    SimCameraPtr sim = CameraFor(camera, error);
    QVERIFY2(sim, error.c_str());
    WidgetTestSupport support(sim);
    QVERIFY(support.Show());

    QCOMPARE(support.TabWidget()->Outputs().isEmpty(), !hasOutputs);
    QCOMPARE(support.Find<QGroupBox>("gb_SelectOutput")->isVisible(), hasOutputs);
    // The other groups stay either way.
    QVERIFY(support.Find<QGroupBox>("gb_TriggerInput")->isVisible());
    QVERIFY(support.Find<QGroupBox>("gb_Output")->isVisible());
}

QTEST_MAIN(TestWidgetConstruction)
#include "tst_widgetconstruction.moc"
