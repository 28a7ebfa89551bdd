#include "CountingFeature.h"
#include "FeatureManager.h"
#include "SimTestSupport.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QtTest>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace Pko = ZMT::PkoAPI;
namespace Sim = ZMT::PkoAPI::Sim;
using TestSupport::MessageCapture;

namespace {

const int kFault = Pko::PkoErrorOther;

bool Never(const Sim::Context&)
{
    return false;
}

// Every kind of feature the layer treats differently, two of one name, and
// one float without increment.
Sim::SimCameraPtr BuildCamera()
{
    Sim::CameraBuilder builder("TEST-FM", "Feature test camera");
    builder.AddInteger("Steps", 4, 0, 10, 4).DisplayName("Step Count").Category("/Test/Numbers");
    builder.AddInteger("Offset", 5, 2, 20, 1).DisplayName("Offset X");
    builder.AddInteger("Locked", 3, 0, 10, 1).ReadOnly();
    builder.AddFloat("Gain", 0.0, 0.0, 1.0, 0.1);
    builder.AddFloat("Exposure", 100.0, 10.0, 1000.004);
    builder.AddFloat("Ratio", 1.5, 0.5, 4.0, 0.5);
    builder.AddBoolean("Flag", false);
    builder.AddEnumeration("Mode", {"Off", "On", "Auto"}, "Off").EntryAvailableWhen("Auto", Never);
    builder.AddEnumeration("Hidden", {"A", "B"}, "A").EntryAvailableWhen("A", Never).EntryAvailableWhen("B", Never);
    builder.AddString("Label", "hello");
    builder.AddCommand("Fire");
    builder.AddRaw("Blob", "xyz");
    builder.AddOfType("Odd", 9);
    builder.AddInteger("Dup", 1, 0, 100, 1);
    builder.AddInteger("Dup", 2, 0, 100, 1);
    return builder.Build();
}

FeatureVectorPtr ListFeatures(const Sim::SimCameraPtr& camera)
{
    return TestSupport::FeaturesOf(TestSupport::Opened(camera, TestSupport::WhenOpenFails::Null),
                                   TestSupport::WhenUnlisted::Null);
}

std::string NameOf(const Pko::FeaturePtr& feature)
{
    char name[64] = {0};
    unsigned int length = sizeof(name);
    if (!feature || feature->GetName(name, length) != Pko::PkoErrorSuccess)
        return std::string();
    return std::string(name);
}

Pko::FeaturePtr FindRaw(const Sim::SimCameraPtr& camera, const char* name)
{
    Pko::FeaturePtr feature;
    camera->GetFeatureByName(name, feature);
    return feature;
}

}  // namespace

class TestFeatureManager : public QObject {
    Q_OBJECT

private slots:
    void shouldUseTheFirstFeatureWhenANameIsListedTwice();
    void shouldNotFindANameThatDiffersOnlyInCase();
    void shouldFindAFeatureByStdStringCharPointerAndQString();
    void shouldTryTheFallbacksInOrderAndSkipEmptyOnes();
    void shouldLookUpFallback1TwiceInTheThreeNameForm();
    void shouldSkipAFeatureWhoseNameCannotBeRead();
    void shouldFindNothingInANullList();

    void shouldSnapAndClampIntegerWritesOntoAnIncrementOfFour();
    void shouldWriteSevenTenthsOntoATenthGrid();
    void shouldAlignDownwardsOnly();
    void shouldReturnTheMinimumForAValueBelowIt();
    void shouldNotWriteANonWritableFeatureNorLog();
    void shouldSkipTheWriteWhenTheWritabilityQueryFails();
    void shouldWriteTrueForHalf();
    void shouldReturnTheRequestedNumberForNonNumericFeatures();
    void shouldReturnTheRequestedNumberForAMissingFeature();
    void shouldLogARefusedIntegerWriteWithThePrimaryName();
    void shouldLogARefusedFloatWrite();
    void shouldNotLogARefusedBooleanWrite();
    void shouldReturnMinusOneWhenTheReadBackFails();
    void shouldTreatAnUnreadableDataTypeAsNotNumeric();
    void shouldUseMinusOneForAnUnreadableRange();
    void shouldUseMinusOneForAnUnreadableIncrement();

    void shouldReadEveryNumericType();
    void shouldGiveFallbackValuesWhenAReadFails();

    void shouldReportTheIntegerRangeWithASnappedMaximum();
    void shouldReportAFloatRangeOnItsGrid();
    void shouldReportAHundredthForAFloatWithoutIncrement();
    void shouldStopBeforeSnappingWhenTheIntegerIncrementIsUnreadable();
    void shouldLeaveTheOutputsAloneForAMissingFeature();
    void shouldReportMinusOnesForANonNumericFeature();
    void shouldReportNotWritableWhenTheQueryFails();
    void shouldReadRangesWithoutWritability();
    void shouldReadTheIncrement();

    void shouldReadTheDataType();
    void shouldAnswerWritability();

    void shouldReadStringsAndEntries();
    void shouldWriteAnEntryAndReturnTheText();
    void shouldReturnTheTextOfARefusedWriteWithoutLogging();
    void shouldNeverSearchFallback2WhenWritingText();
    void shouldReadTheFeatureNamedLikeTheWrittenText();

