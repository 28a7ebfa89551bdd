// The tab's name and texts in German, from the translation beside the plug-in.

#include "IOMonitorWidget.h"
#include "SimTestSupport.h"

#include <QCoreApplication>
#include <QGroupBox>
#include <QPushButton>
#include <QTableWidget>
#include <QtTest>

class TestMonitorGerman : public QObject {
    Q_OBJECT

private slots:
    void shouldNameTheTabInGerman()
    {
        const TestSupport::SimCameraPtr camera = TestSupport::OpenModel("SIM-LINE-SFNC");
        QWidget page;
        IOMonitorWidget widget(TestSupport::FeaturesOf(camera), &page);
        QCOMPARE(page.accessibleName(), QString("E/A-Monitor"));
        QCOMPARE(widget.findChild<QGroupBox*>("gb_Counters")->title(), QString::fromUtf8("Zähler"));
    }

    void shouldShowTheWiringSelfTestInGerman()
    {
        const TestSupport::SimCameraPtr camera = TestSupport::OpenModel("SIM-LINE-SFNC");
        QWidget page;
        IOMonitorWidget widget(TestSupport::FeaturesOf(camera), &page);
        QPushButton* test = widget.findChild<QPushButton*>("pb_TestWiring");
        QVERIFY(test != nullptr);
        QCOMPARE(test->text(), QString::fromUtf8("Verdrahtung testen\u2026"));
        QCOMPARE(widget.findChild<QPushButton*>("pb_CancelWiringTest")->text(), QString("Abbrechen"));
        QCOMPARE(widget.findChild<QPushButton*>("pb_RestoreOutputs")->text(),
                 QString::fromUtf8("Ausgänge wiederherstellen"));
        QTableWidget* result = widget.findChild<QTableWidget*>("tw_WiringResult");
        QVERIFY(result != nullptr);
        QCOMPARE(result->horizontalHeaderItem(0)->text(), QString::fromUtf8("Ausgang \u2192 Eingang"));
    }

    // The timing sketch paints its texts and the self-test composes its
    // findings as it runs: the translation the tab installed has them.
    void shouldTranslateTheTextsTheToolsPaintOrComposeLater_data()
    {
        QTest::addColumn<QString>("context");
        QTest::addColumn<QString>("english");
        QTest::addColumn<QString>("german");
        QTest::newRow("exposure") << "TimingSketchView"
                                  << "Exposure"
                                  << "Belichtung";
        QTest::newRow("cycle") << "TimingSketchView" << QString::fromUtf8("one cycle: %1 \u00b5s")
                               << QString::fromUtf8("ein Zyklus: %1 \u00b5s");
        QTest::newRow("nothing wired") << "WiringSelfTest" << QString::fromUtf8("%1 \u2192 (nothing)")
                                       << QString::fromUtf8("%1 \u2192 (nichts)");
    }
    void shouldTranslateTheTextsTheToolsPaintOrComposeLater()
    {
        QFETCH(QString, context);
        QFETCH(QString, english);
        QFETCH(QString, german);
        const TestSupport::SimCameraPtr camera = TestSupport::OpenModel("SIM-LINE-SFNC");
        QWidget page;
        IOMonitorWidget widget(TestSupport::FeaturesOf(camera), &page);
        QCOMPARE(QCoreApplication::translate(context.toLatin1().constData(), english.toUtf8().constData()), german);
    }
};

int main(int argc, char** argv)
{
    // The system locale is read once, before the application exists.
    qputenv("LC_ALL", "de_DE.UTF-8");
    qputenv("LANG", "de_DE.UTF-8");
    QApplication app(argc, argv);
    TestMonitorGerman test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_monitorgerman.moc"
