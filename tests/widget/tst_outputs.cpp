// The output rows of the "Trigger IO" tab on all three naming generations:
// which lines get a row, how the group and its header look, what a change of
// source, inversion or status writes to the camera (from the camera's
// journal), what the rows show afterwards and what goes to the debug stream.

#include "OutputTestSupport.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QApplication>
#include <QPalette>
#include <QtTest>

using namespace OutputTest;
using ZMT::PkoAPI::Sim::Operation;

namespace {

// The camera of one row of a data-driven test: a ready-made model by its ID,
// or one of the cameras made here.
SimCameraPtr MakeCamera(const QString& key)
{
    if (key.startsWith("SIM-"))
        return OpenModel(key);
    if (key == "lines, read-only status") {
        LineCamera camera;
        camera.lines = {"Line0", "Line1"};
        camera.outputs = {"Line0", "Line1"};
        camera.sourceAt = {{"Line0", "Direct"}, {"Line1", "Off"}};
        camera.statusReadOnly = true;
        return camera.Open();
    }
    if (key == "lines, writable status") {
        LineCamera camera;
        camera.lines = {"Line0", "Line1"};
        camera.outputs = {"Line0", "Line1"};
        camera.sourceAt = {{"Line0", "Direct"}, {"Line1", "Off"}};
        return camera.Open();
    }
    if (key == "mask, read-only levels") {
        MaskCamera camera;
        camera.levelsReadOnly = true;
        return camera.Open();
    }
    if (key == "mask, writable levels")
        return MaskCamera().Open();
    if (key == "SynOut names") {
        // Spelled without the c: the names the header asks for.
        ZMT::PkoAPI::Sim::CameraBuilder builder("SIM-TEST-SYNOUT", "Test SynOut");
        builder.AddEnumeration("SyncOutSelector", {"SyncOut1"}, "SyncOut1").Selects({"SyncOutSource"});
        builder.AddEnumeration("SyncOutSource", {"GPO", "Exposing"}, "GPO");
        builder.AddEnumeration("SynOutSource", {"GPO", "Exposing"}, "GPO");
        builder.AddEnumeration("SynOutPolarity", {"Normal", "Invert"}, "Normal");
        builder.AddInteger("SyncOutLevels", 0, 0, 1);
        return Opened(builder.Build());
    }
    return SimCameraPtr();
}

// Restores the application's palette when it goes.
class PaletteGuard {
public:
    explicit PaletteGuard(const QPalette& palette) : m_Saved(QApplication::palette())
    {
        QApplication::setPalette(palette);
    }
    ~PaletteGuard() { QApplication::setPalette(m_Saved); }
    PaletteGuard(const PaletteGuard&) = delete;
    PaletteGuard& operator=(const PaletteGuard&) = delete;

private:
    QPalette m_Saved;
};

}  // namespace

class TestOutputs : public QObject {
    Q_OBJECT

private slots:
    // Rows, group and header.
    void shouldBuildOneRowPerOutputLine_data();
    void shouldBuildOneRowPerOutputLine();
    void shouldLayOutEachRowAcrossSixColumns();
    void shouldSizeTheOutputGroupByItsOutputs_data();
    void shouldSizeTheOutputGroupByItsOutputs();
    void shouldKeepOnlyTheHeaderRowWhenNoLineIsAnOutput_data();
    void shouldKeepOnlyTheHeaderRowWhenNoLineIsAnOutput();
    void shouldNameTheHeadersAfterTheCamerasFeatures_data();
    void shouldNameTheHeadersAfterTheCamerasFeatures();
    void shouldPaintTheHeadersInTheBackgroundColourTwoPixelsHigh();

    // Generation 1.
    void shouldWriteTheChosenSourceOfALineThroughTheSelector_data();
    void shouldWriteTheChosenSourceOfALineThroughTheSelector();
    void shouldWriteTheSourceToEveryRowShowingIt_data();
    void shouldWriteTheSourceToEveryRowShowingIt();
    void shouldWriteEveryLinesInverterAndShowTheResultingStatus_data();
    void shouldWriteEveryLinesInverterAndShowTheResultingStatus();
    void shouldWriteTheStatusOfADirectLineOnly_data();
    void shouldWriteTheStatusOfADirectLineOnly();
    void shouldCheckTheBoxesForANaNRead();
    void shouldShowTheLineCamerasValuesAfterARefresh();

    // Generations 2 and 3.
    void shouldWriteTheChosenSourceOfAMaskOutput_data();
    void shouldWriteTheChosenSourceOfAMaskOutput();
    void shouldWriteEveryOutputsPolarity_data();
    void shouldWriteEveryOutputsPolarity();
    void shouldWriteTheStatusBoxesAsOneMask_data();
    void shouldWriteTheStatusBoxesAsOneMask();
    void shouldWrapTheMaskBitsAfter32Outputs_data();
    void shouldWrapTheMaskBitsAfter32Outputs();
    void shouldServeALineOutCameraThroughTheFallbackNames();

    // Both.
    void shouldEnableTheStatusBoxOnlyForAWritableDirectOrGpoState_data();
    void shouldEnableTheStatusBoxOnlyForAWritableDirectOrGpoState();
    void shouldReportAStatusTheCameraDoesNotTake_data();
    void shouldReportAStatusTheCameraDoesNotTake();

    // Failures.
    void shouldFinishTheInversionRoundTripWhenTheCameraRefusesAWrite_data();
    void shouldFinishTheInversionRoundTripWhenTheCameraRefusesAWrite();
    void shouldLogAnUnreadableSelectorWhenWritingItBackAfterASourceChange_data();
    void shouldLogAnUnreadableSelectorWhenWritingItBackAfterASourceChange();
    void shouldLogAnUnreadableSelectorWhenWritingItBackAfterAnInversion_data();
    void shouldLogAnUnreadableSelectorWhenWritingItBackAfterAnInversion();
    void shouldLogAnUnreadableSelectorWhenRefreshing_data();
    void shouldLogAnUnreadableSelectorWhenRefreshing();
    void shouldLogEveryLineOfGetOutputsWhenTheLineSelectorIsUnreadable();
};