    void shouldListOnlyAvailableEntries();
    void shouldListNothingWhenEveryEntryIsUnavailable();
    void shouldListNothingWhenEntriesCannotBeRead();
    void shouldAnswerEntryAvailability();

    void shouldReturnTrueOnlyWhenTheCommandFails();

    void shouldReadDisplayNamesFeatureNamesAndCategories();
};

void TestFeatureManager::shouldUseTheFirstFeatureWhenANameIsListedTwice()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY2(camera, "camera build failed");
    FeatureVectorPtr list = ListFeatures(camera);
    QVERIFY(list);
    FeatureManager manager(list);

    int first = -1;
    int second = -1;
    for (int i = 0; i < list->size(); ++i) {
        if (NameOf(list->at(i)) != "Dup")
            continue;
        if (first < 0)
            first = i;
        else
            second = i;
    }
    QVERIFY(first >= 0 && second > first);

    QVERIFY(manager.GetFeature(QString("Dup")) == list->at(first));
    QCOMPARE(manager.GetValue("Dup"), 1.0);

    camera->ClearJournal();
    QCOMPARE(manager.SetValue("Dup", 7.0), 7.0);
    long long secondValue = 0;
    QCOMPARE(list->at(second)->GetValue(secondValue), int(Pko::PkoErrorSuccess));
    QCOMPARE(secondValue, 2LL);
    long long firstValue = 0;
    QCOMPARE(list->at(first)->GetValue(firstValue), int(Pko::PkoErrorSuccess));
    QCOMPARE(firstValue, 7LL);
}

void TestFeatureManager::shouldNotFindANameThatDiffersOnlyInCase()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));

    QVERIFY(manager.GetFeature(QString("Steps")));
    QVERIFY(!manager.GetFeature(QString("steps")));
    QVERIFY(!manager.IsAvailable("STEPS"));
    QCOMPARE(manager.GetValue("steps"), -1.0);
    QVERIFY(!manager.GetFeature(QString("Steps ")));
    QVERIFY(!manager.GetFeature(QString("Step")));
}

void TestFeatureManager::shouldFindAFeatureByStdStringCharPointerAndQString()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    const Pko::FeaturePtr raw = FindRaw(camera, "Offset");
    QVERIFY(raw);

    QVERIFY(manager.GetFeature(std::string("Offset")) == raw);
    QVERIFY(manager.GetFeature("Offset") == raw);
    QVERIFY(manager.GetFeature(QString("Offset")) == raw);
    QVERIFY(!manager.GetFeature(static_cast<const char*>(nullptr)));
    QVERIFY(!manager.GetFeature(std::string("Nope")));
}

void TestFeatureManager::shouldTryTheFallbacksInOrderAndSkipEmptyOnes()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    const Pko::FeaturePtr steps = FindRaw(camera, "Steps");
    const Pko::FeaturePtr offset = FindRaw(camera, "Offset");

    QVERIFY(manager.GetFeature("Steps", "Offset") == steps);
    QVERIFY(manager.GetFeature("Nope", "Offset") == offset);
    QVERIFY(!manager.GetFeature("Nope", ""));
    QVERIFY(manager.GetFeature("Nope", "", "Offset") == offset);
    QVERIFY(manager.GetFeature("Nope", "Steps", "Offset") == steps);
    QVERIFY(!manager.GetFeature("Nope", "Nix", "Nada"));

    QCOMPARE(manager.GetValue("Nope", "Offset"), 5.0);
    QCOMPARE(manager.GetValue("Nope", "", "Offset"), 5.0);
    QVERIFY(manager.IsAvailable("Nope", "Offset"));
    QVERIFY(manager.IsAvailable("Nope", "", "Offset"));
    QVERIFY(!manager.IsAvailable("Nope", "", ""));
}

void TestFeatureManager::shouldLookUpFallback1TwiceInTheThreeNameForm()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureVectorPtr real = ListFeatures(camera);
    QVERIFY(real && real->size() > 2);

    // The wrapper at the end of the list is passed by every search that fails.
    FeatureVectorPtr list = FeatureVectorPtr::create(*real);
    Pko::shared_ptr<CountingFeature> last(new CountingFeature(real->last()));
    (*list)[list->size() - 1] = last;
    FeatureManager manager(list);

    QVERIFY(!manager.GetFeature(QString("Nope1")));
    QCOMPARE(last->NameReads(), 2);  // two-call protocol: length, then text

    QVERIFY(!manager.GetFeature("Nope1", "Nope2"));
    QCOMPARE(last->NameReads(), 2 + 4);

    QCOMPARE(QString::fromStdString(NameOf(manager.GetFeature("Nope1", "Nope2", "Steps"))), QString("Steps"));
    QCOMPARE(last->NameReads(), 2 + 4 + 6);

    // The one-name forms pass "" for the fallbacks: one search only.
    QVERIFY(!manager.IsAvailable("Nope1"));
    QCOMPARE(last->NameReads(), 2 + 4 + 6 + 2);
}

