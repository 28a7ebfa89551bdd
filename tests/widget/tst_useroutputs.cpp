// User outputs and the "Selectable Output" group of the "Trigger IO" tab:
// the user-output selector combos, the user-value boxes (what they write, and
// the sixth one that writes nothing), the lines whose direction the tab lets
// the user switch, and what goes to the debug stream.

#include "OutputTestSupport.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QMetaObject>
#include <QtTest>

using namespace OutputTest;
using ZMT::PkoAPI::Sim::Context;
using ZMT::PkoAPI::Sim::Operation;

namespace {

// Six output lines Out0..Out5, line Outk driven by UserOutputk, the user
// output selector standing on UserOutput5.
LineCamera SixUserOutputLines()
{
    LineCamera camera;
    camera.lines = {"Out0", "Out1", "Out2", "Out3", "Out4", "Out5"};
    camera.outputs = camera.lines;
    camera.sources = {"Off",         "UserOutput0", "UserOutput1", "UserOutput2",
                      "UserOutput3", "UserOutput4", "UserOutput5", "Direct"};
    for (int i = 0; i < 6; ++i)
        camera.sourceAt.emplace_back("Out" + std::to_string(i), "UserOutput" + std::to_string(i));
    camera.userOutputs = {"UserOutput0", "UserOutput1", "UserOutput2", "UserOutput3", "UserOutput4", "UserOutput5"};
    camera.userOutput = "UserOutput5";
    return camera;
}

bool IsMissingSlotWarning(const QString& text)
{
    const QString warning = "QObject::connect: No such slot IOTriggerWidget::OnCBOutUserValueChanged(int)";
    return text == warning || text.startsWith(warning + " in ");
}

}  // namespace

class TestUserOutputs : public QObject {
    Q_OBJECT

private slots:
    // User outputs.
    void shouldShowTheUserOutputOfTheSourceInTheSelectorCombo_data();
    void shouldShowTheUserOutputOfTheSourceInTheSelectorCombo();
    void shouldFollowAChosenSourceInTheSelectorCombo();
    void shouldLeaveEverySelectorComboEmptyWithoutUserOutputSelector_data();
    void shouldLeaveEverySelectorComboEmptyWithoutUserOutputSelector();
    void shouldWriteTheUserOutputOfTheRowsSource_data();
    void shouldWriteTheUserOutputOfTheRowsSource();
    void shouldWriteNothingForTheSixthUserValueBox();
    void shouldShowTheLineFollowingItsUserOutput_data();
    void shouldShowTheLineFollowingItsUserOutput();
    void shouldHaveNoSlotForTheDeliberatelyFailingConnection();
    void shouldReportAUserValueTheCameraDoesNotTake();
    void shouldLogAnUnreadableUserOutputSelector();

    // Selectable output.
    void shouldBuildOneComboPerSelectableLine_data();
    void shouldBuildOneComboPerSelectableLine();
    void shouldListTheLinesWhoseDirectionTheUserMaySwitch();
    void shouldBuildNoSelectableLineWithoutLineSelector_data();
    void shouldBuildNoSelectableLineWithoutLineSelector();
    void shouldSwitchEverySelectableLineShowingTheChosenDirection_data();
    void shouldSwitchEverySelectableLineShowingTheChosenDirection();
    void shouldLogAnUnreadableLineSelectorAfterSwitchingADirection();
    void shouldTraceTheSelectorWriteBackOfTheSelectableRefresh_data();
    void shouldTraceTheSelectorWriteBackOfTheSelectableRefresh();
};

// ---------------------------------------------------------------------------
// User outputs

void TestUserOutputs::shouldShowTheUserOutputOfTheSourceInTheSelectorCombo_data()
{
    AddLineModels();
}