// ---------------------------------------------------------------------------
// Rows, group and header

void TestOutputs::shouldBuildOneRowPerOutputLine_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QStringList>("outputs");
    // Generation 1: only lines whose "LineMode" reads "Output".
    QTest::newRow("line routing") << "SIM-LINE-ROUTING" << QStringList{"Line1", "Line3"};
    QTest::newRow("line sfnc") << "SIM-LINE-SFNC" << QStringList{"Line1", "Line3"};
    // Generations 2 and 3: every selector entry.
    QTest::newRow("sync out") << "SIM-SYNCOUT" << QStringList{"SyncOut1", "SyncOut2", "SyncOut3", "SyncOut4"};
    QTest::newRow("line out") << "SIM-LINEOUT" << QStringList{"LineOut1", "LineOut2", "LineOut3", "LineOut4"};
}

void TestOutputs::shouldBuildOneRowPerOutputLine()
{
    QFETCH(QString, model);
    QFETCH(QStringList, outputs);
    SimCameraPtr camera = OpenModel(model);
    QVERIFY(camera);

    Tab tab(camera);
    QCOMPARE(tab.Widget()->Outputs(), outputs);
    for (int i = 0; i < outputs.size(); ++i) {
        QVERIFY(tab.Label(i));
        QCOMPARE(tab.Label(i)->text(), outputs.at(i) + ": ");
        QVERIFY(tab.Source(i));
        QVERIFY(tab.Invert(i));
        QVERIFY(tab.Status(i));
        QVERIFY(tab.UserSelector(i));
        QVERIFY(tab.UserValue(i));
    }
    QVERIFY(tab.Label(outputs.size()) == nullptr);
    QVERIFY(tab.Source(outputs.size()) == nullptr);
    QVERIFY(tab.Status(outputs.size()) == nullptr);
}

void TestOutputs::shouldLayOutEachRowAcrossSixColumns()
{
    SimCameraPtr camera = OpenModel("SIM-LINE-SFNC");
    QVERIFY(camera);
    Tab tab(camera);

    QGridLayout* grid = tab.OutputGrid();
    QVERIFY(grid);
    for (int i = 0; i < 2; ++i) {
        const int row = i + 1;  // row 0 holds the header
        QWidget* expected[] = {tab.Label(i),  tab.Source(i),       tab.Invert(i),
                               tab.Status(i), tab.UserSelector(i), tab.UserValue(i)};
        for (int column = 0; column < 6; ++column) {
            QLayoutItem* item = grid->itemAtPosition(row, column);
            QVERIFY(item);
            QCOMPARE(item->widget(), expected[column]);
            int r = -1, c = -1, rowSpan = 0, columnSpan = 0;
            grid->getItemPosition(grid->indexOf(expected[column]), &r, &c, &rowSpan, &columnSpan);
            QCOMPARE(rowSpan, 1);
            QCOMPARE(columnSpan, 1);
        }
        QCOMPARE(tab.Source(i)->maximumWidth(), 95);
        QCOMPARE(tab.UserSelector(i)->layoutDirection(), Qt::RightToLeft);
    }
    const int stretches[] = {1, 3, 1, 1, 1, 1};
    for (int column = 0; column < 6; ++column)
        QCOMPARE(grid->columnStretch(column), stretches[column]);

    const char* headers[] = {"l_HeaderSource", "l_HeaderInvert", "l_HeaderStatus", "l_HeaderUserOutSel",
                             "l_HeaderUserValue"};
    for (int column = 1; column <= 5; ++column) {
        QLayoutItem* item = grid->itemAtPosition(0, column);
        QVERIFY(item);
        QCOMPARE(item->widget(), tab.Find<QLabel>(headers[column - 1]));
    }
    QCOMPARE(grid->itemAtPosition(0, 1)->alignment(), Qt::Alignment(Qt::AlignLeft));
    QCOMPARE(grid->itemAtPosition(0, 2)->alignment(), Qt::AlignHCenter | Qt::AlignVCenter);
    QCOMPARE(grid->itemAtPosition(0, 3)->alignment(), Qt::AlignHCenter | Qt::AlignVCenter);
    QCOMPARE(grid->itemAtPosition(0, 4)->alignment(), Qt::Alignment(Qt::AlignLeft));
}

void TestOutputs::shouldSizeTheOutputGroupByItsOutputs_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<int>("height");
    // 35 per output + 85, less 35 without "LineOutLevels"/"SyncOutLevels".
    QTest::newRow("line routing: 2 outputs, no levels") << "SIM-LINE-ROUTING" << 35 * 2 + 85 - 35;
    QTest::newRow("line sfnc: 2 outputs, no levels") << "SIM-LINE-SFNC" << 35 * 2 + 85 - 35;
    QTest::newRow("sync out: 4 outputs, levels") << "SIM-SYNCOUT" << 35 * 4 + 85;
    QTest::newRow("line out: 4 outputs, levels") << "SIM-LINEOUT" << 35 * 4 + 85;
}

void TestOutputs::shouldSizeTheOutputGroupByItsOutputs()
{
    QFETCH(QString, model);
    QFETCH(int, height);
    SimCameraPtr camera = OpenModel(model);
    QVERIFY(camera);

    Tab tab(camera);
    QVERIFY(tab.OutputGroup());
    QCOMPARE(tab.OutputGroup()->minimumHeight(), height);
    QCOMPARE(tab.OutputGroup()->maximumHeight(), height);
}

void TestOutputs::shouldKeepOnlyTheHeaderRowWhenNoLineIsAnOutput_data()
{
    QTest::addColumn<bool>("withLevels");
    QTest::addColumn<int>("height");
    QTest::newRow("with a levels feature") << true << 85;
    QTest::newRow("without") << false << 50;
}