void TestFeatureManager::shouldSkipAFeatureWhoseNameCannotBeRead()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->InjectFault("Steps", Sim::Operation::GetName, kFault);

    QVERIFY(!manager.GetFeature(QString("Steps")));
    QVERIFY(!manager.IsAvailable("Steps"));
    QVERIFY(manager.GetFeature("Steps", "Offset") == FindRaw(camera, "Offset"));
    QCOMPARE(manager.GetFeatureName(QStringList() << "Steps"
                                                  << "Offset"),
             QString("Offset"));
}

void TestFeatureManager::shouldFindNothingInANullList()
{
    FeatureManager manager{FeatureVectorPtr()};
    QVERIFY(!manager.GetFeature(QString("Steps")));
    QCOMPARE(manager.GetValue("Steps"), -1.0);
    QCOMPARE(manager.SetValue("Steps", 3.0), 3.0);
    QCOMPARE(manager.GetStringValue("Mode"), QString(""));

    FeatureManager empty(FeatureVectorPtr::create());
    QVERIFY(!empty.IsAvailable("Steps"));
}

void TestFeatureManager::shouldSnapAndClampIntegerWritesOntoAnIncrementOfFour()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));

    bool writable = false;
    double minimum = 0, maximum = 0, increment = 0;
    manager.GetValueWithRange("Steps", writable, minimum, maximum, increment);
    QCOMPARE(maximum, 8.0);

    camera->ClearJournal();
    QCOMPARE(manager.SetValue("Steps", 7.0), 4.0);
    QCOMPARE(manager.SetValue("Steps", 100.0), 8.0);
    QCOMPARE(manager.SetValue("Steps", 8.0), 8.0);

    const std::vector<Sim::JournalEntry> journal = camera->Journal();
    QCOMPARE(journal.size(), std::size_t(3));
    QCOMPARE(QString::fromStdString(journal[0].feature), QString("Steps"));
    QCOMPARE(QString::fromStdString(journal[0].value), QString("4"));
    QCOMPARE(journal[0].result, int(Pko::PkoErrorSuccess));
    QCOMPARE(QString::fromStdString(journal[1].value), QString("8"));
    QCOMPARE(journal[1].result, int(Pko::PkoErrorSuccess));
    QCOMPARE(QString::fromStdString(journal[2].value), QString("8"));
}

void TestFeatureManager::shouldWriteSevenTenthsOntoATenthGrid()
{
    // Without the correction factor the grid step count would floor to 6.
    QCOMPARE(std::floor((0.7 - 0.0) / 0.1), 6.0);
    QCOMPARE(FeatureManager::AlignToIncrement(0.0, 0.7, 0.1), 0.7);

    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->ClearJournal();

    QCOMPARE(manager.SetValue("Gain", 0.7), 0.7);
    const std::vector<Sim::JournalEntry> journal = camera->Journal();
    QCOMPARE(journal.size(), std::size_t(1));
    QCOMPARE(QString::fromStdString(journal[0].feature), QString("Gain"));
    QCOMPARE(QString::fromStdString(journal[0].value), QString("0.7"));
    QCOMPARE(journal[0].result, int(Pko::PkoErrorSuccess));
}

void TestFeatureManager::shouldAlignDownwardsOnly()
{
    QCOMPARE(FeatureManager::AlignToIncrement(0.0, 10.0, 4.0), 8.0);
    QCOMPARE(FeatureManager::AlignToIncrement(0.0, 7.0, 4.0), 4.0);
    QCOMPARE(FeatureManager::AlignToIncrement(0.0, 100.0, 4.0), 100.0);
    QCOMPARE(FeatureManager::AlignToIncrement(2.0, 9.0, 4.0), 6.0);
    QCOMPARE(FeatureManager::AlignToIncrement(0.5, 1.9, 0.5), 1.5);
    QCOMPARE(FeatureManager::AlignToIncrement(0.0, 3.0, 0.1), 3.0);
    // A value just under a grid point stays under it.
    QCOMPARE(FeatureManager::AlignToIncrement(0.0, 7.99, 4.0), 4.0);
}

void TestFeatureManager::shouldReturnTheMinimumForAValueBelowIt()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->ClearJournal();

    QCOMPARE(manager.SetValue("Offset", -50.0), 2.0);
    QCOMPARE(manager.SetValue("Ratio", 0.1), 0.5);

    const std::vector<Sim::JournalEntry> journal = camera->Journal();
    QCOMPARE(journal.size(), std::size_t(2));
    QCOMPARE(QString::fromStdString(journal[0].value), QString("2"));
    QCOMPARE(QString::fromStdString(journal[1].feature), QString("Ratio"));
    QCOMPARE(QString::fromStdString(journal[1].value), QString("0.5"));
}

void TestFeatureManager::shouldNotWriteANonWritableFeatureNorLog()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->ClearJournal();
    MessageCapture capture;

    QCOMPARE(manager.SetValue("Locked", 7.0), 3.0);
    QVERIFY(camera->Journal().empty());
    QCOMPARE(capture.Messages(), QStringList());
}

void TestFeatureManager::shouldSkipTheWriteWhenTheWritabilityQueryFails()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->InjectFault("Offset", Sim::Operation::IsWritable, kFault);
    camera->InjectFault("Flag", Sim::Operation::IsWritable, kFault);
    camera->ClearJournal();

    QCOMPARE(manager.SetValue("Offset", 9.0), 5.0);
    QCOMPARE(manager.SetValue("Flag", 1.0), 0.0);
    QVERIFY(camera->Journal().empty());
}

