#include "SdkTestSupport.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QtTest>

#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

using namespace ZMT::PkoAPI;
using namespace ZMT::PkoAPI::Sim;

Q_DECLARE_METATYPE(ZMT::PkoAPI::Sim::Operation)

namespace {

// One feature of every kind, with rules between them.
void DeclareTestCamera(CameraBuilder& b)
{
    b.AddInteger("Count", 4, 0, 10, 2).DisplayName("Frame Count").Category("/Acquisition");
    b.AddFloat("Exposure", 0.7, 0.0, 1.0, 0.1).Category("/Acquisition");
    b.AddFloat("Rate", 30.0, 1.0, 100.0);
    b.AddFloat("Wide", 0.0, -1e300, 1e300);
    b.AddBoolean("Enabled", false);
    b.AddString("Label", "cam");
    b.AddEnumeration("Mode", {"Off", "On", "Auto"}, "Off").EntryAvailableWhen("Auto", [](const Context& c) {
        return c.Text("Enabled") == "true";
    });
    b.AddCommand("Fire");
    b.AddRaw("Blob", "ab");
    b.AddOfType("Strange", 9);
    b.AddInteger("Fixed", 5, 0, 10).ReadOnly();
    b.AddInteger("Guarded", 0, 0, 10).WritableWhen([](const Context& c) { return c.Text("Mode") == "On"; });
    b.AddEnumeration("Selector", {"A", "B", "C"}, "A").Selects({"PerEntry"});
    b.AddInteger("PerEntry", 1, 0, 100).ValueAt("B", "2");
    b.AddInteger("Doubled", 0, 0, 1000).ReadOnly().ComputedBy([](const Context& c) {
        return std::optional<std::string>(std::to_string(2 * std::stoll(c.Text("PerEntry"))));
    });
}

SimCameraPtr OpenTestCamera()
{
    CameraBuilder builder("TEST", "Test Camera");
    DeclareTestCamera(builder);
    return OpenBuilt(builder);
}

long long IntOf(const FeaturePtr& feature)
{
    long long value = -999;
    feature->GetValue(value);
    return value;
}

}  // namespace

class TestSimFeature : public QObject {
    Q_OBJECT

private:
    SimCameraPtr m_Camera;

    FeaturePtr F(const char* name) { return FeatureOf(m_Camera, name); }

private slots:
    void init()
    {
        m_Camera = OpenTestCamera();
        QVERIFY(m_Camera);
    }

    void cleanup() { m_Camera.reset(); }

    void shouldGiveTheTextLengthForANullBufferAndFillABufferOfThatSizePlusOne()
    {
        FeaturePtr count = F("Count");
        unsigned int length = 99;
        QCOMPARE(count->GetName(nullptr, length), int(PkoErrorSuccess));
        QCOMPARE(length, 5u);
        char buffer[6];
        std::memset(buffer, 'x', sizeof buffer);
        length = sizeof buffer;
        QCOMPARE(count->GetName(buffer, length), int(PkoErrorSuccess));
        QCOMPARE(length, 5u);
        QCOMPARE(QByteArray(buffer), QByteArray("Count"));
    }

    void shouldRefuseATooSmallBufferAndLeaveItUntouched()
    {
        char buffer[4] = {'x', 'y', 'z', '\0'};
        unsigned int length = 4;
        QCOMPARE(F("Count")->GetName(buffer, length), int(PkoErrorMoreData));
        QCOMPARE(length, 4u);
        QCOMPARE(QByteArray(buffer), QByteArray("xyz"));
    }

    void shouldWriteNoTerminatorBeyondTheGivenLength()
    {
        char buffer[6];
        std::memset(buffer, 'x', sizeof buffer);
        unsigned int length = 5;
        QCOMPARE(F("Count")->GetName(buffer, length), int(PkoErrorSuccess));
        QCOMPARE(QByteArray(buffer, 6), QByteArray("Countx"));
    }

    void shouldReadDisplayNameAndCategoryWithTheSameProtocol()
    {
        char buffer[64] = {};
        unsigned int length = sizeof buffer;
        QCOMPARE(F("Count")->GetDisplayName(buffer, length), int(PkoErrorSuccess));
        QCOMPARE(QByteArray(buffer), QByteArray("Frame Count"));
        length = sizeof buffer;
        QCOMPARE(F("Count")->GetCategory(buffer, length), int(PkoErrorSuccess));
        QCOMPARE(QByteArray(buffer), QByteArray("/Acquisition"));
        length = sizeof buffer;
        QCOMPARE(F("Label")->GetDisplayName(buffer, length), int(PkoErrorSuccess));
        QCOMPARE(QByteArray(buffer), QByteArray("Label"));
        length = sizeof buffer;
        QCOMPARE(F("Label")->GetCategory(buffer, length), int(PkoErrorSuccess));
        QCOMPARE(QByteArray(buffer), QByteArray("/Root"));
    }