void TestUserOutputs::shouldShowTheUserOutputOfTheSourceInTheSelectorCombo()
{
    QFETCH(QString, model);
    SimCameraPtr camera = LineModelWithLine3Source(model, "UserOutput1");
    QVERIFY(camera);
    Tab tab(camera);

    for (int pass = 0; pass < 2; ++pass) {
        const QStringList userOutputs{"UserOutput0", "UserOutput1", "UserOutput2"};
        // Line3 follows UserOutput1: its item is shown.
        QCOMPARE(ItemTexts(tab.UserSelector(1)), userOutputs);
        QCOMPARE(tab.UserSelector(1)->currentIndex(), 1);
        QCOMPARE(tab.UserSelector(1)->currentText(), QString("UserOutput1"));
        QVERIFY(!tab.UserSelector(1)->isEnabled());
        QVERIFY(tab.UserValue(1)->isEnabled());
        // Line1 shows "ExposureActive": no item.
        QCOMPARE(ItemTexts(tab.UserSelector(0)), userOutputs);
        QCOMPARE(tab.UserSelector(0)->currentIndex(), -1);
        QVERIFY(!tab.UserSelector(0)->isEnabled());
        QVERIFY(!tab.UserValue(0)->isEnabled());

        // The same after a refresh.
        QVERIFY(tab.Show());
    }
}

void TestUserOutputs::shouldFollowAChosenSourceInTheSelectorCombo()
{
    SimCameraPtr camera = LineModelWithLine3Source("SIM-LINE-SFNC", "UserOutput1");
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());

    QVERIFY(ChooseWithKeys(tab.Source(0), "UserOutput2"));
    QCOMPARE(tab.UserSelector(0)->currentText(), QString("UserOutput2"));
    QVERIFY(!tab.UserSelector(0)->isEnabled());
    QVERIFY(tab.UserValue(0)->isEnabled());

    QVERIFY(ChooseWithKeys(tab.Source(1), "Direct"));
    QCOMPARE(tab.UserSelector(1)->currentIndex(), -1);
    QVERIFY(!tab.UserSelector(1)->isEnabled());
    QVERIFY(!tab.UserValue(1)->isEnabled());
}

void TestUserOutputs::shouldLeaveEverySelectorComboEmptyWithoutUserOutputSelector_data()
{
    AddMaskModels();
    QTest::newRow("lines without user outputs") << ""
                                                << "";
}

void TestUserOutputs::shouldLeaveEverySelectorComboEmptyWithoutUserOutputSelector()
{
    QFETCH(QString, model);
    SimCameraPtr camera;
    if (model.isEmpty()) {
        // A line driven by a user output of a camera that lists none.
        LineCamera lines;
        lines.lines = {"Line0", "Line1"};
        lines.outputs = {"Line0", "Line1"};
        lines.sourceAt = {{"Line0", "UserOutput0"}};
        camera = lines.Open();
    } else {
        camera = OpenModel(model);
    }
    QVERIFY(camera);

    Tab tab(camera);
    QVERIFY(tab.Show());
    QVERIFY(!tab.Widget()->Outputs().isEmpty());
    for (int row = 0; row < tab.Widget()->Outputs().size(); ++row) {
        QCOMPARE(tab.UserSelector(row)->count(), 0);
        QCOMPARE(tab.UserSelector(row)->currentIndex(), -1);
        QVERIFY(!tab.UserSelector(row)->isEnabled());
    }
}

void TestUserOutputs::shouldWriteTheUserOutputOfTheRowsSource_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("userOutput");
    // One numbered slot per row: row k is served by OnCBOutUserValueChanged<k+1>.
    QTest::newRow("row 0") << 0 << "UserOutput0";
    QTest::newRow("row 1") << 1 << "UserOutput1";
    QTest::newRow("row 2") << 2 << "UserOutput2";
    QTest::newRow("row 3") << 3 << "UserOutput3";
    QTest::newRow("row 4") << 4 << "UserOutput4";
}

