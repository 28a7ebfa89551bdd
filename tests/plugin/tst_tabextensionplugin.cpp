// The plug-in shell of the "Trigger IO" tab, exercised through the built
// library's exported entry points on the SDK's simulated cameras.

#include "SimTestSupport.h"
#include "TabExtensionInterface.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QFile>
#include <QImage>
#include <QLabel>
#include <QLayout>
#include <QPointer>
#include <QResource>
#include <QSet>
#include <QSignalSpy>
#include <QVBoxLayout>
#include <QtTest>

#include <elf.h>

#include <cstring>
#include <memory>

extern "C" QObject* qt_plugin_instance();
extern "C" const char* qt_plugin_query_verification_data();
// rcc's explicit init/cleanup pair of the plug-in's resources.
int qInitResources_tabextensiontriggerio();
int qCleanupResources_tabextensiontriggerio();

using ZMT::PkoAPI::FeaturePtr;
using ZMT::PkoAPI::Sim::SimCameraPtr;

namespace {

using TestSupport::FeatureList;

const char kRecord[] =
    "pattern=QT_PLUGIN_VERIFICATION_DATA\nversion=4.8.4\ndebug=true\n"
    "buildkey=ZMT_Qt4.8.4 i386 linux g++-4 full-config";

const char* const kImagePaths[] = {":/PelkoViewer/Images/triggering_edge_256.png",
                                   ":/PelkoViewer/Images/triggering_level_256.png",
                                   ":/PelkoViewer/Images/triggering_bulk_256.png"};

// An open simulated camera and its feature list; closed on destruction.
struct OpenCamera {
    explicit OpenCamera(const char* id) : camera(ZMT::PkoAPI::Sim::CreateModel(id)), features(new QVector<FeaturePtr>)
    {
        if (camera && camera->Open() == ZMT::PkoAPI::PkoErrorSuccess) {
            features = TestSupport::FeaturesOf(camera);
        }
    }
    ~OpenCamera()
    {
        if (camera) {
            camera->Close();
        }
    }
    SimCameraPtr camera;
    FeatureList features;
};

// The plug-in object, deleted at the end of the test that took it so that
// every test starts from a fresh instance.
struct PluginInstance {
    PluginInstance() : object(qt_plugin_instance()), plugin(qobject_cast<TabExtensionInterface*>(object)) {}
    ~PluginInstance() { delete object.data(); }
    QPointer<QObject> object;
    TabExtensionInterface* plugin;
};

// The contents of the named section of an ELF64 file; error tells why not.
QByteArray ElfSection(const QString& path, const QByteArray& name, QString& error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("cannot open ") + path;
        return QByteArray();
    }
    const QByteArray image = file.readAll();
    Elf64_Ehdr header;
    if (image.size() < static_cast<int>(sizeof(header)) || !image.startsWith(ELFMAG) ||
        image.at(EI_CLASS) != ELFCLASS64) {
        error = QStringLiteral("not an ELF64 file");
        return QByteArray();
    }
    std::memcpy(&header, image.constData(), sizeof(header));
    auto sectionAt = [&image, &header](int index, Elf64_Shdr& section) {
        const qint64 offset = static_cast<qint64>(header.e_shoff) + static_cast<qint64>(index) * header.e_shentsize;
        if (offset < 0 || offset + static_cast<qint64>(sizeof(section)) > image.size()) {
            return false;
        }
        std::memcpy(&section, image.constData() + offset, sizeof(section));
        return true;
    };
    Elf64_Shdr names;
    if (!sectionAt(header.e_shstrndx, names)) {
        error = QStringLiteral("no section name table");
        return QByteArray();
    }
    for (int i = 0; i < header.e_shnum; ++i) {
        Elf64_Shdr section;
        if (!sectionAt(i, section)) {
            break;
        }
        const QByteArray sectionName(image.constData() + names.sh_offset + section.sh_name);
        if (sectionName == name) {
            return image.mid(static_cast<int>(section.sh_offset), static_cast<int>(section.sh_size));
        }
    }
    error = QStringLiteral("no section ") + QString::fromLatin1(name);
    return QByteArray();
}

}  // namespace