void TestFeatureManager::shouldWriteTrueForHalf()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->ClearJournal();

    QCOMPARE(manager.SetValue("Flag", 0.5), 1.0);
    QCOMPARE(manager.SetValue("Flag", 0.0), 0.0);
    QCOMPARE(manager.SetValue("Flag", -2.0), 1.0);

    const std::vector<Sim::JournalEntry> journal = camera->Journal();
    QCOMPARE(journal.size(), std::size_t(3));
    QCOMPARE(QString::fromStdString(journal[0].value), QString("true"));
    QCOMPARE(QString::fromStdString(journal[1].value), QString("false"));
    QCOMPARE(QString::fromStdString(journal[2].value), QString("true"));
}

void TestFeatureManager::shouldReturnTheRequestedNumberForNonNumericFeatures()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->ClearJournal();

    QCOMPARE(manager.SetValue("Mode", 3.0), 3.0);
    QCOMPARE(manager.SetValue("Label", 4.5), 4.5);
    QCOMPARE(manager.SetValue("Fire", 1.0), 1.0);
    QCOMPARE(manager.SetValue("Odd", 2.0), 2.0);
    QVERIFY(camera->Journal().empty());
    QCOMPARE(manager.GetStringValue("Mode"), QString("Off"));
}

void TestFeatureManager::shouldReturnTheRequestedNumberForAMissingFeature()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->ClearJournal();
    MessageCapture capture;

    QCOMPARE(manager.SetValue("Nope", 12.5), 12.5);
    QCOMPARE(manager.SetValue("Nope", "Nix", 13.5), 13.5);
    QCOMPARE(manager.SetValue("Nope", "Nix", "Nada", -1.5), -1.5);
    QVERIFY(camera->Journal().empty());
    QCOMPARE(capture.Messages(), QStringList());
}

void TestFeatureManager::shouldLogARefusedIntegerWriteWithThePrimaryName()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->InjectFault("Offset", Sim::Operation::SetValue, kFault);
    MessageCapture capture;

    QCOMPARE(manager.SetValue("Nope", "Offset", 7.0), 5.0);
    QCOMPARE(capture.Messages(), QStringList() << "Error: FeatureManager::SetValue:Int:  \"Nope\"  :  -13");
}

void TestFeatureManager::shouldLogARefusedFloatWrite()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->InjectFault("Gain", Sim::Operation::SetValue, Pko::PkoErrorTimeout);
    MessageCapture capture;

    QCOMPARE(manager.SetValue("Gain", 0.3), 0.0);
    QCOMPARE(capture.Messages(), QStringList() << "Error: FeatureManager::SetValue:Double:  \"Gain\"  :  -12");
}

void TestFeatureManager::shouldNotLogARefusedBooleanWrite()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->InjectFault("Flag", Sim::Operation::SetValue, kFault);
    MessageCapture capture;

    QCOMPARE(manager.SetValue("Flag", 1.0), 0.0);
    QCOMPARE(capture.Messages(), QStringList());
}

void TestFeatureManager::shouldReturnMinusOneWhenTheReadBackFails()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->InjectFault("Offset", Sim::Operation::GetValue, kFault);
    camera->InjectFault("Ratio", Sim::Operation::GetValue, kFault);
    camera->InjectFault("Flag", Sim::Operation::GetValue, kFault);
    camera->ClearJournal();

    QCOMPARE(manager.SetValue("Offset", 9.0), -1.0);
    QCOMPARE(manager.SetValue("Ratio", 2.0), -1.0);
    QCOMPARE(manager.SetValue("Flag", 1.0), 0.0);

    camera->ClearFaults();
    QCOMPARE(QString::fromStdString(camera->ValueText("Offset")), QString("9"));
    QCOMPARE(QString::fromStdString(camera->ValueText("Ratio")), QString("2"));
    QCOMPARE(QString::fromStdString(camera->ValueText("Flag")), QString("true"));
    QCOMPARE(camera->Journal().size(), std::size_t(3));
}

void TestFeatureManager::shouldTreatAnUnreadableDataTypeAsNotNumeric()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->InjectFault("Offset", Sim::Operation::GetDataType, kFault);
    camera->ClearJournal();

    QCOMPARE(manager.SetValue("Offset", 9.0), 9.0);
    QVERIFY(camera->Journal().empty());
    QCOMPARE(manager.GetValue("Offset"), -1.0);
    QCOMPARE(int(manager.GetDataType("Offset")), int(Pko::PkoFeatureDataUnknown));
}

void TestFeatureManager::shouldUseMinusOneForAnUnreadableRange()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->InjectFault("Offset", Sim::Operation::GetRange, kFault);
    camera->ClearJournal();
    MessageCapture capture;

    // Range -1..-1: every value is clamped to -1, which the camera refuses.
    QCOMPARE(manager.SetValue("Offset", 9.0), 5.0);
    const std::vector<Sim::JournalEntry> journal = camera->Journal();
    QCOMPARE(journal.size(), std::size_t(1));
    QCOMPARE(QString::fromStdString(journal[0].value), QString("-1"));
    QVERIFY(journal[0].result != Pko::PkoErrorSuccess);
    QCOMPARE(
        capture.Messages(),
        QStringList() << QString("Error: FeatureManager::SetValue:Int:  \"Offset\"  :  %1").arg(journal[0].result));
}