void TestOutputs::shouldKeepOnlyTheHeaderRowWhenNoLineIsAnOutput()
{
    QFETCH(bool, withLevels);
    QFETCH(int, height);
    LineCamera lines;
    lines.lines = {"Line0", "Line1"};  // both inputs
    lines.withSyncOutLevels = withLevels;
    SimCameraPtr camera = lines.Open();
    QVERIFY(camera);

    Tab tab(camera);
    QVERIFY(tab.Widget()->Outputs().isEmpty());
    QCOMPARE(tab.OutputGroup()->minimumHeight(), height);
    QCOMPARE(tab.OutputGroup()->maximumHeight(), height);
    QVERIFY(tab.Label(0) == nullptr);
    QVERIFY(tab.Source(0) == nullptr);
    // The five header labels and nothing else.
    QGridLayout* grid = tab.OutputGrid();
    QCOMPARE(grid->count(), 5);
    for (int i = 0; i < grid->count(); ++i) {
        int row = -1, column = -1, rowSpan = 0, columnSpan = 0;
        grid->getItemPosition(i, &row, &column, &rowSpan, &columnSpan);
        QCOMPARE(row, 0);
    }
    QVERIFY(tab.Find<QGroupBox>("gb_SelectOutput")->isHidden());
}

void TestOutputs::shouldNameTheHeadersAfterTheCamerasFeatures_data()
{
    QTest::addColumn<QString>("camera");
    QTest::addColumn<QString>("sourceHeader");
    QTest::addColumn<QString>("invertHeader");
    QTest::newRow("line routing") << "SIM-LINE-ROUTING"
                                  << "LineSource:"
                                  << "Invert:";
    QTest::newRow("line sfnc") << "SIM-LINE-SFNC"
                               << "LineSource:"
                               << "Invert:";
    // Only "SynOutSource"/"SynOutPolarity" (without the c) are asked for, so
    // the real "SyncOut*" names get the generation-1 texts.
    QTest::newRow("sync out") << "SIM-SYNCOUT"
                              << "LineSource:"
                              << "Invert:";
    QTest::newRow("line out") << "SIM-LINEOUT"
                              << "LineOutSource:"
                              << "Polarity:";
    QTest::newRow("SynOut names") << "SynOut names"
                                  << "SyncOutSource:"
                                  << "Polarity:";
}

void TestOutputs::shouldNameTheHeadersAfterTheCamerasFeatures()
{
    QFETCH(QString, camera);
    QFETCH(QString, sourceHeader);
    QFETCH(QString, invertHeader);
    SimCameraPtr simCamera = MakeCamera(camera);
    QVERIFY(simCamera);

    Tab tab(simCamera);
    const char* names[] = {"l_HeaderSource", "l_HeaderInvert", "l_HeaderStatus", "l_HeaderUserOutSel",
                           "l_HeaderUserValue"};
    const QString texts[] = {sourceHeader, invertHeader, "Status:", "UserOutSel.:", "User Value:"};
    for (int i = 0; i < 5; ++i) {
        QLabel* header = tab.Find<QLabel>(names[i]);
        QVERIFY2(header, names[i]);
        QCOMPARE(header->text(), texts[i]);
    }
}

void TestOutputs::shouldPaintTheHeadersInTheBackgroundColourTwoPixelsHigh()
{
    QPalette tinted = QApplication::palette();
    tinted.setColor(QPalette::Window, QColor(12, 34, 56));
    PaletteGuard guard(tinted);
    SimCameraPtr camera = OpenModel("SIM-LINEOUT");
    QVERIFY(camera);

    Tab tab(camera);
    QCOMPARE(tab.Widget()->palette().brush(QPalette::Current, QPalette::Window).color(), QColor(12, 34, 56));
    const char* names[] = {"l_HeaderSource", "l_HeaderInvert", "l_HeaderStatus", "l_HeaderUserOutSel",
                           "l_HeaderUserValue"};
    for (const char* name : names) {
        QLabel* header = tab.Find<QLabel>(name);
        QVERIFY2(header, name);
        QCOMPARE(header->styleSheet(), QString("QLabel { color : rgb( 12, 34, 56); }"));
        QCOMPARE(header->maximumHeight(), 2);
    }
}

// ---------------------------------------------------------------------------
// Generation 1

void TestOutputs::shouldWriteTheChosenSourceOfALineThroughTheSelector_data()
{
    AddLineModels();
}

void TestOutputs::shouldWriteTheChosenSourceOfALineThroughTheSelector()
{
    QFETCH(QString, model);
    SimCameraPtr camera = OpenModel(model);
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    QCOMPARE(CameraValue(camera, "LineSelector"), QString("Line0"));
    QCOMPARE(CameraValue(camera, "UserOutputSelector"), QString("UserOutput0"));
    QVERIFY(!tab.Status(1)->isEnabled());
    camera->ClearJournal();
    MessageCapture messages;

    QSignalSpy changes(tab.Source(1), SIGNAL(currentIndexChanged(QString)));
    QVERIFY(ChooseWithKeys(tab.Source(1), "Direct"));
    QCOMPARE(changes.count(), 1);

    const QStringList expected{
        "LineSelector=Line1",  // row 0 shows "ExposureActive": nothing to write
        "LineSelector=Line3",
        "LineSource=Direct",
        "LineSelector=Line0",              // the selector as it was
        "UserOutputSelector=UserOutput0",  // the user-output refresh puts its selector back
    };
    QCOMPARE(Writes(camera), expected);
    QCOMPARE(messages.Texts(), QStringList());
    QCOMPARE(CameraValue(camera, "LineSource", "Line3"), QString("Direct"));
    QCOMPARE(CameraValue(camera, "LineSelector"), QString("Line0"));
    // A direct line's status may now be set by hand; the other's still not.
    QVERIFY(tab.Status(1)->isEnabled());
    QVERIFY(!tab.Status(0)->isEnabled());

    tab.ShowAgain();
    QCOMPARE(tab.Source(0)->currentText(), QString("ExposureActive"));
    QCOMPARE(tab.Source(1)->currentText(), QString("Direct"));
    QVERIFY(tab.Status(1)->isEnabled());
}