class TabExtensionPluginTest : public QObject {
    Q_OBJECT

signals:
    // The host side of the streaming relay.
    void hostStreaming(bool isStreaming);

private slots:
    void shouldReturnTheSameInstanceOnEveryCall();
    void shouldMakeANewInstanceAfterTheOldOneWasDeleted();
    void shouldAnswerTheInterfaceIdentifierAndItsClassName();
    void shouldHaveSignalAtIndexZeroAndSlotAtIndexOne();
    void shouldRefuseACameraWithoutTriggerFeaturesAndLeaveThePageEmpty();
    void shouldFillThePageWithOneWidgetUnderOneLayout_data();
    void shouldFillThePageWithOneWidgetUnderOneLayout();
    void shouldStayUsableAfterARefusal();
    void shouldDeliverOneStreamingEmissionToEveryWidget_data();
    void shouldDeliverOneStreamingEmissionToEveryWidget();
    void shouldRefuseAnUnknownStreamingSignalAndKeepWorking();
    void shouldDestroyTheWidgetWithItsPage();
    void shouldReturnTheExactVerificationRecord();
    void shouldKeepTheVerificationRecordInItsOwnSection();
    void shouldCarryThePresetImagesAs256PixelPictures_data();
    void shouldCarryThePresetImagesAs256PixelPictures();
    void shouldStoreThePresetImagesZlibCompressedInFormatVersionOne_data();
    void shouldStoreThePresetImagesZlibCompressedInFormatVersionOne();
    void shouldUnregisterAndRegisterTheImagesThroughTheResourcePair();
};

void TabExtensionPluginTest::shouldReturnTheSameInstanceOnEveryCall()
{
    PluginInstance first;
    QVERIFY(first.object != nullptr);
    QCOMPARE(qt_plugin_instance(), first.object.data());
    QCOMPARE(first.object->parent(), static_cast<QObject*>(nullptr));
}

void TabExtensionPluginTest::shouldMakeANewInstanceAfterTheOldOneWasDeleted()
{
    QPointer<QObject> first = qt_plugin_instance();
    QVERIFY(first != nullptr);
    delete first.data();
    QVERIFY(first.isNull());

    PluginInstance second;
    QVERIFY(second.object != nullptr);
    QVERIFY(second.plugin != nullptr);
    QCOMPARE(qt_plugin_instance(), second.object.data());
}

void TabExtensionPluginTest::shouldAnswerTheInterfaceIdentifierAndItsClassName()
{
    PluginInstance instance;
    QVERIFY(instance.plugin != nullptr);
    QVERIFY(QByteArray(TabExtensionInterface_iid).endsWith(".Plugin.TabExtensionInterface/1.0"));
    QCOMPARE(instance.object->qt_metacast(TabExtensionInterface_iid), static_cast<void*>(instance.plugin));
    QVERIFY(instance.object->qt_metacast("TabExtensionPlugin") != nullptr);
    QCOMPARE(QByteArray(instance.object->metaObject()->className()), QByteArray("TabExtensionPlugin"));
}

void TabExtensionPluginTest::shouldHaveSignalAtIndexZeroAndSlotAtIndexOne()
{
    PluginInstance instance;
    const QMetaObject* meta = instance.object->metaObject();
    QCOMPARE(meta->methodCount() - meta->methodOffset(), 2);
    const QMetaMethod signal = meta->method(meta->methodOffset());
    const QMetaMethod slot = meta->method(meta->methodOffset() + 1);
    QCOMPARE(signal.methodSignature(), QByteArray("camStreaming(bool)"));
    QCOMPARE(signal.methodType(), QMetaMethod::Signal);
    QCOMPARE(slot.methodSignature(), QByteArray("OnCamIsStreaming(bool)"));
    QCOMPARE(slot.methodType(), QMetaMethod::Slot);
    QCOMPARE(slot.access(), QMetaMethod::Public);
}

void TabExtensionPluginTest::shouldRefuseACameraWithoutTriggerFeaturesAndLeaveThePageEmpty()
{
    PluginInstance instance;
    OpenCamera camera("SIM-NO-TRIGGER");
    QVERIFY(camera.camera);
    QVERIFY(!camera.features->isEmpty());
    QWidget page;
    QCOMPARE(instance.plugin->CreateTabWidget(camera.features, &page), 4);
    QCOMPARE(page.layout(), static_cast<QLayout*>(nullptr));
    QVERIFY(page.findChildren<QObject*>().isEmpty());
}