void TestFeatureManager::shouldUseMinusOneForAnUnreadableIncrement()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->InjectFault("Steps", Sim::Operation::GetIncrement, kFault);
    camera->ClearJournal();

    // An increment of -1 leaves whole values as they are, so 7 goes to the
    // camera unsnapped and is refused there (its real step is 4).
    QCOMPARE(manager.SetValue("Steps", 7.0), 4.0);
    const std::vector<Sim::JournalEntry> journal = camera->Journal();
    QCOMPARE(journal.size(), std::size_t(1));
    QCOMPARE(QString::fromStdString(journal[0].value), QString("7"));
    QCOMPARE(journal[0].result, int(Pko::PkoErrorInvalidValue));
}

void TestFeatureManager::shouldReadEveryNumericType()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));

    QCOMPARE(manager.GetValue("Offset"), 5.0);
    QCOMPARE(manager.GetValue("Ratio"), 1.5);
    QCOMPARE(manager.GetValue("Exposure"), 100.0);
    QCOMPARE(manager.GetValue("Flag"), 0.0);
    manager.SetValue("Flag", 1.0);
    QCOMPARE(manager.GetValue("Flag"), 1.0);
    QCOMPARE(manager.GetValue("Nope"), -1.0);
    QCOMPARE(manager.GetValue("Mode"), -1.0);
    QCOMPARE(manager.GetValue("Label"), -1.0);
    QCOMPARE(manager.GetValue("Fire"), -1.0);
    QCOMPARE(manager.GetValue("Odd"), -1.0);
}

void TestFeatureManager::shouldGiveFallbackValuesWhenAReadFails()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    manager.SetValue("Flag", 1.0);
    camera->InjectFault("Offset", Sim::Operation::GetValue, kFault);
    camera->InjectFault("Ratio", Sim::Operation::GetValue, kFault);
    camera->InjectFault("Flag", Sim::Operation::GetValue, kFault);

    QCOMPARE(manager.GetValue("Offset"), -1.0);
    QCOMPARE(manager.GetValue("Ratio"), -1.0);
    QCOMPARE(manager.GetValue("Flag"), 0.0);

    camera->ClearFaults();
    camera->InjectNaN("Ratio");
    QVERIFY(std::isnan(manager.GetValue("Ratio")));
}

void TestFeatureManager::shouldReportTheIntegerRangeWithASnappedMaximum()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));

    bool writable = false;
    double minimum = 0, maximum = 0, increment = 0;
    QCOMPARE(manager.GetValueWithRange("Steps", writable, minimum, maximum, increment), 4.0);
    QCOMPARE(writable, true);
    QCOMPARE(minimum, 0.0);
    QCOMPARE(maximum, 8.0);
    QCOMPARE(increment, 4.0);

    QCOMPARE(manager.GetValueWithRange("Locked", writable, minimum, maximum, increment), 3.0);
    QCOMPARE(writable, false);
    QCOMPARE(maximum, 10.0);

    QCOMPARE(manager.GetValueWithRange("Nope", "Steps", writable, minimum, maximum, increment), 4.0);
    QCOMPARE(maximum, 8.0);
    QCOMPARE(manager.GetValueWithRange("Nope", "", "Offset", writable, minimum, maximum, increment), 5.0);
    QCOMPARE(minimum, 2.0);
    QCOMPARE(maximum, 20.0);
    QCOMPARE(increment, 1.0);
}

void TestFeatureManager::shouldReportAFloatRangeOnItsGrid()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));

    bool writable = false;
    double minimum = -5, maximum = -5, increment = -5;
    QCOMPARE(manager.GetValueWithRange("Ratio", writable, minimum, maximum, increment), 1.5);
    QCOMPARE(writable, true);
    QCOMPARE(minimum, 0.5);
    QCOMPARE(maximum, 4.0);
    QCOMPARE(increment, 0.5);
}

void TestFeatureManager::shouldReportAHundredthForAFloatWithoutIncrement()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));

    bool writable = false;
    double minimum = 0, maximum = 0, increment = 0;
    QCOMPARE(manager.GetValueWithRange("Exposure", writable, minimum, maximum, increment), 100.0);
    QCOMPARE(increment, 0.01);
    QCOMPARE(minimum, 10.0);
    // Snapped onto 0.01 it would be 1000.0.
    QCOMPARE(maximum, 1000.004);

    camera->InjectFault("Ratio", Sim::Operation::GetIncrement, kFault);
    QCOMPARE(manager.GetValueWithRange("Ratio", writable, minimum, maximum, increment), 1.5);
    QCOMPARE(increment, 0.01);
    QCOMPARE(maximum, 4.0);
}