void TestOutputs::shouldWriteTheSourceToEveryRowShowingIt_data()
{
    AddLineModels();
}

void TestOutputs::shouldWriteTheSourceToEveryRowShowingIt()
{
    QFETCH(QString, model);
    SimCameraPtr camera = OpenModel(model);
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    QCOMPARE(tab.Source(0)->currentText(), QString("ExposureActive"));
    QCOMPARE(tab.Source(1)->currentText(), QString("Off"));
    camera->ClearJournal();

    QVERIFY(ChooseWithKeys(tab.Source(1), "ExposureActive"));

    // The slot does not know which combo changed: both rows now show the text.
    const QStringList expected{
        "LineSelector=Line1",        "LineSource=ExposureActive", "LineSelector=Line3",
        "LineSource=ExposureActive", "LineSelector=Line0",        "UserOutputSelector=UserOutput0",
    };
    QCOMPARE(Writes(camera), expected);
    QCOMPARE(CameraValue(camera, "LineSource", "Line3"), QString("ExposureActive"));
}

void TestOutputs::shouldWriteEveryLinesInverterAndShowTheResultingStatus_data()
{
    AddLineModels();
}

void TestOutputs::shouldWriteEveryLinesInverterAndShowTheResultingStatus()
{
    QFETCH(QString, model);
    SimCameraPtr camera = OpenModel(model);
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    QVERIFY(!tab.Invert(0)->isChecked());
    QVERIFY(!tab.Status(0)->isChecked());
    camera->ClearJournal();
    MessageCapture messages;

    ClickCheckBox(tab.Invert(0));

    const QStringList expected{
        // Every row's box is written, through the selector.
        "LineSelector=Line1",
        "LineInverter=true",
        "LineSelector=Line3",
        "LineInverter=false",
        "LineSelector=Line0",
        // Then the status boxes are read again, through the selector.
        "LineSelector=Line1",
        "LineSelector=Line3",
        "LineSelector=Line0",
    };
    QCOMPARE(Writes(camera), expected);
    QCOMPARE(messages.Texts(), QStringList());
    QCOMPARE(CameraValue(camera, "LineInverter", "Line1"), QString("true"));
    // An idle output, inverted, is high: the row shows what the camera holds.
    QCOMPARE(CameraValue(camera, "LineStatus", "Line1"), QString("true"));
    QVERIFY(tab.Status(0)->isChecked());
    QVERIFY(!tab.Status(1)->isChecked());

    tab.ShowAgain();
    QVERIFY(tab.Invert(0)->isChecked());
    QVERIFY(!tab.Invert(1)->isChecked());
    QVERIFY(tab.Status(0)->isChecked());
}

void TestOutputs::shouldWriteTheStatusOfADirectLineOnly_data()
{
    AddLineModels();
}

void TestOutputs::shouldWriteTheStatusOfADirectLineOnly()
{
    QFETCH(QString, model);
    SimCameraPtr camera = LineModelWithLine3Source(model, "Direct");
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    QVERIFY(!tab.Status(0)->isEnabled());
    QVERIFY(tab.Status(1)->isEnabled());
    camera->ClearJournal();
    MessageCapture messages;

    // A disabled box does not take the click.
    ClickCheckBox(tab.Status(0));
    QVERIFY(!tab.Status(0)->isChecked());
    QCOMPARE(Writes(camera), QStringList());

    ClickCheckBox(tab.Status(1));
    QStringList expected{
        "LineSelector=Line1",  // "LineStatus" of Line1 is not writable: nothing written
        "LineSelector=Line3",
        "LineStatus=true",
        "LineSelector=Line0",
    };
    QCOMPARE(Writes(camera), expected);
    QCOMPARE(messages.Texts(), QStringList());
    QCOMPARE(CameraValue(camera, "LineStatus", "Line3"), QString("true"));

    tab.ShowAgain();
    QVERIFY(tab.Status(1)->isChecked());
    QVERIFY(!tab.Status(0)->isChecked());

    camera->ClearJournal();
    ClickCheckBox(tab.Status(1));
    expected = QStringList{"LineSelector=Line1", "LineSelector=Line3", "LineStatus=false", "LineSelector=Line0"};
    QCOMPARE(Writes(camera), expected);
    QCOMPARE(CameraValue(camera, "LineStatus", "Line3"), QString("false"));
}

void TestOutputs::shouldCheckTheBoxesForANaNRead()
{
    LineCamera lines;
    lines.lines = {"Line0", "Line1"};
    lines.outputs = {"Line0", "Line1"};
    lines.floatLevels = true;
    SimCameraPtr camera = lines.Open();
    QVERIFY(camera);
    camera->InjectNaN("LineInverter");
    camera->InjectNaN("LineStatus");

    Tab tab(camera);
    QVERIFY(tab.Show());
    for (int row = 0; row < 2; ++row) {
        QVERIFY(tab.Invert(row)->isChecked());
        QVERIFY(tab.Status(row)->isChecked());
    }
    QCOMPARE(CameraValue(camera, "LineInverter", "Line0"), QString("0"));
    QCOMPARE(CameraValue(camera, "LineStatus", "Line0"), QString("0"));

    // The same camera reading 0 leaves them unchecked.
    camera->ClearFaults();
    tab.ShowAgain();
    for (int row = 0; row < 2; ++row) {
        QVERIFY(!tab.Invert(row)->isChecked());
        QVERIFY(!tab.Status(row)->isChecked());
    }
}