void TabExtensionPluginTest::shouldFillThePageWithOneWidgetUnderOneLayout_data()
{
    QTest::addColumn<QByteArray>("model");
    for (const std::string& id : ZMT::PkoAPI::Sim::ModelIds()) {
        if (id != "SIM-NO-TRIGGER") {
            QTest::newRow(id.c_str()) << QByteArray(id.c_str());
        }
    }
}

void TabExtensionPluginTest::shouldFillThePageWithOneWidgetUnderOneLayout()
{
    QFETCH(QByteArray, model);
    PluginInstance instance;
    OpenCamera camera(model.constData());
    QVERIFY(camera.camera);
    QWidget page;
    QCOMPARE(instance.plugin->CreateTabWidget(camera.features, &page), 0);

    QVBoxLayout* layout = qobject_cast<QVBoxLayout*>(page.layout());
    QVERIFY(layout != nullptr);
    QCOMPARE(page.findChildren<QLayout*>(QString(), Qt::FindDirectChildrenOnly).size(), 1);
    const QList<QWidget*> children = page.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(children.size(), 1);
    QCOMPARE(children.first()->objectName(), QStringLiteral("IOTriggerWidget"));
    QCOMPARE(layout->count(), 1);
    QCOMPARE(layout->itemAt(0)->widget(), children.first());
    QCOMPARE(layout->stretch(0), 0);
    QCOMPARE(layout->itemAt(0)->alignment(), Qt::Alignment());
}

void TabExtensionPluginTest::shouldStayUsableAfterARefusal()
{
    PluginInstance instance;
    OpenCamera without("SIM-NO-TRIGGER");
    OpenCamera with("SIM-LINEOUT");
    QWidget refused;
    QWidget accepted;
    QCOMPARE(instance.plugin->CreateTabWidget(without.features, &refused), 4);
    QCOMPARE(instance.plugin->CreateTabWidget(with.features, &accepted), 0);
    QCOMPARE(accepted.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly).size(), 1);
    QCOMPARE(refused.layout(), static_cast<QLayout*>(nullptr));
}

void TabExtensionPluginTest::shouldDeliverOneStreamingEmissionToEveryWidget_data()
{
    QTest::addColumn<QByteArray>("model");
    QTest::newRow("SyncOut outputs") << QByteArray("SIM-SYNCOUT");
    QTest::newRow("LineOut outputs") << QByteArray("SIM-LINEOUT");
}

void TabExtensionPluginTest::shouldDeliverOneStreamingEmissionToEveryWidget()
{
    QFETCH(QByteArray, model);
    PluginInstance instance;
    OpenCamera camera(model.constData());
    QWidget firstPage;
    QWidget secondPage;
    QCOMPARE(instance.plugin->CreateTabWidget(camera.features, &firstPage), 0);
    QCOMPARE(instance.plugin->CreateTabWidget(camera.features, &secondPage), 0);
    QLabel* firstHint = firstPage.findChild<QLabel*>(QStringLiteral("l_notAcquireHint"));
    QLabel* secondHint = secondPage.findChild<QLabel*>(QStringLiteral("l_notAcquireHint"));
    QVERIFY(firstHint != nullptr);
    QVERIFY(secondHint != nullptr);
    QVERIFY(firstHint != secondHint);
    QVERIFY(firstHint->isHidden());
    QVERIFY(secondHint->isHidden());

    QVERIFY(instance.plugin->ConnectStreamingSignal(this, SIGNAL(hostStreaming(bool))));
    QSignalSpy relayed(instance.object.data(), SIGNAL(camStreaming(bool)));
    emit hostStreaming(true);
    QCOMPARE(relayed.count(), 1);
    QCOMPARE(relayed.at(0).at(0).toBool(), true);
    QVERIFY(!firstHint->isHidden());
    QVERIFY(!secondHint->isHidden());

    emit hostStreaming(false);
    QCOMPARE(relayed.count(), 2);
    QCOMPARE(relayed.at(1).at(0).toBool(), false);
    QVERIFY(firstHint->isHidden());
    QVERIFY(secondHint->isHidden());
}