void TestUserOutputs::shouldWriteTheUserOutputOfTheRowsSource()
{
    QFETCH(int, row);
    QFETCH(QString, userOutput);
    SimCameraPtr camera = SixUserOutputLines().Open();
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    QVERIFY(tab.UserValue(row)->isEnabled());
    camera->ClearJournal();
    MessageCapture messages;

    ClickCheckBox(tab.UserValue(row));

    const QStringList expected{
        "UserOutputSelector=" + userOutput,
        "UserOutputValue=true",
        "UserOutputSelector=UserOutput5",  // the selector as it was
        // The status boxes are read again, through the line selector.
        "LineSelector=Out0",
        "LineSelector=Out1",
        "LineSelector=Out2",
        "LineSelector=Out3",
        "LineSelector=Out4",
        "LineSelector=Out5",
        "LineSelector=Out0",
    };
    QCOMPARE(Writes(camera), expected);
    QCOMPARE(messages.Texts(), QStringList());
    for (int i = 0; i < 6; ++i) {
        const std::string entry = "UserOutput" + std::to_string(i);
        QCOMPARE(CameraValue(camera, "UserOutputValue", entry.c_str()), QString(i == row ? "true" : "false"));
    }

    camera->ClearJournal();
    ClickCheckBox(tab.UserValue(row));
    QCOMPARE(Writes(camera).mid(0, 3), (QStringList{"UserOutputSelector=" + userOutput, "UserOutputValue=false",
                                                    "UserOutputSelector=UserOutput5"}));
    QCOMPARE(CameraValue(camera, "UserOutputValue", userOutput.toLatin1().constData()), QString("false"));
}

void TestUserOutputs::shouldWriteNothingForTheSixthUserValueBox()
{
    SimCameraPtr camera = SixUserOutputLines().Open();
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    QVERIFY(tab.UserValue(5)->isEnabled());
    camera->ClearJournal();
    MessageCapture messages;

    ClickCheckBox(tab.UserValue(5));

    QVERIFY(tab.UserValue(5)->isChecked());
    QCOMPARE(Writes(camera), QStringList());
    QCOMPARE(messages.Texts(), QStringList());
    QCOMPARE(CameraValue(camera, "UserOutputValue", "UserOutput5"), QString("false"));
}

void TestUserOutputs::shouldShowTheLineFollowingItsUserOutput_data()
{
    AddLineModels();
}

void TestUserOutputs::shouldShowTheLineFollowingItsUserOutput()
{
    QFETCH(QString, model);
    SimCameraPtr camera = LineModelWithLine3Source(model, "UserOutput1");
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    QVERIFY(!tab.Status(1)->isChecked());
    camera->ClearJournal();
    MessageCapture messages;

    ClickCheckBox(tab.UserValue(1));

    QStringList expected{
        "UserOutputSelector=UserOutput1",
        "UserOutputValue=true",
        "UserOutputSelector=UserOutput0",
        "LineSelector=Line1",
        "LineSelector=Line3",
        "LineSelector=Line0",
    };
    QCOMPARE(Writes(camera), expected);
    QCOMPARE(messages.Texts(), QStringList());
    // Line3 is high now, and its row says so.
    QCOMPARE(CameraValue(camera, "LineStatus", "Line3"), QString("true"));
    QVERIFY(tab.Status(1)->isChecked());
    QVERIFY(!tab.Status(0)->isChecked());

    camera->ClearJournal();
    ClickCheckBox(tab.UserValue(1));
    expected[1] = "UserOutputValue=false";
    QCOMPARE(Writes(camera), expected);
    QCOMPARE(CameraValue(camera, "LineStatus", "Line3"), QString("false"));
    QVERIFY(!tab.Status(1)->isChecked());

    // A refresh shows the camera's value in the box.
    QCOMPARE(camera->ChangeFromCamera("UserOutputValue", "true", "UserOutput1"), 0);
    tab.ShowAgain();
    QVERIFY(tab.UserValue(1)->isChecked());
}