void TestOutputs::shouldShowTheLineCamerasValuesAfterARefresh()
{
    SimCameraPtr camera = OpenModel("SIM-LINE-ROUTING");
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());

    QCOMPARE(camera->ChangeFromCamera("LineSource", "UserOutput2", "Line1"), 0);
    QCOMPARE(camera->ChangeFromCamera("LineSource", "Direct", "Line3"), 0);
    QCOMPARE(camera->ChangeFromCamera("LineStatus", "true", "Line3"), 0);
    QCOMPARE(camera->ChangeFromCamera("LineInverter", "true", "Line1"), 0);
    tab.ShowAgain();

    QCOMPARE(tab.Source(0)->currentText(), QString("UserOutput2"));
    QCOMPARE(tab.Source(1)->currentText(), QString("Direct"));
    QVERIFY(tab.Invert(0)->isChecked());
    QVERIFY(!tab.Invert(1)->isChecked());
    // Line1 follows the (low) user output, inverted; Line3 shows its direct level.
    QCOMPARE(CameraValue(camera, "LineStatus", "Line1"), QString("true"));
    QVERIFY(tab.Status(0)->isChecked());
    QVERIFY(tab.Status(1)->isChecked());
    QVERIFY(!tab.Status(0)->isEnabled());
    QVERIFY(tab.Status(1)->isEnabled());
}

// ---------------------------------------------------------------------------
// Generations 2 and 3

void TestOutputs::shouldWriteTheChosenSourceOfAMaskOutput_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("sourceFeature");
    QTest::addColumn<QString>("output");
    QTest::addColumn<QStringList>("expected");
    // Outputs 3 and 4 already show "GPO": they get it written as well.
    QTest::newRow("sync out") << "SIM-SYNCOUT" << 0 << "SyncOutSource"
                              << "SyncOut1" << QStringList{"SyncOutSelector=SyncOut1", "SyncOutSource=GPO",
                                                           "SyncOutSelector=SyncOut2", "SyncOutSelector=SyncOut3",
                                                           "SyncOutSource=GPO",        "SyncOutSelector=SyncOut4",
                                                           "SyncOutSource=GPO",        "SyncOutSelector=SyncOut1"};
    QTest::newRow("line out") << "SIM-LINEOUT" << 1 << "LineOutSource"
                              << "LineOut2" << QStringList{"LineOutSelector=LineOut1", "LineOutSelector=LineOut2",
                                                           "LineOutSource=GPO",        "LineOutSelector=LineOut3",
                                                           "LineOutSource=GPO",        "LineOutSelector=LineOut4",
                                                           "LineOutSource=GPO",        "LineOutSelector=LineOut1"};
}

void TestOutputs::shouldWriteTheChosenSourceOfAMaskOutput()
{
    QFETCH(QString, model);
    QFETCH(int, row);
    QFETCH(QString, sourceFeature);
    QFETCH(QString, output);
    QFETCH(QStringList, expected);
    SimCameraPtr camera = OpenModel(model);
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    QVERIFY(!tab.Status(row)->isEnabled());
    camera->ClearJournal();
    MessageCapture messages;

    QVERIFY(ChooseWithKeys(tab.Source(row), "GPO"));

    QCOMPARE(Writes(camera), expected);
    // No "UserOutputSelector" on these cameras: its kept value reads "" and
    // writing it back hands "" back.
    QCOMPARE(messages.Texts(), QStringList{"Error updateUserOutValue:  \"\""});
    QCOMPARE(CameraValue(camera, sourceFeature.toLatin1().constData(), output.toLatin1().constData()), QString("GPO"));
    QVERIFY(tab.Status(row)->isEnabled());

    tab.ShowAgain();
    QCOMPARE(tab.Source(row)->currentText(), QString("GPO"));
    QVERIFY(tab.Status(row)->isEnabled());
}

void TestOutputs::shouldWriteEveryOutputsPolarity_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("levelsFeature");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("sync out") << "SIM-SYNCOUT"
                              << "SyncOutLevels" << QStringList{"SyncOutSelector=SyncOut1", "SyncOutPolarity=Normal",
                                                                "SyncOutSelector=SyncOut2", "SyncOutPolarity=Invert",
                                                                "SyncOutSelector=SyncOut3", "SyncOutPolarity=Normal",
                                                                "SyncOutSelector=SyncOut4", "SyncOutPolarity=Normal",
                                                                "SyncOutSelector=SyncOut1"};
    QTest::newRow("line out") << "SIM-LINEOUT"
                              << "LineOutLevels" << QStringList{"LineOutSelector=LineOut1", "LineOutPolarity=Normal",
                                                                "LineOutSelector=LineOut2", "LineOutPolarity=Invert",
                                                                "LineOutSelector=LineOut3", "LineOutPolarity=Normal",
                                                                "LineOutSelector=LineOut4", "LineOutPolarity=Normal",
                                                                "LineOutSelector=LineOut1"};
}

void TestOutputs::shouldWriteEveryOutputsPolarity()
{
    QFETCH(QString, model);
    QFETCH(QString, levelsFeature);
    QFETCH(QStringList, expected);
    SimCameraPtr camera = OpenModel(model);
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    QVERIFY(!tab.Status(1)->isChecked());
    camera->ClearJournal();
    MessageCapture messages;

    ClickCheckBox(tab.Invert(1));

    QCOMPARE(Writes(camera), expected);
    QCOMPARE(messages.Texts(), QStringList());
    // Output 2 is idle; inverted it is high, and its status box says so.
    QCOMPARE(CameraValue(camera, levelsFeature.toLatin1().constData()), QString("2"));
    QVERIFY(tab.Status(1)->isChecked());
    QVERIFY(!tab.Status(0)->isChecked());

    tab.ShowAgain();
    QVERIFY(tab.Invert(1)->isChecked());
    QVERIFY(!tab.Invert(0)->isChecked());
}