void TabExtensionPluginTest::shouldRefuseAnUnknownStreamingSignalAndKeepWorking()
{
    PluginInstance instance;
    QVERIFY(!instance.plugin->ConnectStreamingSignal(this, SIGNAL(noSuchSignal(bool))));
    QVERIFY(!instance.plugin->ConnectStreamingSignal(nullptr, SIGNAL(hostStreaming(bool))));

    OpenCamera camera("SIM-SYNCOUT");
    QWidget page;
    QCOMPARE(instance.plugin->CreateTabWidget(camera.features, &page), 0);
    QVERIFY(instance.plugin->ConnectStreamingSignal(this, SIGNAL(hostStreaming(bool))));
    QLabel* hint = page.findChild<QLabel*>(QStringLiteral("l_notAcquireHint"));
    QVERIFY(hint != nullptr);
    emit hostStreaming(true);
    QVERIFY(!hint->isHidden());
}

void TabExtensionPluginTest::shouldDestroyTheWidgetWithItsPage()
{
    PluginInstance instance;
    OpenCamera camera("SIM-LINE-ROUTING");
    std::unique_ptr<QWidget> page(new QWidget);
    QCOMPARE(instance.plugin->CreateTabWidget(camera.features, page.get()), 0);
    QPointer<QWidget> widget = page->findChild<QWidget*>(QStringLiteral("IOTriggerWidget"));
    QVERIFY(!widget.isNull());
    page.reset();
    QVERIFY(widget.isNull());
    // The plug-in itself is unaffected: it still relays.
    QSignalSpy relayed(instance.object.data(), SIGNAL(camStreaming(bool)));
    QVERIFY(QMetaObject::invokeMethod(instance.object.data(), "OnCamIsStreaming", Q_ARG(bool, true)));
    QCOMPARE(relayed.count(), 1);
}

void TabExtensionPluginTest::shouldReturnTheExactVerificationRecord()
{
    QCOMPARE(QByteArray(qt_plugin_query_verification_data()), QByteArray(kRecord));
    QCOMPARE(qt_plugin_query_verification_data(), qt_plugin_query_verification_data());
}

void TabExtensionPluginTest::shouldKeepTheVerificationRecordInItsOwnSection()
{
    QString error;
    const QByteArray section = ElfSection(QStringLiteral(PKO_PLUGIN_FILE), ".qtplugin", error);
    QVERIFY2(error.isEmpty(), qPrintable(error));
    // The record with its terminating NUL, nothing else.
    QCOMPARE(section, QByteArray(kRecord, sizeof(kRecord)));
}

void TabExtensionPluginTest::shouldCarryThePresetImagesAs256PixelPictures_data()
{
    QTest::addColumn<QString>("path");
    for (const char* path : kImagePaths) {
        QTest::newRow(path) << QString::fromLatin1(path);
    }
}

void TabExtensionPluginTest::shouldCarryThePresetImagesAs256PixelPictures()
{
    QFETCH(QString, path);
    QVERIFY(QFile::exists(path));
    const QImage image(path);
    QVERIFY(!image.isNull());
    QCOMPARE(image.size(), QSize(256, 256));
    // A drawing, not an empty canvas: opaque pixels of several colours.
    QSet<QRgb> opaqueColours;
    for (int y = 0; y < image.height(); y += 2) {
        for (int x = 0; x < image.width(); x += 2) {
            const QRgb pixel = image.pixel(x, y);
            if (qAlpha(pixel) == 255) {
                opaqueColours.insert(pixel);
            }
        }
    }
    QVERIFY(opaqueColours.size() >= 3);
}

void TabExtensionPluginTest::shouldStoreThePresetImagesZlibCompressedInFormatVersionOne_data()
{
    shouldCarryThePresetImagesAs256PixelPictures_data();
}

void TabExtensionPluginTest::shouldStoreThePresetImagesZlibCompressedInFormatVersionOne()
{
    QFETCH(QString, path);
    const QResource resource(path);
    QVERIFY(resource.isValid());
    QCOMPARE(resource.compressionAlgorithm(), QResource::ZlibCompression);
    // Format version 1 has no modification times; later versions store them.
    QVERIFY(!resource.lastModified().isValid());
}

void TabExtensionPluginTest::shouldUnregisterAndRegisterTheImagesThroughTheResourcePair()
{
    const QString path = QString::fromLatin1(kImagePaths[0]);
    QVERIFY(QFile::exists(path));
    QCOMPARE(qCleanupResources_tabextensiontriggerio(), 1);
    QVERIFY(!QFile::exists(path));
    QCOMPARE(qInitResources_tabextensiontriggerio(), 1);
    QVERIFY(QFile::exists(path));
}

QTEST_MAIN(TabExtensionPluginTest)
#include "tst_tabextensionplugin.moc"