void TestFeatureManager::shouldStopBeforeSnappingWhenTheIntegerIncrementIsUnreadable()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->InjectFault("Steps", Sim::Operation::GetIncrement, kFault);

    bool writable = false;
    double minimum = 0, maximum = 0, increment = 0;
    QCOMPARE(manager.GetValueWithRange("Steps", writable, minimum, maximum, increment), 4.0);
    QCOMPARE(increment, -1.0);
    QCOMPARE(maximum, 10.0);

    camera->ClearFaults();
    camera->InjectFault("Steps", Sim::Operation::GetValue, kFault);
    camera->InjectFault("Steps", Sim::Operation::GetRange, kFault);
    QCOMPARE(manager.GetValueWithRange("Steps", writable, minimum, maximum, increment), -1.0);
    QCOMPARE(minimum, -1.0);
    QCOMPARE(increment, 4.0);
    QCOMPARE(maximum, -1.0);
}

void TestFeatureManager::shouldLeaveTheOutputsAloneForAMissingFeature()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));

    bool writable = true;
    double minimum = 42, maximum = 43, increment = 44;
    QCOMPARE(manager.GetValueWithRange("Nope", writable, minimum, maximum, increment), -1.0);
    QCOMPARE(writable, true);
    QCOMPARE(minimum, 42.0);
    QCOMPARE(maximum, 43.0);
    QCOMPARE(increment, 44.0);

    QCOMPARE(manager.GetRange("Nope", minimum, maximum), -1.0);
    QCOMPARE(manager.GetRangeAndIncrement("Nope", "Nix", minimum, maximum, increment), -1.0);
    QCOMPARE(minimum, 42.0);
    QCOMPARE(maximum, 43.0);
    QCOMPARE(increment, 44.0);
}

void TestFeatureManager::shouldReportMinusOnesForANonNumericFeature()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));

    bool writable = true;
    double minimum = 42, maximum = 43, increment = 44;
    QVERIFY(manager.IsWritable("Mode"));
    QCOMPARE(manager.GetValueWithRange("Mode", writable, minimum, maximum, increment), -1.0);
    QCOMPARE(writable, false);
    QCOMPARE(minimum, -1.0);
    QCOMPARE(maximum, -1.0);
    QCOMPARE(increment, -1.0);

    minimum = 42, maximum = 43, increment = 44;
    QCOMPARE(manager.GetRangeAndIncrement("Flag", minimum, maximum, increment), -1.0);
    QCOMPARE(minimum, -1.0);
    QCOMPARE(maximum, -1.0);
    QCOMPARE(increment, -1.0);
}

void TestFeatureManager::shouldReportNotWritableWhenTheQueryFails()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->InjectFault("Offset", Sim::Operation::IsWritable, kFault);

    bool writable = true;
    double minimum = 0, maximum = 0, increment = 0;
    QCOMPARE(manager.GetValueWithRange("Offset", writable, minimum, maximum, increment), 5.0);
    QCOMPARE(writable, false);
    QCOMPARE(maximum, 20.0);
}

void TestFeatureManager::shouldReadRangesWithoutWritability()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));

    double minimum = 0, maximum = 0, increment = 0;
    QCOMPARE(manager.GetRange("Steps", minimum, maximum), 4.0);
    QCOMPARE(minimum, 0.0);
    QCOMPARE(maximum, 8.0);
    QCOMPARE(manager.GetRange("Nope", "Ratio", minimum, maximum), 1.5);
    QCOMPARE(minimum, 0.5);
    QCOMPARE(maximum, 4.0);
    QCOMPARE(manager.GetRange("Nope", "", "Offset", minimum, maximum), 5.0);
    QCOMPARE(maximum, 20.0);

    QCOMPARE(manager.GetRangeAndIncrement("Steps", minimum, maximum, increment), 4.0);
    QCOMPARE(maximum, 8.0);
    QCOMPARE(increment, 4.0);
    QCOMPARE(manager.GetRangeAndIncrement("Nope", "", "Exposure", minimum, maximum, increment), 100.0);
    QCOMPARE(increment, 0.01);
    QCOMPARE(maximum, 1000.004);

    // No writability query is made, so a failing one changes nothing.
    camera->InjectFault("Steps", Sim::Operation::IsWritable, kFault);
    QCOMPARE(manager.GetRangeAndIncrement("Steps", minimum, maximum, increment), 4.0);
    QCOMPARE(maximum, 8.0);
}

void TestFeatureManager::shouldReadTheIncrement()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));

    QCOMPARE(manager.GetIncrement("Steps"), 4.0);
    QCOMPARE(manager.GetIncrement("Ratio"), 0.5);
    QCOMPARE(manager.GetIncrement("Exposure"), 0.0);
    QCOMPARE(manager.GetIncrement("Nope", "Offset"), 1.0);
    QCOMPARE(manager.GetIncrement("Nope"), -1.0);
    QCOMPARE(manager.GetIncrement("Mode"), -1.0);
    camera->InjectFault("Steps", Sim::Operation::GetIncrement, kFault);
    QCOMPARE(manager.GetIncrement("Steps"), -1.0);
}