void TestOutputs::shouldWriteTheStatusBoxesAsOneMask_data()
{
    AddMaskModels();
}

void TestOutputs::shouldWriteTheStatusBoxesAsOneMask()
{
    QFETCH(QString, model);
    QFETCH(QString, prefix);
    const QString levelsFeature = prefix + "Levels";
    SimCameraPtr camera = OpenModel(model);
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    camera->ClearJournal();
    MessageCapture messages;

    // Outputs 3 and 4 are driven by "GPO": one write of the whole mask each time.
    ClickCheckBox(tab.Status(2));
    QCOMPARE(Writes(camera), QStringList{levelsFeature + "=4"});
    ClickCheckBox(tab.Status(3));
    QCOMPARE(Writes(camera), (QStringList{levelsFeature + "=4", levelsFeature + "=12"}));
    QCOMPARE(messages.Texts(), QStringList());
    QCOMPARE(CameraValue(camera, levelsFeature.toLatin1().constData()), QString("12"));

    // A tab built on the camera now shows the same.
    Tab fresh(camera);
    QVERIFY(!fresh.Status(0)->isChecked());
    QVERIFY(!fresh.Status(1)->isChecked());
    QVERIFY(fresh.Status(2)->isChecked());
    QVERIFY(fresh.Status(3)->isChecked());
}

void TestOutputs::shouldWrapTheMaskBitsAfter32Outputs_data()
{
    QTest::addColumn<QString>("prefix");
    QTest::newRow("sync out") << "SyncOut";
    QTest::newRow("line out") << "LineOut";
}

void TestOutputs::shouldWrapTheMaskBitsAfter32Outputs()
{
    QFETCH(QString, prefix);
    MaskCamera mask;
    mask.prefix = prefix.toStdString();
    mask.outputs = 34;
    mask.levelsMaximum = (1LL << 34) - 1;
    SimCameraPtr camera = mask.Open();
    QVERIFY(camera);
    const QString levels = QString::fromStdString(mask.Levels());

    Tab tab(camera);
    QVERIFY(tab.Show());
    QCOMPARE(tab.Widget()->Outputs().size(), 34);
    camera->ClearJournal();

    ClickCheckBox(tab.Status(33));  // bit 33 wraps to bit 1
    QCOMPARE(Writes(camera), QStringList{levels + "=2"});
    ClickCheckBox(tab.Status(32));  // bit 32 wraps to bit 0
    QCOMPARE(Writes(camera), (QStringList{levels + "=2", levels + "=3"}));
    ClickCheckBox(tab.Status(1));  // bit 1 again: no change
    QCOMPARE(Writes(camera), (QStringList{levels + "=2", levels + "=3", levels + "=3"}));

    // Reading, row i shows bit i of the 64-bit mask.
    QCOMPARE(camera->ChangeFromCamera(mask.Levels(), "8589934592"), 0);  // bit 33
    Tab fresh(camera);
    QVERIFY(fresh.Status(33)->isChecked());
    QVERIFY(!fresh.Status(32)->isChecked());
    QVERIFY(!fresh.Status(1)->isChecked());
    QVERIFY(!fresh.Status(0)->isChecked());
}

void TestOutputs::shouldServeALineOutCameraThroughTheFallbackNames()
{
    SimCameraPtr camera = OpenModel("SIM-LINEOUT");
    QVERIFY(camera);
    QCOMPARE(camera->ChangeFromCamera("LineOutSource", "LineIn2", "LineOut1"), 0);
    QCOMPARE(camera->ChangeFromCamera("LineOutPolarity", "Invert", "LineOut3"), 0);
    QCOMPARE(camera->ChangeFromCamera("LineOutLevels", "8"), 0);  // LineOut4 high
    QCOMPARE(camera->ChangeFromCamera("LineInLevels", "2"), 0);   // LineIn2 high

    Tab tab(camera);
    QCOMPARE(tab.Widget()->Outputs(), (QStringList{"LineOut1", "LineOut2", "LineOut3", "LineOut4"}));
    QCOMPARE(ItemTexts(tab.Source(0)), (QStringList{"GPO", "AcquisitionTriggerReady", "FrameTriggerReady", "Exposing",
                                                    "FrameReadout", "Acquiring", "LineIn1", "LineIn2"}));
    const QString sources[] = {"LineIn2", "FrameTriggerReady", "GPO", "GPO"};
    const bool inverted[] = {false, false, true, false};
    for (int row = 0; row < 4; ++row) {
        QCOMPARE(tab.Source(row)->currentText(), sources[row]);
        QCOMPARE(tab.Invert(row)->isChecked(), inverted[row]);
    }
    // LineOut1 follows LineIn2; LineOut3 is a low GPO, inverted; LineOut4 is a high GPO.
    QCOMPARE(CameraValue(camera, "LineOutLevels"), QString("13"));
    const bool high[] = {true, false, true, true};
    for (int row = 0; row < 4; ++row)
        QCOMPARE(tab.Status(row)->isChecked(), high[row]);
}

// ---------------------------------------------------------------------------
// Both

void TestOutputs::shouldEnableTheStatusBoxOnlyForAWritableDirectOrGpoState_data()
{
    QTest::addColumn<QString>("camera");
    QTest::addColumn<QList<bool>>("enabled");
    QTest::newRow("line routing, Line3 direct") << "SIM-LINE-ROUTING" << QList<bool>{false, true};
    QTest::newRow("line sfnc, Line3 direct") << "SIM-LINE-SFNC" << QList<bool>{false, true};
    QTest::newRow("lines, writable status") << "lines, writable status" << QList<bool>{true, false};
    QTest::newRow("lines, read-only status") << "lines, read-only status" << QList<bool>{false, false};
    QTest::newRow("sync out") << "SIM-SYNCOUT" << QList<bool>{false, false, true, true};
    QTest::newRow("line out") << "SIM-LINEOUT" << QList<bool>{false, false, true, true};
    QTest::newRow("mask, writable levels") << "mask, writable levels" << QList<bool>{true, true, true, true};
    QTest::newRow("mask, read-only levels") << "mask, read-only levels" << QList<bool>{false, false, false, false};
}

