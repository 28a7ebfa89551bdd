// The strip's data model on its own: changes, edges, marks, the window.

#include "SignalHistory.h"

#include <QtTest>

class TestMonitorHistory : public QObject {
    Q_OBJECT

private slots:
    void shouldKeepOnlyChanges()
    {
        SignalHistory history(10000.0);
        history.SetLines({"Line0"});
        history.AddSample(0.0, 0);
        history.AddSample(50.0, 0);
        history.AddSample(100.0, 1);
        history.AddSample(150.0, 1);
        history.AddSample(200.0, 0);
        QCOMPARE(static_cast<int>(history.Changes(0).size()), 3);
        QCOMPARE(history.RisingEdges(0), 1);
        QVERIFY(history.LevelAt(0, 120.0));
        QVERIFY(!history.LevelAt(0, 250.0));
    }

    void shouldDropWhatLeavesTheWindowButKeepTheLevelAtItsStart()
    {
        SignalHistory history(1000.0);
        history.SetLines({"Line0"});
        history.AddSample(0.0, 1);
        history.AddMark(SignalHistory::MarkKind::Frame, 10.0);
        history.AddSample(5000.0, 1);
        QCOMPARE(static_cast<int>(history.Changes(0).size()), 1);
        QVERIFY(history.LevelAt(0, history.WindowStartMs()));
        QCOMPARE(history.MarkCount(SignalHistory::MarkKind::Frame), 0);
        QCOMPARE(history.RisingEdges(0), 0);
    }

    void shouldClampTheWindow_data()
    {
        QTest::addColumn<double>("asked");
        QTest::addColumn<double>("expected");
        QTest::newRow("too short") << 10.0 << 1000.0;
        QTest::newRow("too long") << 600000.0 << 60000.0;
        QTest::newRow("not a number") << std::nan("") << 1000.0;
        QTest::newRow("inside") << 30000.0 << 30000.0;
    }
    void shouldClampTheWindow()
    {
        QFETCH(double, asked);
        QFETCH(double, expected);
        SignalHistory history(asked);
        QCOMPARE(history.WindowMs(), expected);
    }

    void shouldIgnoreUnknownLines()
    {
        SignalHistory history;
        history.SetLines({"A"});
        history.AddLevel(5, 1.0, true);
        history.AddLevel(-1, 1.0, true);
        QVERIFY(history.Changes(5).empty());
        QCOMPARE(static_cast<int>(history.Changes(0).size()), 0);
    }
};

QTEST_APPLESS_MAIN(TestMonitorHistory)
#include "tst_monitorhistory.moc"