void TestUserOutputs::shouldHaveNoSlotForTheDeliberatelyFailingConnection()
{
    const QMetaObject& meta = IOTriggerWidget::staticMetaObject;
    QCOMPARE(meta.indexOfMethod("OnCBOutUserValueChanged(int)"), -1);
    for (int n = 1; n <= 5; ++n) {
        const QByteArray slot = "OnCBOutUserValueChanged" + QByteArray::number(n) + "(int)";
        QVERIFY2(meta.indexOfSlot(slot.constData()) >= 0, slot.constData());
    }

    // The connection is tried once per row, and Qt warns about each.
    LineCamera lines = SixUserOutputLines();
    lines.captureOnModeRead = true;
    SimCameraPtr camera = lines.Open();
    QVERIFY(camera);
    MessageCapture messages;
    Tab tab(camera);

    int warnings = 0;
    for (const QString& text : messages.Warnings()) {
        if (IsMissingSlotWarning(text))
            ++warnings;
    }
    QCOMPARE(warnings, 6);
}

void TestUserOutputs::shouldReportAUserValueTheCameraDoesNotTake()
{
    SimCameraPtr camera = LineModelWithLine3Source("SIM-LINE-SFNC", "UserOutput1");
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    camera->InjectFault("UserOutputValue", Operation::SetValue, ZMT::PkoAPI::PkoErrorInvalidAccess);
    camera->ClearJournal();
    MessageCapture messages;

    ClickCheckBox(tab.UserValue(1));

    const QStringList expected{
        "UserOutputSelector=UserOutput1 -> 0",
        "UserOutputValue=true -> -6",
        "UserOutputSelector=UserOutput0 -> 0",
        "LineSelector=Line1 -> 0",
        "LineSelector=Line3 -> 0",
        "LineSelector=Line0 -> 0",
    };
    QCOMPARE(WritesWithResults(camera), expected);
    QCOMPARE(messages.Texts(), QStringList{"Pelko Error OnCBOutUserValueChanged:  \"0\""});
}

void TestUserOutputs::shouldLogAnUnreadableUserOutputSelector()
{
    SimCameraPtr camera = LineModelWithLine3Source("SIM-LINE-SFNC", "UserOutput1");
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    camera->InjectFault("UserOutputSelector", Operation::GetValue, ZMT::PkoAPI::PkoErrorTimeout);
    camera->ClearJournal();
    MessageCapture messages;

    // The kept selector reads "": writing it back hands "" back.
    ClickCheckBox(tab.UserValue(1));
    QStringList expected{
        "UserOutputSelector=UserOutput1",
        "UserOutputValue=true",
        "UserOutputSelector=",
        "LineSelector=Line1",
        "LineSelector=Line3",
        "LineSelector=Line0",
    };
    QCOMPARE(Writes(camera), expected);
    QCOMPARE(messages.Texts(), QStringList{"Pelko Error updateOutSource:  \"\""});

    // The values refresh after a source change says so in its own words.
    messages.Clear();
    camera->ClearJournal();
    QVERIFY(ChooseWithKeys(tab.Source(0), "Direct"));
    expected = QStringList{
        "LineSelector=Line1",
        "LineSource=Direct",
        "LineSelector=Line3",
        "LineSelector=Line0",
        "UserOutputSelector=UserOutput1",  // Line3's user output, read into its box
        "UserOutputSelector=",
    };
    QCOMPARE(Writes(camera), expected);
    QCOMPARE(messages.Texts(), QStringList{"Error updateUserOutValue:  \"\""});
}

// ---------------------------------------------------------------------------
// Selectable output

void TestUserOutputs::shouldBuildOneComboPerSelectableLine_data()
{
    AddLineModels();
}