void TestFeatureManager::shouldReadTheDataType()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));

    QCOMPARE(int(manager.GetDataType("Steps")), 1);
    QCOMPARE(int(manager.GetDataType("Gain")), 2);
    QCOMPARE(int(manager.GetDataType("Mode")), 3);
    QCOMPARE(int(manager.GetDataType("Label")), 4);
    QCOMPARE(int(manager.GetDataType("Flag")), 5);
    QCOMPARE(int(manager.GetDataType("Fire")), 6);
    QCOMPARE(int(manager.GetDataType("Blob")), 7);
    QCOMPARE(int(manager.GetDataType("Odd")), 9);
    QCOMPARE(int(manager.GetDataType("Nope")), 0);
    QCOMPARE(int(manager.GetDataType("Nope", "Flag")), 5);
    QCOMPARE(int(manager.GetDataType("Nope", "", "Blob")), 7);
    camera->InjectFault("Mode", Sim::Operation::GetDataType, kFault);
    QCOMPARE(int(manager.GetDataType("Mode")), 0);
}

void TestFeatureManager::shouldAnswerWritability()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));

    QVERIFY(manager.IsWritable("Offset"));
    QVERIFY(!manager.IsWritable("Locked"));
    QVERIFY(!manager.IsWritable("Nope"));
    QVERIFY(manager.IsWritable("Nope", "Offset"));
    QVERIFY(!manager.IsWritable("Locked", "Offset"));
    QVERIFY(manager.IsWritable("Nope", "", "Offset"));
    camera->InjectFault("Offset", Sim::Operation::IsWritable, kFault);
    QVERIFY(!manager.IsWritable("Offset"));
}

void TestFeatureManager::shouldReadStringsAndEntries()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));

    QCOMPARE(manager.GetStringValue("Mode"), QString("Off"));
    QCOMPARE(manager.GetStringValue("Label"), QString("hello"));
    QCOMPARE(manager.GetStringValue("Nope", "Label"), QString("hello"));
    const QString missing = manager.GetStringValue("Nope");
    QVERIFY(missing.isEmpty());
    QCOMPARE(manager.GetStringValue("Offset"), QString(""));
    camera->InjectFault("Label", Sim::Operation::GetValue, kFault);
    QCOMPARE(manager.GetStringValue("Label"), QString(""));
}

void TestFeatureManager::shouldWriteAnEntryAndReturnTheText()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->ClearJournal();

    QCOMPARE(manager.SetStringValue("Mode", "On"), QString("On"));
    QCOMPARE(manager.GetStringValue("Mode"), QString("On"));
    QCOMPARE(manager.SetStringValue("Nope", "Label", "bye"), QString("bye"));
    QCOMPARE(manager.GetStringValue("Label"), QString("bye"));

    const std::vector<Sim::JournalEntry> journal = camera->Journal();
    QCOMPARE(journal.size(), std::size_t(2));
    QCOMPARE(QString::fromStdString(journal[0].feature), QString("Mode"));
    QCOMPARE(QString::fromStdString(journal[0].value), QString("On"));
    QCOMPARE(journal[0].result, int(Pko::PkoErrorSuccess));
    QCOMPARE(QString::fromStdString(journal[1].feature), QString("Label"));
    QCOMPARE(QString::fromStdString(journal[1].value), QString("bye"));

    // An empty text is the only case a caller can detect from the result.
    QCOMPARE(manager.SetStringValue("Label", ""), QString(""));
}

void TestFeatureManager::shouldReturnTheTextOfARefusedWriteWithoutLogging()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->ClearJournal();
    MessageCapture capture;

    QCOMPARE(manager.SetStringValue("Mode", "Auto"), QString("Auto"));
    QCOMPARE(manager.SetStringValue("Mode", "Bogus"), QString("Bogus"));
    QCOMPARE(manager.SetStringValue("Nope", "Whatever"), QString("Whatever"));
    QCOMPARE(manager.GetStringValue("Mode"), QString("Off"));

    const std::vector<Sim::JournalEntry> journal = camera->Journal();
    QCOMPARE(journal.size(), std::size_t(2));
    QCOMPARE(journal[0].result, int(Pko::PkoErrorInvalidValue));
    QCOMPARE(journal[1].result, int(Pko::PkoErrorInvalidValue));
    QCOMPARE(capture.Messages(), QStringList());
}

void TestFeatureManager::shouldNeverSearchFallback2WhenWritingText()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->ClearJournal();

    QCOMPARE(manager.SetStringValue("Nope", "", "Label", "zzz"), QString("zzz"));
    QCOMPARE(manager.SetStringValue("Nope", "Nix", "Label", "zzz"), QString("zzz"));
    QVERIFY(camera->Journal().empty());
    QCOMPARE(manager.GetStringValue("Label"), QString("hello"));

    QCOMPARE(manager.SetStringValue("Nope", "Label", "Mode", "yyy"), QString("yyy"));
    QCOMPARE(manager.GetStringValue("Label"), QString("yyy"));
    QCOMPARE(camera->Journal().size(), std::size_t(1));
}

void TestFeatureManager::shouldReadTheFeatureNamedLikeTheWrittenText()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureVectorPtr real = ListFeatures(camera);
    QVERIFY(real);

    FeatureVectorPtr list = FeatureVectorPtr::create(*real);
    Pko::shared_ptr<CountingFeature> mode;
    for (int i = 0; i < list->size(); ++i) {
        if (NameOf(list->at(i)) == "Mode") {
            mode = Pko::shared_ptr<CountingFeature>(new CountingFeature(list->at(i)));
            (*list)[i] = mode;
        }
    }
    QVERIFY(mode);
    FeatureManager manager(list);

    QCOMPARE(manager.SetStringValue("Label", "Nothing"), QString("Nothing"));
    QCOMPARE(mode->TextReads(), 0);
    // Writing the text "Mode" reads the feature "Mode" afterwards.
    QCOMPARE(manager.SetStringValue("Label", "Mode"), QString("Mode"));
    QCOMPARE(mode->TextReads(), 2);
    // Nothing is written when the feature is missing, and nothing read.
    QCOMPARE(manager.SetStringValue("Nope", "Mode"), QString("Mode"));
    QCOMPARE(mode->TextReads(), 2);
}