    void shouldReportTheDeclaredDataType_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("type");
        QTest::newRow("integer") << "Count" << 1;
        QTest::newRow("float") << "Exposure" << 2;
        QTest::newRow("enumeration") << "Mode" << 3;
        QTest::newRow("string") << "Label" << 4;
        QTest::newRow("boolean") << "Enabled" << 5;
        QTest::newRow("command") << "Fire" << 6;
        QTest::newRow("raw") << "Blob" << 7;
        QTest::newRow("unknown code") << "Strange" << 9;
    }

    void shouldReportTheDeclaredDataType()
    {
        QFETCH(QString, name);
        QFETCH(int, type);
        PkoFeatureDataType dataType = PkoFeatureDataUnknown;
        QCOMPARE(F(name.toLatin1().constData())->GetDataType(dataType), int(PkoErrorSuccess));
        QCOMPARE(int(dataType), type);
    }

    void shouldRefuseEveryValueOperationOnAFeatureOfUnknownType()
    {
        FeaturePtr strange = F("Strange");
        long long integer = 3;
        unsigned int count = 0;
        QCOMPARE(strange->GetValue(integer), int(PkoErrorWrongType));
        QCOMPARE(strange->SetValue(1LL), int(PkoErrorWrongType));
        QCOMPARE(strange->SetValue("x"), int(PkoErrorWrongType));
        QCOMPARE(strange->GetValues(nullptr, count), int(PkoErrorWrongType));
        QCOMPARE(strange->RunCommand(), int(PkoErrorWrongType));
        QCOMPARE(integer, 3LL);
    }

    void shouldAcceptIntegersOnlyOnTheirGridWithinTheirRange()
    {
        FeaturePtr count = F("Count");
        QCOMPARE(count->SetValue(8LL), int(PkoErrorSuccess));
        QCOMPARE(IntOf(count), 8LL);
        QCOMPARE(count->SetValue(7LL), int(PkoErrorInvalidValue));
        QCOMPARE(count->SetValue(12LL), int(PkoErrorInvalidValue));
        QCOMPARE(count->SetValue(-2LL), int(PkoErrorInvalidValue));
        QCOMPARE(IntOf(count), 8LL);
        long long minimum = -1, maximum = -1, increment = -1;
        QCOMPARE(count->GetRange(minimum, maximum), int(PkoErrorSuccess));
        QCOMPARE(count->GetIncrement(increment), int(PkoErrorSuccess));
        QCOMPARE(minimum, 0LL);
        QCOMPARE(maximum, 10LL);
        QCOMPARE(increment, 2LL);
    }

    void shouldAcceptFloatsOnTheGridWithinRoundingError()
    {
        FeaturePtr exposure = F("Exposure");
        double value = -1.0;
        QCOMPARE(exposure->SetValue(0.3), int(PkoErrorSuccess));
        QCOMPARE(exposure->GetValue(value), int(PkoErrorSuccess));
        QCOMPARE(value, 0.3);
        // 7 x 0.1 is 0.7000000000000001: still on the grid.
        const double sevenSteps = 7 * 0.1;
        QCOMPARE(exposure->SetValue(sevenSteps), int(PkoErrorSuccess));
        QCOMPARE(exposure->GetValue(value), int(PkoErrorSuccess));
        QCOMPARE(value, sevenSteps);
        QCOMPARE(exposure->SetValue(0.65), int(PkoErrorInvalidValue));
        QCOMPARE(exposure->SetValue(1.2), int(PkoErrorInvalidValue));
        QCOMPARE(exposure->SetValue(-0.1), int(PkoErrorInvalidValue));
        QCOMPARE(exposure->SetValue(std::numeric_limits<double>::quiet_NaN()), int(PkoErrorInvalidValue));
        QCOMPARE(exposure->SetValue(std::numeric_limits<double>::infinity()), int(PkoErrorInvalidValue));
        QCOMPARE(exposure->GetValue(value), int(PkoErrorSuccess));
        QCOMPARE(value, sevenSteps);
        double minimum = -1, maximum = -1, increment = -1;
        QCOMPARE(exposure->GetRange(minimum, maximum), int(PkoErrorSuccess));
        QCOMPARE(exposure->GetIncrement(increment), int(PkoErrorSuccess));
        QCOMPARE(minimum, 0.0);
        QCOMPARE(maximum, 1.0);
        QCOMPARE(increment, 0.1);
    }

    void shouldReportZeroIncrementForAFloatWithoutOneAndAcceptAnyValueInRange()
    {
        FeaturePtr rate = F("Rate");
        double increment = -1.0;
        QCOMPARE(rate->GetIncrement(increment), int(PkoErrorSuccess));
        QCOMPARE(increment, 0.0);
        QCOMPARE(rate->SetValue(33.3), int(PkoErrorSuccess));
        QCOMPARE(rate->SetValue(100.5), int(PkoErrorInvalidValue));
    }

    void shouldRefuseTheWrongTypeForEveryFormAndLeaveOutputsAlone()
    {
        FeaturePtr count = F("Count");
        double real = 1.5;
        bool flag = true;
        unsigned int length = 0;
        double minimum = 2.5, maximum = 3.5;
        bool available = true;
        QCOMPARE(count->GetValue(real), int(PkoErrorWrongType));
        QCOMPARE(count->GetValue(flag), int(PkoErrorWrongType));
        QCOMPARE(count->GetValue(nullptr, length), int(PkoErrorWrongType));
        QCOMPARE(count->SetValue(2.0), int(PkoErrorWrongType));
        QCOMPARE(count->SetValue(true), int(PkoErrorWrongType));
        QCOMPARE(count->SetValue("2"), int(PkoErrorWrongType));
        QCOMPARE(count->GetRange(minimum, maximum), int(PkoErrorWrongType));
        QCOMPARE(count->GetIncrement(real), int(PkoErrorWrongType));
        QCOMPARE(count->GetValues(nullptr, length), int(PkoErrorWrongType));
        QCOMPARE(count->IsValueAvailable("2", available), int(PkoErrorWrongType));
        QCOMPARE(count->RunCommand(), int(PkoErrorWrongType));
        QCOMPARE(real, 1.5);
        QVERIFY(flag);
        QCOMPARE(length, 0u);
        QCOMPARE(minimum, 2.5);
        QCOMPARE(maximum, 3.5);
        QVERIFY(available);
        QCOMPARE(IntOf(count), 4LL);
        long long integer = 0;
        QCOMPARE(F("Label")->GetValue(integer), int(PkoErrorWrongType));
        QCOMPARE(F("Fire")->SetValue(1LL), int(PkoErrorWrongType));
        QCOMPARE(F("Blob")->GetValue(nullptr, length), int(PkoErrorWrongType));
    }

    void shouldReadAndWriteBooleansAndStrings()
    {
        bool enabled = true;
        QCOMPARE(F("Enabled")->GetValue(enabled), int(PkoErrorSuccess));
        QVERIFY(!enabled);
        QCOMPARE(F("Enabled")->SetValue(true), int(PkoErrorSuccess));
        QCOMPARE(F("Enabled")->GetValue(enabled), int(PkoErrorSuccess));
        QVERIFY(enabled);
        QCOMPARE(TextOf(F("Label")), std::string("cam"));
        QCOMPARE(F("Label")->SetValue("left camera"), int(PkoErrorSuccess));
        QCOMPARE(TextOf(F("Label")), std::string("left camera"));
        QCOMPARE(F("Label")->SetValue(""), int(PkoErrorSuccess));
        QCOMPARE(TextOf(F("Label")), std::string());
    }

    void shouldRefuseUnknownAndUnavailableEntries()
    {
        FeaturePtr mode = F("Mode");
        bool available = true;
        QCOMPARE(mode->SetValue("Bogus"), int(PkoErrorInvalidValue));
        QCOMPARE(mode->SetValue("off"), int(PkoErrorInvalidValue));
        QCOMPARE(mode->IsValueAvailable("Auto", available), int(PkoErrorSuccess));
        QVERIFY(!available);
        QCOMPARE(mode->SetValue("Auto"), int(PkoErrorInvalidValue));
        QCOMPARE(TextOf(mode), std::string("Off"));
        QCOMPARE(mode->IsValueAvailable("Bogus", available), int(PkoErrorNotFound));
        QVERIFY(!available);

        QCOMPARE(F("Enabled")->SetValue(true), int(PkoErrorSuccess));
        QCOMPARE(mode->IsValueAvailable("Auto", available), int(PkoErrorSuccess));
        QVERIFY(available);
        QCOMPARE(mode->SetValue("Auto"), int(PkoErrorSuccess));
        QCOMPARE(TextOf(mode), std::string("Auto"));
    }

    void shouldListEntriesWithTheTwoCallProtocol()
    {
        FeaturePtr mode = F("Mode");
        unsigned int count = 0;
        QCOMPARE(mode->GetValues(nullptr, count), int(PkoErrorSuccess));
        QCOMPARE(count, 3u);
        const char* tooFew[2] = {"untouched", "untouched"};
        unsigned int small = 2;
        QCOMPARE(mode->GetValues(tooFew, small), int(PkoErrorMoreData));
        QCOMPARE(small, 2u);
        QCOMPARE(QByteArray(tooFew[0]), QByteArray("untouched"));
        const char* entries[3] = {};
        QCOMPARE(mode->GetValues(entries, count), int(PkoErrorSuccess));
        QCOMPARE(QByteArray(entries[0]), QByteArray("Off"));
        QCOMPARE(QByteArray(entries[1]), QByteArray("On"));
        QCOMPARE(QByteArray(entries[2]), QByteArray("Auto"));
        QCOMPARE(AvailableEntriesOf(mode), (std::vector<std::string>{"Off", "On"}));
    }

    void shouldRefuseWritesToReadOnlyFeaturesAndWhileTheirRuleForbids()
    {
        QCOMPARE(F("Fixed")->SetValue(6LL), int(PkoErrorInvalidAccess));
        QVERIFY(!IsWritable(F("Fixed")));
        QCOMPARE(IntOf(F("Fixed")), 5LL);

        QVERIFY(!IsWritable(F("Guarded")));
        QCOMPARE(F("Guarded")->SetValue(3LL), int(PkoErrorInvalidAccess));
        QCOMPARE(F("Mode")->SetValue("On"), int(PkoErrorSuccess));
        QVERIFY(IsWritable(F("Guarded")));
        QCOMPARE(F("Guarded")->SetValue(3LL), int(PkoErrorSuccess));
        QCOMPARE(IntOf(F("Guarded")), 3LL);
        // Access is checked before the value.
        QCOMPARE(F("Fixed")->SetValue(99LL), int(PkoErrorInvalidAccess));
    }

    void shouldKeepOneValuePerSelectorEntry()
    {
        FeaturePtr selector = F("Selector");
        FeaturePtr perEntry = F("PerEntry");
        QCOMPARE(IntOf(perEntry), 1LL);
        QCOMPARE(selector->SetValue("B"), int(PkoErrorSuccess));
        QCOMPARE(IntOf(perEntry), 2LL);
        QCOMPARE(perEntry->SetValue(50LL), int(PkoErrorSuccess));
        QCOMPARE(selector->SetValue("A"), int(PkoErrorSuccess));
        QCOMPARE(IntOf(perEntry), 1LL);
        QCOMPARE(selector->SetValue("B"), int(PkoErrorSuccess));
        QCOMPARE(IntOf(perEntry), 50LL);
        QCOMPARE(m_Camera->ValueText("PerEntry", "A"), std::string("1"));
        QCOMPARE(m_Camera->ValueText("PerEntry", "C"), std::string("1"));
        QCOMPARE(m_Camera->ValueText("PerEntry", "Z"), std::string());
        QCOMPARE(m_Camera->ValueText("PerEntry"), std::string("50"));
    }

    void shouldComputeValuesFromOtherFeatures()
    {
        QCOMPARE(IntOf(F("Doubled")), 2LL);
        QCOMPARE(F("Selector")->SetValue("B"), int(PkoErrorSuccess));
        QCOMPARE(IntOf(F("Doubled")), 4LL);
        QCOMPARE(F("PerEntry")->SetValue(21LL), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText("Doubled"), std::string("42"));
    }

    void shouldGiveARuleItsOwnStoredValueAndThePinnedSelectorEntry()
    {
        CameraBuilder b("RULES", "Rules");
        b.AddEnumeration("Sel", {"X", "Y"}, "X").Selects({"Stored", "Shown"});
        b.AddInteger("Stored", 3, 0, 100).ValueAt("Y", "30");
        b.AddString("Shown", "s").ComputedBy([](const Context& c) {
            return std::optional<std::string>(c.Text("Shown") + ":" + c.SelectorEntry("Shown") + ":" + c.Text("Sel") +
                                              ":" + c.Text("Stored"));
        });
        SimCameraPtr camera = OpenBuilt(b);
        QVERIFY(camera);
        QCOMPARE(camera->ValueText("Shown"), std::string("s:X:X:3"));
        QCOMPARE(camera->ValueText("Shown", "Y"), std::string("s:Y:Y:30"));
    }

    void shouldFallBackToTheStoredValueWhenARuleThrowsOrGivesNothing()
    {
        CameraBuilder b("RULES", "Rules");
        b.AddInteger("Thrower", 3, 0, 10).ComputedBy([](const Context&) -> std::optional<std::string> {
            throw std::runtime_error("broken rule");
        });
        b.AddInteger("Silent", 4, 0, 10).ComputedBy([](const Context&) { return std::optional<std::string>(); });
        b.AddInteger("Locked", 5, 0, 10).WritableWhen([](const Context&) -> bool { throw 1; });
        SimCameraPtr camera = OpenBuilt(b);
        QVERIFY(camera);
        QCOMPARE(IntOf(FeatureOf(camera, "Thrower")), 3LL);
        QCOMPARE(IntOf(FeatureOf(camera, "Silent")), 4LL);
        QCOMPARE(FeatureOf(camera, "Locked")->SetValue(6LL), int(PkoErrorInvalidAccess));
    }

    void shouldBuildNothingFromAnUnusableDeclaration_data()
    {
        QTest::addColumn<int>("kind");
        QTest::newRow("selector naming an unknown feature") << 0;
        QTest::newRow("integer outside its range") << 1;
        QTest::newRow("integer off its grid") << 2;
        QTest::newRow("unknown enumeration value") << 3;
        QTest::newRow("value for an unknown selector entry") << 4;
        QTest::newRow("value per entry without selector") << 5;
        QTest::newRow("availability of an unknown entry") << 6;
        QTest::newRow("notifying an unknown feature") << 7;
        QTest::newRow("float outside its range") << 8;
        QTest::newRow("two selectors for one feature") << 9;
        QTest::newRow("enumeration without entries") << 10;
        QTest::newRow("zero integer increment") << 11;
    }

    void shouldBuildNothingFromAnUnusableDeclaration()
    {
        QFETCH(int, kind);
        CameraBuilder b("BAD", "Bad");
        b.AddEnumeration("Sel", {"A", "B"}, "A");
        b.AddInteger("Value", 0, 0, 10);
        switch (kind) {
            case 0:
                b.AddEnumeration("Other", {"X"}, "X").Selects({"Missing"});
                break;
            case 1:
                b.AddInteger("Out", 11, 0, 10);
                break;
            case 2:
                b.AddInteger("Off", 3, 0, 10, 2);
                break;
            case 3:
                b.AddEnumeration("E", {"X", "Y"}, "Z");
                break;
            case 4:
                b.AddEnumeration("S2", {"A", "B"}, "A").Selects({"P"});
                b.AddInteger("P", 0, 0, 10).ValueAt("C", "1");
                break;
            case 5:
                b.AddInteger("Q", 0, 0, 10).ValueAt("A", "1");
                break;
            case 6:
                b.AddEnumeration("E", {"X"}, "X").EntryAvailableWhen("Y", [](const Context&) { return true; });
                break;
            case 7:
                b.AddBoolean("N", false).Notifies({"Missing"});
                break;
            case 8:
                b.AddFloat("F", 2.0, 0.0, 1.0);
                break;
            case 9:
                b.AddEnumeration("S2", {"A"}, "A").Selects({"Value"});
                b.AddEnumeration("S3", {"A"}, "A").Selects({"Value"});
                break;
            case 10:
                b.AddEnumeration("Empty", {}, "");
                break;
            case 11:
                b.AddInteger("Z", 0, 0, 10, 0);
                break;
        }
        QVERIFY(!b.Build());
        QVERIFY(!b.Error().empty());
    }

    void shouldBuildAUsableDeclarationWithoutError()
    {
        CameraBuilder b("OK", "Ok");
        b.AddInteger("Value", 0, 0, 10);
        QVERIFY(b.Build());
        QCOMPARE(b.Error(), std::string());
    }

    void shouldListDuplicateNamesAndFindTheFirst()
    {
        CameraBuilder b("DUP", "Dup");
        b.AddInteger("Twice", 1, 0, 10);
        b.AddString("Between", "x");
        b.AddInteger("Twice", 2, 0, 10);
        SimCameraPtr camera = OpenBuilt(b);
        QVERIFY(camera);
        std::vector<FeaturePtr> features;
        QCOMPARE(camera->GetFeatures(features), int(PkoErrorSuccess));
        QCOMPARE(int(features.size()), 3);
        QCOMPARE(NameOf(features[0]), std::string("Twice"));
        QCOMPARE(NameOf(features[2]), std::string("Twice"));
        QCOMPARE(IntOf(features[0]), 1LL);
        QCOMPARE(IntOf(features[2]), 2LL);
        FeaturePtr found = FeatureOf(camera, "Twice");
        QVERIFY(found == features[0]);
        // A fault by name hits both.
        camera->InjectFault("Twice", Operation::GetValue, PkoErrorTimeout);
        long long value = 0;
        QCOMPARE(features[0]->GetValue(value), int(PkoErrorTimeout));
        QCOMPARE(features[2]->GetValue(value), int(PkoErrorTimeout));
    }

    void shouldFindNamesCaseSensitively()
    {
        FeaturePtr feature;
        QCOMPARE(m_Camera->GetFeatureByName("count", feature), int(PkoErrorNotFound));
        QVERIFY(!feature);
        QCOMPARE(m_Camera->GetFeatureByName("Count", feature), int(PkoErrorSuccess));
        QCOMPARE(NameOf(feature), std::string("Count"));
    }

    void shouldOrderFeaturesByTheFirstAppearanceOfTheirCategory()
    {
        CameraBuilder b("ORDER", "Order");
        b.AddInteger("A1", 0, 0, 1).Category("/A");
        b.AddInteger("B1", 0, 0, 1).Category("/B");
        b.AddInteger("A2", 0, 0, 1).Category("/A");
        b.AddInteger("B2", 0, 0, 1).Category("/B");
        SimCameraPtr camera = OpenBuilt(b);
        QVERIFY(camera);
        std::vector<FeaturePtr> features;
        QCOMPARE(camera->GetFeatures(features), int(PkoErrorSuccess));
        QStringList names;
        for (const FeaturePtr& feature : features)
            names << QString::fromStdString(NameOf(feature));
        QCOMPARE(names, QStringList({"A1", "A2", "B1", "B2"}));
    }

    void shouldJournalEveryWriteWithItsTextWriterAndResult()
    {
        m_Camera->ClearJournal();
        QCOMPARE(F("Count")->SetValue(8LL), int(PkoErrorSuccess));
        QCOMPARE(F("Count")->SetValue(7LL), int(PkoErrorInvalidValue));
        {
            WriterScope tab("tab");
            QCOMPARE(F("Exposure")->SetValue(0.1), int(PkoErrorSuccess));
            {
                WriterScope preset("preset");
                QCOMPARE(F("Enabled")->SetValue(true), int(PkoErrorSuccess));
            }
            QCOMPARE(F("Mode")->SetValue("On"), int(PkoErrorSuccess));
        }
        QCOMPARE(F("Fire")->RunCommand(), int(PkoErrorSuccess));
        QCOMPARE(F("Fixed")->SetValue(1LL), int(PkoErrorInvalidAccess));
        QCOMPARE(m_Camera->ChangeFromCamera("Fixed", "9"), int(PkoErrorSuccess));
        QCOMPARE(F("Selector")->SetValue("C"), int(PkoErrorSuccess));

        const std::vector<JournalEntry> journal = m_Camera->Journal();
        QStringList lines;
        for (const JournalEntry& entry : journal) {
            lines << QString::fromStdString(entry.feature + "=" + entry.value + " by " + entry.writer + " -> " +
                                            std::to_string(entry.result));
        }
        QCOMPARE(lines,
                 QStringList({"Count=8 by client -> 0", "Count=7 by client -> -11", "Exposure=0.1 by tab -> 0",
                              "Enabled=true by preset -> 0", "Mode=On by tab -> 0", "Fire=(execute) by client -> 0",
                              "Fixed=1 by client -> -6", "Fixed=9 by camera -> 0", "Selector=C by client -> 0"}));
        QCOMPARE(WriterScope::Current(), std::string("client"));
        m_Camera->ClearJournal();
        QVERIFY(m_Camera->Journal().empty());
    }

    void shouldJournalFloatsAsTheirShortestRoundTripText_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<QString>("text");
        QTest::newRow("tenth") << 0.1 << "0.1";
        QTest::newRow("whole") << 15000.0 << "15000";
        QTest::newRow("hundred million") << 1e8 << "1e+08";
        QTest::newRow("third") << 1.0 / 3.0 << "0.3333333333333333";
        QTest::newRow("negative") << -2.5 << "-2.5";
    }

    void shouldJournalFloatsAsTheirShortestRoundTripText()
    {
        QFETCH(double, value);
        QFETCH(QString, text);
        m_Camera->ClearJournal();
        QCOMPARE(F("Wide")->SetValue(value), int(PkoErrorSuccess));
        QCOMPARE(int(m_Camera->Journal().size()), 1);
        QCOMPARE(QString::fromStdString(m_Camera->Journal()[0].value), text);
        QCOMPARE(QString::fromStdString(m_Camera->ValueText("Wide")), text);
    }

    void shouldFailTheInjectedOperationAndChangeNothing_data()
    {
        QTest::addColumn<Operation>("op");
        QTest::newRow("GetName") << Operation::GetName;
        QTest::newRow("GetDisplayName") << Operation::GetDisplayName;
        QTest::newRow("GetCategory") << Operation::GetCategory;
        QTest::newRow("GetDataType") << Operation::GetDataType;
        QTest::newRow("GetValue") << Operation::GetValue;
        QTest::newRow("SetValue") << Operation::SetValue;
        QTest::newRow("GetRange") << Operation::GetRange;
        QTest::newRow("GetIncrement") << Operation::GetIncrement;
        QTest::newRow("GetValues") << Operation::GetValues;
        QTest::newRow("IsValueAvailable") << Operation::IsValueAvailable;
        QTest::newRow("IsWritable") << Operation::IsWritable;
        QTest::newRow("RunCommand") << Operation::RunCommand;
    }

    void shouldFailTheInjectedOperationAndChangeNothing()
    {
        QFETCH(Operation, op);
        // One call per operation, on a feature where it would succeed.
        auto call = [&](Operation which) -> int {
            unsigned int length = 0;
            long long integer = 0;
            long long minimum = 0, maximum = 0;
            bool flag = false;
            PkoFeatureDataType type = PkoFeatureDataUnknown;
            switch (which) {
                case Operation::GetName:
                    return F("Mode")->GetName(nullptr, length);
                case Operation::GetDisplayName:
                    return F("Mode")->GetDisplayName(nullptr, length);
                case Operation::GetCategory:
                    return F("Mode")->GetCategory(nullptr, length);
                case Operation::GetDataType:
                    return F("Mode")->GetDataType(type);
                case Operation::GetValue:
                    return F("Mode")->GetValue(nullptr, length);
                case Operation::SetValue:
                    return F("Mode")->SetValue("On");
                case Operation::GetRange:
                    return F("Count")->GetRange(minimum, maximum);
                case Operation::GetIncrement:
                    return F("Count")->GetIncrement(integer);
                case Operation::GetValues:
                    return F("Mode")->GetValues(nullptr, length);
                case Operation::IsValueAvailable:
                    return F("Mode")->IsValueAvailable("On", flag);
                case Operation::IsWritable:
                    return F("Mode")->IsWritable(flag);
                case Operation::RunCommand:
                    return F("Fire")->RunCommand();
                default:
                    return PkoErrorInternal;
            }
        };
        const std::string target = (op == Operation::GetRange || op == Operation::GetIncrement) ? "Count"
                                   : op == Operation::RunCommand                                ? "Fire"
                                                                                                : "Mode";
        m_Camera->InjectFault(target, op, PkoErrorTimeout);
        m_Camera->ClearJournal();
        QCOMPARE(call(op), int(PkoErrorTimeout));
        QCOMPARE(m_Camera->ValueText("Mode"), std::string("Off"));
        if (op == Operation::SetValue || op == Operation::RunCommand) {
            QCOMPARE(int(m_Camera->Journal().size()), 1);
            QCOMPARE(m_Camera->Journal()[0].result, int(PkoErrorTimeout));
        }
        // Other operations of the same feature are not affected.
        bool writable = false;
        if (op != Operation::IsWritable)
            QCOMPARE(F(target.c_str())->IsWritable(writable), int(PkoErrorSuccess));
        m_Camera->ClearFaults();
        QCOMPARE(call(op), int(PkoErrorSuccess));
    }

    void shouldYieldNaNWhenInjectedUntilFaultsAreCleared()
    {
        m_Camera->InjectNaN("Exposure");
        double value = 0.0;
        QCOMPARE(F("Exposure")->GetValue(value), int(PkoErrorSuccess));
        QVERIFY(std::isnan(value));
        QCOMPARE(m_Camera->ValueText("Exposure"), std::string("0.7"));
        m_Camera->ClearFaults();
        QCOMPARE(F("Exposure")->GetValue(value), int(PkoErrorSuccess));
        QCOMPARE(value, 0.7);
    }

    void shouldRefuseNullArgumentsWithoutChangingAnything()
    {
        m_Camera->ClearJournal();
        QCOMPARE(F("Label")->SetValue(static_cast<const char*>(nullptr)), int(PkoErrorBadParameter));
        QCOMPARE(TextOf(F("Label")), std::string("cam"));
        bool available = true;
        QCOMPARE(F("Mode")->IsValueAvailable(nullptr, available), int(PkoErrorBadParameter));
        QVERIFY(available);
        FeaturePtr feature;
        QCOMPARE(m_Camera->GetFeatureByName(nullptr, feature), int(PkoErrorBadParameter));
        QVERIFY(!feature);
        QCOMPARE(F("Fixed")->IsValueAvailable(nullptr, available), int(PkoErrorBadParameter));
        char buffer[2] = {'q', '\0'};
        unsigned int length = 1;
        QCOMPARE(F("Label")->GetValue(buffer, length), int(PkoErrorMoreData));
        QCOMPARE(buffer[0], 'q');
        QCOMPARE(length, 1u);
        length = 0;
        QCOMPARE(F("Label")->GetName(buffer, length), int(PkoErrorMoreData));
    }

    void shouldFailFeatureOperationsOfAClosedCameraAndWorkAgainWhenReopened()
    {
        FeaturePtr count = F("Count");
        QCOMPARE(count->SetValue(6LL), int(PkoErrorSuccess));
        m_Camera->ClearJournal();
        QCOMPARE(m_Camera->Close(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->Close(), int(PkoErrorSuccess));
        QVERIFY(!m_Camera->IsOpen());
        unsigned int length = 0;
        long long value = -1;
        QCOMPARE(count->GetName(nullptr, length), int(PkoErrorBadHandle));
        QCOMPARE(count->GetValue(value), int(PkoErrorBadHandle));
        QCOMPARE(count->SetValue(8LL), int(PkoErrorBadHandle));
        QCOMPARE(value, -1LL);
        QVERIFY(m_Camera->Journal().empty());
        std::vector<FeaturePtr> features{count};
        QCOMPARE(m_Camera->GetFeatures(features), int(PkoErrorDeviceNotOpen));
        QCOMPARE(int(features.size()), 1);
        FeaturePtr byName;
        QCOMPARE(m_Camera->GetFeatureByName("Count", byName), int(PkoErrorDeviceNotOpen));

        QCOMPARE(m_Camera->Open(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->Open(), int(PkoErrorSuccess));
        QCOMPARE(IntOf(count), 6LL);
    }

    void shouldFailOperationsOfAFeatureWhoseCameraIsGone()
    {
        FeaturePtr count = F("Count");
        m_Camera.reset();
        long long value = -1;
        unsigned int length = 0;
        QCOMPARE(count->GetValue(value), int(PkoErrorBadHandle));
        QCOMPARE(count->GetName(nullptr, length), int(PkoErrorBadHandle));
        QCOMPARE(count->SetValue(2LL), int(PkoErrorBadHandle));
        QCOMPARE(value, -1LL);
    }

    void shouldApplyCameraSideChangesPastWritabilityAndRange()
    {
        m_Camera->ClearJournal();
        QCOMPARE(m_Camera->ChangeFromCamera("Fixed", "7"), int(PkoErrorSuccess));
        QCOMPARE(IntOf(F("Fixed")), 7LL);
        QCOMPARE(m_Camera->ChangeFromCamera("Count", "11"), int(PkoErrorSuccess));
        QCOMPARE(IntOf(F("Count")), 11LL);
        QCOMPARE(m_Camera->ChangeFromCamera("PerEntry", "9", "C"), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->ValueText("PerEntry", "C"), std::string("9"));
        QCOMPARE(m_Camera->ValueText("PerEntry", "A"), std::string("1"));
        QCOMPARE(int(m_Camera->Journal().size()), 3);
        QCOMPARE(m_Camera->Journal()[0].writer, std::string("camera"));
    }

    void shouldRefuseCameraSideChangesThatDoNotParseOrNameNothing()
    {
        QCOMPARE(m_Camera->ChangeFromCamera("Count", "abc"), int(PkoErrorInvalidValue));
        QCOMPARE(m_Camera->ChangeFromCamera("Mode", "Bogus"), int(PkoErrorInvalidValue));
        QCOMPARE(m_Camera->ChangeFromCamera("Enabled", "1"), int(PkoErrorInvalidValue));
        QCOMPARE(m_Camera->ChangeFromCamera("Missing", "1"), int(PkoErrorNotFound));
        QCOMPARE(m_Camera->ChangeFromCamera("PerEntry", "3", "Z"), int(PkoErrorNotFound));
        QCOMPARE(m_Camera->ChangeFromCamera("Count", "2", "A"), int(PkoErrorNotFound));
        QCOMPARE(IntOf(F("Count")), 4LL);
        QCOMPARE(TextOf(F("Mode")), std::string("Off"));
        QCOMPARE(m_Camera->ValueText("Missing"), std::string());
    }

    void shouldExecuteCommandsAndCountNothingSpecialForOtherNames()
    {
        QCOMPARE(F("Fire")->RunCommand(), int(PkoErrorSuccess));
        QCOMPARE(m_Camera->SoftwareTriggers(), 0ULL);
        QCOMPARE(m_Camera->ValueText("Fire"), std::string());
    }

    void shouldDescribeTheCamera()
    {
        std::string text;
        QCOMPARE(m_Camera->GetID(text), int(PkoErrorSuccess));
        QCOMPARE(text, std::string("TEST"));
        QCOMPARE(m_Camera->GetModel(text), int(PkoErrorSuccess));
        QCOMPARE(text, std::string("Test Camera"));
        QCOMPARE(m_Camera->GetName(text), int(PkoErrorSuccess));
        QCOMPARE(text, std::string("Test Camera (TEST)"));
    }
};

QTEST_GUILESS_MAIN(TestSimFeature)
#include "tst_simfeature.moc"
