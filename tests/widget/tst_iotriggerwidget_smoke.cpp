// Smoke test of the "Trigger IO" widget: it is built, shown and refreshed once
// on every simulated camera model, and refused on the one without trigger
// features.

#include "IOTriggerWidget.h"
#include "SimTestSupport.h"
#include "TENotSupported.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QtTest>

#include <memory>

using TestSupport::DeliverNotifications;
using TestSupport::FeaturesOf;
using TestSupport::OpenModel;
using TestSupport::SimCameraPtr;

class TestIOTriggerWidgetSmoke : public QObject {
    Q_OBJECT

private slots:
    void shouldBuildShowAndRefreshTheTab_data()
    {
        TestSupport::AddTriggerModels("model", "hasRouting", {"SIM-LINE-ROUTING"});
    }

    void shouldBuildShowAndRefreshTheTab()
    {
        QFETCH(QString, model);
        QFETCH(bool, hasRouting);

        SimCameraPtr camera = OpenModel(model);
        QVERIFY(camera);

        QWidget page;
        std::unique_ptr<IOTriggerWidget> widget(new IOTriggerWidget(FeaturesOf(camera), &page));
        QCOMPARE(widget->objectName(), QString("IOTriggerWidget"));
        QCOMPARE(widget->accessibleName(), QString("Trigger IO"));
        QCOMPARE(page.accessibleName(), QString("Trigger IO"));

        const char* alwaysThere[] = {"combo_TriggerSource",
                                     "combo_TriggerActivation",
                                     "combo_TriggerSelector",
                                     "combo_TriggerMode",
                                     "combo_AcquisitionMode",
                                     "pb_SWTrigger",
                                     "spin_AcquisitionFrameCount",
                                     "pb_Edge",
                                     "pb_Level",
                                     "pb_Bulk"};
        for (const char* name : alwaysThere)
            QVERIFY2(widget->findChild<QWidget*>(name) != nullptr, name);
        QCOMPARE(widget->findChild<QComboBox*>("combo_InputLineSelector") != nullptr, hasRouting);
        QCOMPARE(widget->findChild<QCheckBox*>("cb_LineRouting") != nullptr, hasRouting);
        // Automatic exposure and exposure mode never both exist.
        QVERIFY(widget->findChild<QComboBox*>("combo_ExposureAuto") == nullptr ||
                widget->findChild<QComboBox*>("combo_ExposureMode") == nullptr);

        // One output row per output line, and nothing beyond.
        QVERIFY(!widget->Outputs().isEmpty());
        for (int i = 0; i < widget->Outputs().size(); ++i) {
            QLabel* label = widget->findChild<QLabel*>(QString("l_Out_%1").arg(i));
            QVERIFY(label != nullptr);
            QCOMPARE(label->text(), widget->Outputs().at(i) + ": ");
            QVERIFY(widget->findChild<QComboBox*>(QString("combo_OutSource_%1").arg(i)) != nullptr);
        }
        QVERIFY(widget->findChild<QComboBox*>(QString("combo_OutSource_%1").arg(widget->Outputs().size())) == nullptr);

        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        QVERIFY(widget->isVisible());

        // A change by the camera itself reaches the trigger source combo at the next tick.
        QComboBox* source = widget->findChild<QComboBox*>("combo_TriggerSource");
        QVERIFY(source->count() > 1);
        const QString otherSource = source->itemText(source->currentIndex() == 0 ? 1 : 0);
        QCOMPARE(camera->ChangeFromCamera("TriggerSource", otherSource.toStdString()), 0);
        DeliverNotifications(camera, 5000);
        camera->ClearJournal();

        QVERIFY(QMetaObject::invokeMethod(widget.get(), "updateTimer", Qt::DirectConnection));
        QCOMPARE(source->currentText(), otherSource);
        QCOMPARE(source->currentText(), QString::fromStdString(camera->ValueText("TriggerSource")));

        // The refresh shows values and never writes one back: the only writes are
        // the selector round trips, which restore every selector.
        for (const ZMT::PkoAPI::Sim::JournalEntry& entry : camera->Journal())
            QVERIFY2(TestSupport::IsSelector(QString::fromStdString(entry.feature)), entry.feature.c_str());
    }

    void shouldRefuseACameraWithoutTriggerFeatures()
    {
        SimCameraPtr camera = OpenModel("SIM-NO-TRIGGER");
        QVERIFY(camera);

        QWidget page;
        page.setAccessibleName("before");
        bool refused = false;
        try {
            IOTriggerWidget widget(FeaturesOf(camera), &page);
        } catch (const TENotSupported& refusal) {
            refused = true;
            QCOMPARE(refusal.m_ErrorCode, 4);
            QCOMPARE(refusal.m_Origin, QString("IOTriggerWidget"));
            QCOMPARE(refusal.m_Message, QString("Trigger functionality not available, widget not constructed"));
        }
        QVERIFY(refused);
        QCOMPARE(page.accessibleName(), QString(""));
        QVERIFY(page.findChildren<QWidget*>().isEmpty());
    }
};

QTEST_MAIN(TestIOTriggerWidgetSmoke)
#include "tst_iotriggerwidget_smoke.moc"