void TestOutputs::shouldEnableTheStatusBoxOnlyForAWritableDirectOrGpoState()
{
    QFETCH(QString, camera);
    QFETCH(QList<bool>, enabled);
    SimCameraPtr simCamera =
        camera.startsWith("SIM-LINE-") ? LineModelWithLine3Source(camera, "Direct") : MakeCamera(camera);
    QVERIFY(simCamera);

    Tab tab(simCamera);
    QCOMPARE(tab.Widget()->Outputs().size(), enabled.size());
    for (int row = 0; row < enabled.size(); ++row)
        QCOMPARE(tab.Status(row)->isEnabled(), enabled.at(row));

    QVERIFY(tab.Show());
    for (int row = 0; row < enabled.size(); ++row)
        QCOMPARE(tab.Status(row)->isEnabled(), enabled.at(row));
}

void TestOutputs::shouldReportAStatusTheCameraDoesNotTake_data()
{
    QTest::addColumn<QString>("model");
    // Changes made by the camera before the tab is built, "Feature[entry]=value".
    QTest::addColumn<QStringList>("changes");
    QTest::addColumn<int>("checkedRow");  // a box checked before the click
    QTest::addColumn<int>("row");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QStringList>("logged");
    // What the camera holds afterwards, "Feature[entry]=value".
    QTest::addColumn<QString>("held");
    // An inverted direct line reads the opposite of what is written.
    QTest::newRow("line sfnc, Line3 direct and inverted")
        << "SIM-LINE-SFNC" << QStringList{"LineSource[Line3]=Direct", "LineInverter[Line3]=true"} << 1 << 1
        << QStringList{"LineSelector=Line1", "LineSelector=Line3", "LineStatus=false", "LineSelector=Line0"}
        << QStringList{"Pelko Error OnCBOutStatusChanged:  \"1\""} << "LineStatus[Line3]=true";
    // Output 3 inverted: the bit written for it reads back cleared.
    QTest::newRow("sync out, SyncOut3 inverted")
        << "SIM-SYNCOUT" << QStringList{"SyncOutPolarity[SyncOut3]=Invert"} << 2 << 3 << QStringList{"SyncOutLevels=12"}
        << QStringList{"Pelko Error OnCBOutStatusChanged:  \"8\""} << "SyncOutLevels=8";
}

void TestOutputs::shouldReportAStatusTheCameraDoesNotTake()
{
    QFETCH(QString, model);
    QFETCH(QStringList, changes);
    QFETCH(int, checkedRow);
    QFETCH(int, row);
    QFETCH(QStringList, expected);
    QFETCH(QStringList, logged);
    QFETCH(QString, held);
    SimCameraPtr camera = OpenModel(model);
    QVERIFY(camera);
    for (const QString& change : changes)
        QCOMPARE(ChangeFromCamera(camera, change), 0);
    Tab tab(camera);
    QVERIFY(tab.Show());
    QVERIFY(tab.Status(checkedRow)->isChecked());
    camera->ClearJournal();
    MessageCapture messages;

    ClickCheckBox(tab.Status(row));

    QCOMPARE(Writes(camera), expected);
    QCOMPARE(messages.Texts(), logged);
    QCOMPARE(HeldValue(camera, held), held);

    // Shown again, the box shows the level the camera holds.
    tab.ShowAgain();
    QVERIFY(tab.Status(row)->isChecked());
}

// ---------------------------------------------------------------------------
// Failures

void TestOutputs::shouldFinishTheInversionRoundTripWhenTheCameraRefusesAWrite_data()
{
    QTest::addColumn<QString>("refusing");
    QTest::addColumn<int>("error");
    QTest::addColumn<int>("row");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QStringList>("logged");
    // What the camera holds afterwards, "Feature[entry]=value".
    QTest::addColumn<QStringList>("held");
    // The layer hands back the text it was given, refused or not: a refused
    // selector write goes unnoticed and the line's work lands on the line
    // still selected. The write-back is attempted all the same.
    QTest::newRow("selector refused, the line still selected inverted")
        << "LineSelector" << static_cast<int>(ZMT::PkoAPI::PkoErrorTimeout) << 1
        << QStringList{
               "LineSelector=Line1 -> -12", "LineInverter=false -> 0",   "LineSelector=Line3 -> -12",
               "LineInverter=true -> 0",    "LineSelector=Line0 -> -12",  // written back
               "LineSelector=Line1 -> -12", "LineSelector=Line3 -> -12", "LineSelector=Line0 -> -12",
           }
        << QStringList() << QStringList{"LineInverter[Line0]=true", "LineInverter[Line3]=false"};
    // Line1 reads back 0 instead of 1; Line3 reads back the 0 it was given.
    QTest::newRow("inverter refused, reported")
        << "LineInverter" << static_cast<int>(ZMT::PkoAPI::PkoErrorInvalidAccess) << 0
        << QStringList{
               "LineSelector=Line1 -> 0", "LineInverter=true -> -6", "LineSelector=Line3 -> 0",
               "LineInverter=false -> -6", "LineSelector=Line0 -> 0", "LineSelector=Line1 -> 0",
               "LineSelector=Line3 -> 0", "LineSelector=Line0 -> 0",
           }
        << QStringList{"Pelko Error updateOutSource:  \"0\""} << QStringList();
}