void TestUserOutputs::shouldBuildOneComboPerSelectableLine()
{
    QFETCH(QString, model);
    SimCameraPtr camera = OpenModel(model);
    QVERIFY(camera);
    Tab tab(camera);

    // Line0 is a fixed input and Line1 a fixed output; Line2 and Line3 switch.
    const QStringList lines{"Line2", "Line3"};
    QCOMPARE(tab.Widget()->SelectableLines(), lines);
    QGroupBox* group = tab.Find<QGroupBox>("gb_SelectOutput");
    QVERIFY(!group->isHidden());
    QCOMPARE(group->minimumHeight(), 55 * 2);
    QCOMPARE(group->maximumHeight(), 55 * 2);

    QGridLayout* grid = tab.Find<QGridLayout>("grid_SelectableOut");
    QVERIFY(grid);
    const QString modes[] = {"Input", "Output"};
    for (int i = 0; i < lines.size(); ++i) {
        QVERIFY(tab.OptionalLabel(i));
        QVERIFY(tab.OptionalCombo(i));
        QCOMPARE(tab.OptionalLabel(i)->text(), lines.at(i));
        QCOMPARE(grid->itemAtPosition(i, 0)->widget(), tab.OptionalLabel(i));
        QCOMPARE(grid->itemAtPosition(i, 1)->widget(), tab.OptionalCombo(i));
        QCOMPARE(ItemTexts(tab.OptionalCombo(i)), (QStringList{"Input", "Output"}));
        QCOMPARE(tab.OptionalCombo(i)->currentText(), modes[i]);
        QVERIFY(tab.OptionalCombo(i)->isEnabled());
    }
    QVERIFY(tab.OptionalCombo(2) == nullptr);
}

void TestUserOutputs::shouldListTheLinesWhoseDirectionTheUserMaySwitch()
{
    // D and C may be switched; A has both directions but is fixed; B is
    // writable with one direction only.
    ZMT::PkoAPI::Sim::CameraBuilder builder("SIM-TEST-DIRECTIONS", "Test Directions");
    builder.AddEnumeration("LineSelector", {"D", "A", "C", "B"}, "D").Selects({"LineMode", "LineSource"});
    builder.AddEnumeration("LineMode", {"Input", "Output"}, "Input")
        .ValueAt("D", "Output")
        .ValueAt("B", "Output")
        .WritableWhen([](const Context& c) { return c.SelectorEntry("LineMode") != "A"; })
        .EntryAvailableWhen("Input", [](const Context& c) { return c.SelectorEntry("LineMode") != "B"; });
    builder.AddEnumeration("LineSource", {"Off", "Direct"}, "Off");
    SimCameraPtr camera = Opened(builder.Build());
    QVERIFY2(camera, builder.Error().c_str());

    Tab tab(camera);
    QCOMPARE(tab.Widget()->Outputs(), (QStringList{"D", "B"}));
    QCOMPARE(tab.Widget()->SelectableLines(), (QStringList{"D", "C"}));
    QCOMPARE(tab.OptionalLabel(0)->text(), QString("D"));
    QCOMPARE(tab.OptionalLabel(1)->text(), QString("C"));
    QCOMPARE(tab.OptionalCombo(0)->currentText(), QString("Output"));
    QCOMPARE(tab.OptionalCombo(1)->currentText(), QString("Input"));
}

void TestUserOutputs::shouldBuildNoSelectableLineWithoutLineSelector_data()
{
    AddMaskModels();
}

void TestUserOutputs::shouldBuildNoSelectableLineWithoutLineSelector()
{
    QFETCH(QString, model);
    SimCameraPtr camera = OpenModel(model);
    QVERIFY(camera);
    Tab tab(camera);

    QVERIFY(tab.Widget()->SelectableLines().isEmpty());
    QVERIFY(tab.OptionalCombo(0) == nullptr);
    QVERIFY(tab.OptionalLabel(0) == nullptr);
}

void TestUserOutputs::shouldSwitchEverySelectableLineShowingTheChosenDirection_data()
{
    QTest::addColumn<QString>("model");
    QTest::addColumn<int>("combo");
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<QStringList>("outputs");
    // Line2 shows "Input", Line3 "Output" at the start.
    const QStringList toOutput{
        "LineSelector=Line2", "LineMode=Output", "LineSelector=Line3", "LineMode=Output",
        "LineSelector=Line0",  // the selector as it was
    };
    const QStringList toInput{
        "LineSelector=Line2", "LineMode=Input", "LineSelector=Line3", "LineMode=Input", "LineSelector=Line0",
    };
    const QStringList models{"SIM-LINE-ROUTING", "SIM-LINE-SFNC"};
    for (const QString& model : models) {
        QTest::newRow(qPrintable(model + ": Line2 to Output"))
            << model << 0 << "Output" << toOutput << QStringList{"Line1", "Line2", "Line3"};
        QTest::newRow(qPrintable(model + ": Line3 to Input"))
            << model << 1 << "Input" << toInput << QStringList{"Line1"};
    }
}

