// The tab's name and texts in German, from the translation beside the plug-in.

#include "IOMonitorWidget.h"
#include "SimTestSupport.h"

#include <QGroupBox>
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