void TestFeatureManager::shouldListOnlyAvailableEntries()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));

    QCOMPARE(manager.GetAvailableValues("Mode"), QStringList() << "Off"
                                                               << "On");
    QCOMPARE(manager.GetAvailableValues("Nope", "Mode"), QStringList() << "Off"
                                                                       << "On");
    QCOMPARE(manager.GetAvailableValues("Nope"), QStringList());
    QCOMPARE(manager.GetAvailableValues("Offset"), QStringList());
}

void TestFeatureManager::shouldListNothingWhenEveryEntryIsUnavailable()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));

    unsigned int count = 0;
    QCOMPARE(FindRaw(camera, "Hidden")->GetValues(nullptr, count), int(Pko::PkoErrorSuccess));
    QCOMPARE(count, 2u);
    QCOMPARE(manager.GetAvailableValues("Hidden"), QStringList());
}

void TestFeatureManager::shouldListNothingWhenEntriesCannotBeRead()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));

    camera->InjectFault("Mode", Sim::Operation::GetValues, kFault);
    QCOMPARE(manager.GetAvailableValues("Mode"), QStringList());
    camera->ClearFaults();
    camera->InjectFault("Mode", Sim::Operation::IsValueAvailable, kFault);
    QCOMPARE(manager.GetAvailableValues("Mode"), QStringList());
}

void TestFeatureManager::shouldAnswerEntryAvailability()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));

    QVERIFY(manager.IsValueAvailable("Mode", "On"));
    QVERIFY(!manager.IsValueAvailable("Mode", "Auto"));
    QVERIFY(!manager.IsValueAvailable("Mode", "Bogus"));
    QVERIFY(!manager.IsValueAvailable("Nope", "On"));
    camera->InjectFault("Mode", Sim::Operation::IsValueAvailable, kFault);
    QVERIFY(!manager.IsValueAvailable("Mode", "On"));
}

void TestFeatureManager::shouldReturnTrueOnlyWhenTheCommandFails()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));
    camera->ClearJournal();

    QCOMPARE(manager.RunCommand("Fire"), false);
    QCOMPARE(manager.RunCommand("Nope"), false);
    const std::vector<Sim::JournalEntry> journal = camera->Journal();
    QCOMPARE(journal.size(), std::size_t(1));
    QCOMPARE(QString::fromStdString(journal[0].feature), QString("Fire"));
    QCOMPARE(QString::fromStdString(journal[0].value), QString("(execute)"));

    QCOMPARE(manager.RunCommand("Offset"), true);
    camera->InjectFault("Fire", Sim::Operation::RunCommand, kFault);
    QCOMPARE(manager.RunCommand("Fire"), true);
}

void TestFeatureManager::shouldReadDisplayNamesFeatureNamesAndCategories()
{
    Sim::SimCameraPtr camera = BuildCamera();
    QVERIFY(camera);
    FeatureManager manager(ListFeatures(camera));

    QCOMPARE(manager.GetDisplayName("Steps"), QString("Step Count"));
    QCOMPARE(manager.GetDisplayName("Nope", "Offset"), QString("Offset X"));
    QCOMPARE(manager.GetDisplayName("Nope", "", "Steps"), QString("Step Count"));
    QCOMPARE(manager.GetDisplayName("Label"), QString("Label"));
    QCOMPARE(manager.GetDisplayName(QStringList() << "Nope"
                                                  << "Offset"
                                                  << "Steps"),
             QString("Offset X"));
    QVERIFY(manager.GetDisplayName("Nope").isEmpty());
    QVERIFY(manager.GetDisplayName(QStringList()).isEmpty());

    QCOMPARE(manager.GetFeatureName(QStringList() << "Nope"
                                                  << "Steps"
                                                  << "Offset"),
             QString("Steps"));
    QCOMPARE(manager.GetFeatureName(QStringList() << "Offset"), QString("Offset"));
    QVERIFY(manager.GetFeatureName(QStringList() << "offset").isEmpty());
    QVERIFY(manager.GetFeatureName(QStringList()).isEmpty());

    QCOMPARE(manager.GetCategory("Steps"), QString("/Test/Numbers"));
    QCOMPARE(manager.GetCategory("Offset"), QString("/Root"));
    QVERIFY(manager.GetCategory("Nope").isEmpty());

    camera->InjectFault("Steps", Sim::Operation::GetDisplayName, kFault);
    camera->InjectFault("Steps", Sim::Operation::GetCategory, kFault);
    QVERIFY(manager.GetDisplayName("Steps").isEmpty());
    QVERIFY(manager.GetCategory("Steps").isEmpty());
}

QTEST_GUILESS_MAIN(TestFeatureManager)
#include "tst_featuremanager.moc"