void TestUserOutputs::shouldSwitchEverySelectableLineShowingTheChosenDirection()
{
    QFETCH(QString, model);
    QFETCH(int, combo);
    QFETCH(QString, mode);
    QFETCH(QStringList, expected);
    QFETCH(QStringList, outputs);
    SimCameraPtr camera = OpenModel(model);
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    QCOMPARE(CameraValue(camera, "LineSelector"), QString("Line0"));
    camera->ClearJournal();
    MessageCapture messages;

    QSignalSpy changes(tab.OptionalCombo(combo), SIGNAL(currentIndexChanged(QString)));
    QVERIFY(ChooseWithKeys(tab.OptionalCombo(combo), mode));
    QCOMPARE(changes.count(), 1);

    QCOMPARE(Writes(camera), expected);
    QCOMPARE(messages.Texts(), QStringList());
    QCOMPARE(CameraValue(camera, "LineMode", "Line2"), mode);
    QCOMPARE(CameraValue(camera, "LineMode", "Line3"), mode);

    // The output rows follow the lines' new directions.
    tab.ShowAgain();
    QCOMPARE(tab.Widget()->Outputs(), outputs);
    for (int i = 0; i < outputs.size(); ++i)
        QCOMPARE(tab.Label(i)->text(), outputs.at(i) + ": ");
    QVERIFY(tab.Label(outputs.size()) == nullptr);
    QCOMPARE(tab.OutputGroup()->maximumHeight(), 35 * outputs.size() + 85 - 35);
}

void TestUserOutputs::shouldLogAnUnreadableLineSelectorAfterSwitchingADirection()
{
    SimCameraPtr camera = OpenModel("SIM-LINE-SFNC");
    QVERIFY(camera);
    Tab tab(camera);
    QVERIFY(tab.Show());
    camera->InjectFault("LineSelector", Operation::GetValue, ZMT::PkoAPI::PkoErrorTimeout);
    camera->ClearJournal();
    MessageCapture messages;

    QVERIFY(ChooseWithKeys(tab.OptionalCombo(0), "Output"));

    const QStringList expected{
        "LineSelector=Line2", "LineMode=Output", "LineSelector=Line3", "LineMode=Output", "LineSelector=",
    };
    QCOMPARE(Writes(camera), expected);
    // The source slot's message, used here too.
    QCOMPARE(messages.Texts(), QStringList{"Pelko Error OnComboOutSourceChanged:  \"\""});
}

void TestUserOutputs::shouldTraceTheSelectorWriteBackOfTheSelectableRefresh_data()
{
    QTest::addColumn<bool>("selectorReadable");
    QTest::addColumn<QString>("trace");
    QTest::newRow("selector readable") << true << "RetValue updateOpt. Out \"Out0\"";
    // Written whether the write-back worked or not.
    QTest::newRow("selector unreadable") << false << "RetValue updateOpt. Out \"\"";
}

void TestUserOutputs::shouldTraceTheSelectorWriteBackOfTheSelectableRefresh()
{
    QFETCH(bool, selectorReadable);
    QFETCH(QString, trace);
    LineCamera lines = SixUserOutputLines();
    lines.captureOnModeRead = true;
    SimCameraPtr camera = lines.Open();
    QVERIFY(camera);
    if (!selectorReadable)
        camera->InjectFault("LineSelector", Operation::GetValue, ZMT::PkoAPI::PkoErrorTimeout);

    // The group is refreshed while the tab is built.
    MessageCapture messages;
    Tab tab(camera);
    QCOMPARE(tab.Widget()->Outputs().size(), 6);
    QCOMPARE(messages.Texts().count(trace), 1);
}

QTEST_MAIN(TestUserOutputs)
#include "tst_useroutputs.moc"