void TestOutputs::shouldFinishTheInversionRoundTripWhenTheCameraRefusesAWrite()
{
    QFETCH(QString, refusing);
    QFETCH(int, error);
    QFETCH(int, row);
    QFETCH(QStringList, expected);
    QFETCH(QStringList, logged);
    QFETCH(QStringList, held);
    SimCameraPtr camera = OpenModel("SIM-LINE-SFNC");
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    QCOMPARE(CameraValue(camera, "LineSelector"), QString("Line0"));
    camera->InjectFault(refusing.toStdString(), Operation::SetValue, error);
    camera->ClearJournal();
    MessageCapture messages;

    ClickCheckBox(tab.Invert(row));

    QCOMPARE(WritesWithResults(camera), expected);
    QCOMPARE(messages.Texts(), logged);
    for (const QString& value : held)
        QCOMPARE(HeldValue(camera, value), value);
}

void TestOutputs::shouldLogAnUnreadableSelectorWhenWritingItBackAfterASourceChange_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("selector");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("sync out") << "SIM-SYNCOUT"
                              << "SyncOutSelector"
                              << QStringList{"SyncOutSelector=SyncOut1", "SyncOutSource=GPO",
                                             "SyncOutSelector=SyncOut2", "SyncOutSelector=SyncOut3",
                                             "SyncOutSource=GPO",        "SyncOutSelector=SyncOut4",
                                             "SyncOutSource=GPO",        "SyncOutSelector="};
    QTest::newRow("line out") << "SIM-LINEOUT"
                              << "LineOutSelector"
                              << QStringList{"LineOutSelector=LineOut1", "LineOutSource=GPO",
                                             "LineOutSelector=LineOut2", "LineOutSelector=LineOut3",
                                             "LineOutSource=GPO",        "LineOutSelector=LineOut4",
                                             "LineOutSource=GPO",        "LineOutSelector="};
}

void TestOutputs::shouldLogAnUnreadableSelectorWhenWritingItBackAfterASourceChange()
{
    QFETCH(QString, model);
    QFETCH(QString, selector);
    QFETCH(QStringList, expected);
    SimCameraPtr camera = OpenModel(model);
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    camera->InjectFault(selector.toStdString(), Operation::GetValue, ZMT::PkoAPI::PkoErrorTimeout);
    camera->ClearJournal();
    MessageCapture messages;

    QVERIFY(ChooseWithKeys(tab.Source(0), "GPO"));

    // The kept selector reads "": writing it back hands "" back.
    QCOMPARE(Writes(camera), expected);
    const QStringList logged{"Pelko Error  OnComboOutSourceChanged \"\"", "Error updateUserOutValue:  \"\""};
    QCOMPARE(messages.Texts(), logged);
}

void TestOutputs::shouldLogAnUnreadableSelectorWhenWritingItBackAfterAnInversion_data()
{
    AddMaskModels();
}

void TestOutputs::shouldLogAnUnreadableSelectorWhenWritingItBackAfterAnInversion()
{
    QFETCH(QString, model);
    QFETCH(QString, prefix);
    const QString selector = prefix + "Selector";
    SimCameraPtr camera = OpenModel(model);
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    camera->InjectFault(selector.toStdString(), Operation::GetValue, ZMT::PkoAPI::PkoErrorTimeout);
    camera->ClearJournal();
    MessageCapture messages;

    ClickCheckBox(tab.Invert(0));

    const QStringList writes = Writes(camera);
    QVERIFY(!writes.isEmpty());
    QCOMPARE(writes.last(), selector + "=");
    QCOMPARE(messages.Texts(), QStringList{"Pelko Error updateOutInvertChanged:  \"\""});
}

void TestOutputs::shouldLogAnUnreadableSelectorWhenRefreshing_data()
{
    AddMaskModels();
}

void TestOutputs::shouldLogAnUnreadableSelectorWhenRefreshing()
{
    QFETCH(QString, model);
    QFETCH(QString, prefix);
    const QString selector = prefix + "Selector";
    const QString polarity = prefix + "Polarity";
    const QString output = prefix + "2";
    SimCameraPtr camera = OpenModel(model);
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    // Hidden, the tab watches nothing and its queue is empty: the one change
    // handed over below is all the next tick sees.
    tab.Page()->hide();
    QCOMPARE(camera->ChangeFromCamera(polarity.toStdString(), "Invert", output.toStdString()), 0);
    camera->InjectFault(selector.toStdString(), Operation::GetValue, ZMT::PkoAPI::PkoErrorTimeout);
    MessageCapture messages;

    QVERIFY(tab.Report(polarity));
    QVERIFY(tab.Tick());

    // The inversion refresh reports with the source refresh's message.
    // The tick's unregistering finds nothing registered and says so for
    // every watched feature; only the refresh's own lines count here.
    QStringList refresh;
    for (const QString& text : messages.Texts()) {
        if (!text.startsWith("Could not unregister feature observer. Error code: "))
            refresh << text;
    }
    QCOMPARE(refresh, QStringList{"Pelko Error updateOutSource:  \"\""});
    QVERIFY(tab.Invert(1)->isChecked());
    QVERIFY(!tab.Invert(0)->isChecked());
}

void TestOutputs::shouldLogEveryLineOfGetOutputsWhenTheLineSelectorIsUnreadable()
{
    SimCameraPtr camera = OpenModel("SIM-LINE-SFNC");
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    tab.Page()->hide();

    // Line2 turns into an output: the rows are built anew, the list of
    // outputs read again.
    QCOMPARE(camera->ChangeFromCamera("LineMode", "Output", "Line2"), 0);
    camera->InjectFault("LineSelector", Operation::GetValue, ZMT::PkoAPI::PkoErrorTimeout);
    MessageCapture messages;

    QVERIFY(tab.Report("LineMode"));
    QVERIFY(tab.Tick());

    // One message per line: the kept "" is written back after each of the four.
    QCOMPARE(messages.Texts().count("GetOutputs Pelko Error:  \"\""), 4);
    QCOMPARE(tab.Widget()->Outputs(), (QStringList{"Line1", "Line2", "Line3"}));
}

QTEST_MAIN(TestOutputs)
#include "tst_outputs.moc"
