// The viewer's plug-in loader on the real plug-in library, on a copy of it
// whose verification record carries another build key, and on files that are
// no plug-ins.

#include "PluginLoader.h"
#include "ViewerLog.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/CameraBuilder.h>

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <vector>

using ZMT::PkoAPI::FeaturePtr;

namespace {

const QByteArray kBuildKey("ZMT_Qt4.8.4 i386 linux g++-4 full-config");
const QByteArray kOtherBuildKey("ZMT_Qt4.8.4 i386 linux g++-4 fake-config");

const char kGoodRecord[] =
    "pattern=QT_PLUGIN_VERIFICATION_DATA\nversion=4.8.4\ndebug=true\nbuildkey=ZMT_Qt4.8.4 i386 linux g++-4 full-config";

bool CopyFile(const QString& from, const QString& to)
{
    QFile::remove(to);
    return QFile::copy(from, to);
}

// Copies the library and replaces its build key by another of the same length.
int CopyWithOtherBuildKey(const QString& from, const QString& to)
{
    QFile source(from);
    if (!source.open(QIODevice::ReadOnly)) {
        return 0;
    }
    QByteArray bytes = source.readAll();
    int replaced = 0;
    for (int at = bytes.indexOf(kBuildKey); at >= 0; at = bytes.indexOf(kBuildKey, at + 1)) {
        bytes.replace(at, kOtherBuildKey.size(), kOtherBuildKey);
        ++replaced;
    }
    QFile target(to);
    if (!target.open(QIODevice::WriteOnly) || target.write(bytes) != bytes.size()) {
        return 0;
    }
    return replaced;
}

// The first bytes of the library, as a copy that broke off.
bool CopyTruncated(const QString& from, const QString& to, qint64 bytes)
{
    QFile source(from);
    QFile target(to);
    return source.open(QIODevice::ReadOnly) && target.open(QIODevice::WriteOnly) &&
           target.write(source.read(bytes)) == bytes;
}

bool WriteTextFile(const QString& path, const QByteArray& text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

}  // namespace

class PluginLoaderTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void shouldAcceptTheBuiltPlugin();
    void shouldRefuseACopyWithAnotherBuildKey();
    void shouldRefuseAFileThatIsNoLibrary();
    void shouldRefuseALibraryWithoutEntryPoints();
    void shouldSkipRefusedFilesAndGoOnLoadingTheFolder();
    void shouldReportAMissingPluginFolder();
    void shouldCheckTheVerificationRecord_data();
    void shouldCheckTheVerificationRecord();
    void shouldDeliverTheStreamingSignalToEveryWidget();
    void shouldRefuseATruncatedLibraryWithoutLoadingIt_data();
    void shouldRefuseATruncatedLibraryWithoutLoadingIt();
    void shouldRefuseACopyOfALoadedPluginAsAlreadyLoaded();

private:
    // Inside bin/, so that a copied plug-in finds the SDK library through
    // its $ORIGIN/.. run path.
    std::unique_ptr<QTemporaryDir> m_Folder;
};

void PluginLoaderTest::init()
{
    m_Folder.reset(new QTemporaryDir(QDir::current().filePath(QStringLiteral("loadertest-XXXXXX"))));
    QVERIFY(m_Folder->isValid());
}

void PluginLoaderTest::cleanup()
{
    m_Folder.reset();
}

void PluginLoaderTest::shouldAcceptTheBuiltPlugin()
{
    ViewerLog log;
    PluginLoader loader(log);
    QVERIFY(loader.LoadFile(QStringLiteral(PKO_PLUGIN_FILE)));
    QCOMPARE(loader.Plugins().size(), std::size_t(1));
    const PluginLoader::Plugin& plugin = *loader.Plugins().front();
    QCOMPARE(plugin.filePath, QFileInfo(QStringLiteral(PKO_PLUGIN_FILE)).absoluteFilePath());
    QCOMPARE(plugin.baseName, QStringLiteral("tabextensiontriggerio"));
    QVERIFY(!plugin.instance.isNull());
    QVERIFY(plugin.tabExtension != nullptr);
    QCOMPARE(QByteArray(plugin.instance->metaObject()->className()), QByteArray("TabExtensionPlugin"));
    QVERIFY(loader.Refusals().isEmpty());
    QVERIFY(log.Problems().isEmpty());
}

void PluginLoaderTest::shouldRefuseACopyWithAnotherBuildKey()
{
    const QString copy = m_Folder->filePath(QStringLiteral("libotherkey.so"));
    QCOMPARE(CopyWithOtherBuildKey(QStringLiteral(PKO_PLUGIN_FILE), copy), 1);

    ViewerLog log;
    PluginLoader loader(log);
    QVERIFY(!loader.LoadFile(copy));
    QVERIFY(loader.Plugins().empty());
    const QString expected = copy + QStringLiteral(
                                        ": skipped, build key \"ZMT_Qt4.8.4 i386 linux g++-4 fake-config\" does "
                                        "not match the viewer's \"ZMT_Qt4.8.4 i386 linux g++-4 full-config\"");
    QCOMPARE(loader.LastRefusal(), expected);
    QCOMPARE(log.Problems(), QStringList{expected});
}

void PluginLoaderTest::shouldRefuseAFileThatIsNoLibrary()
{
    const QString garbage = m_Folder->filePath(QStringLiteral("libgarbage.so"));
    QVERIFY(WriteTextFile(garbage, "this is no shared library\n"));

    ViewerLog log;
    PluginLoader loader(log);
    QVERIFY(!loader.LoadFile(garbage));
    QVERIFY(loader.Plugins().empty());
    QVERIFY2(loader.LastRefusal().startsWith(garbage + QStringLiteral(": skipped, cannot be loaded (")),
             qPrintable(loader.LastRefusal()));
    QCOMPARE(log.Problems().size(), 1);
}

void PluginLoaderTest::shouldRefuseALibraryWithoutEntryPoints()
{
    ViewerLog log;
    PluginLoader loader(log);
    const QString path = QFileInfo(QStringLiteral(PKO_NOT_A_PLUGIN_FILE)).absoluteFilePath();
    QVERIFY(!loader.LoadFile(path));
    QCOMPARE(loader.LastRefusal(),
             path + QStringLiteral(": skipped, not a plug-in: no entry point qt_plugin_query_verification_data"));
}

void PluginLoaderTest::shouldSkipRefusedFilesAndGoOnLoadingTheFolder()
{
    const QDir folder(m_Folder->path());
    QVERIFY(WriteTextFile(folder.filePath(QStringLiteral("liba_garbage.so")), "garbage"));
    QVERIFY(CopyWithOtherBuildKey(QStringLiteral(PKO_PLUGIN_FILE),
                                  folder.filePath(QStringLiteral("libb_otherkey.so"))) == 1);
    QVERIFY(CopyFile(QStringLiteral(PKO_NOT_A_PLUGIN_FILE), folder.filePath(QStringLiteral("libc_notaplugin.so"))));
    QVERIFY(CopyFile(QStringLiteral(PKO_PLUGIN_FILE), folder.filePath(QStringLiteral("libz_good.so"))));
    // Not library names: never tried.
    QVERIFY(WriteTextFile(folder.filePath(QStringLiteral("readme.txt")), "text"));
    QVERIFY(WriteTextFile(folder.filePath(QStringLiteral("good_de.qm")), "not a translation"));

    ViewerLog log;
    PluginLoader loader(log);
    QCOMPARE(loader.LoadDirectory(folder.path()), 1);
    QCOMPARE(loader.Plugins().size(), std::size_t(1));
    QCOMPARE(loader.Plugins().front()->filePath, folder.filePath(QStringLiteral("libz_good.so")));
    QCOMPARE(loader.Plugins().front()->baseName, QStringLiteral("z_good"));
    const QStringList refusals = loader.Refusals();
    QCOMPARE(refusals.size(), 3);
    QVERIFY(refusals.at(0).startsWith(folder.filePath(QStringLiteral("liba_garbage.so: skipped, cannot be loaded"))));
    QVERIFY(refusals.at(1).startsWith(folder.filePath(QStringLiteral("libb_otherkey.so: skipped, build key"))));
    QCOMPARE(refusals.at(2), folder.filePath(QStringLiteral("libc_notaplugin.so: skipped, not a plug-in: no entry "
                                                            "point qt_plugin_query_verification_data")));
    QCOMPARE(log.Problems(), refusals);
}

void PluginLoaderTest::shouldReportAMissingPluginFolder()
{
    ViewerLog log;
    PluginLoader loader(log);
    const QString missing = m_Folder->filePath(QStringLiteral("nothing-here"));
    QCOMPARE(loader.LoadDirectory(missing), 0);
    QCOMPARE(log.Problems(),
             QStringList{QStringLiteral("Plug-in folder %1 does not exist; no tab extensions loaded").arg(missing)});
}

void PluginLoaderTest::shouldCheckTheVerificationRecord_data()
{
    QTest::addColumn<QByteArray>("record");
    QTest::addColumn<QString>("problem");
    const QByteArray good(kGoodRecord);
    QTest::newRow("the plug-in's record") << good << QString();
    QTest::newRow("release build") << QByteArray(good).replace("debug=true", "debug=false") << QString();
    QTest::newRow("older Qt 4") << QByteArray(good).replace("version=4.8.4", "version=4.7.1") << QString();
    QTest::newRow("newer Qt 4") << QByteArray(good).replace("version=4.8.4", "version=4.8.5")
                                << QStringLiteral("built for Qt 4.8.5, the viewer offers Qt 4.8.4");
    QTest::newRow("Qt 3") << QByteArray(good).replace("version=4.8.4", "version=3.3.8")
                          << QStringLiteral("built for Qt 3.3.8, the viewer offers Qt 4.8.4");
    QTest::newRow("no version") << QByteArray(good).replace("version=4.8.4", "version=four")
                                << QStringLiteral("unreadable Qt version \"four\" in the verification record");
    QTest::newRow("odd debug flag") << QByteArray(good).replace("debug=true", "debug=yes")
                                    << QStringLiteral("unreadable debug flag \"yes\" in the verification record");
    QTest::newRow("other pattern") << QByteArray(good).replace("pattern=QT_PLUGIN_VERIFICATION_DATA", "pattern=X")
                                   << QStringLiteral("no plug-in verification record (pattern \"X\")");
    QTest::newRow("empty") << QByteArray() << QStringLiteral("no plug-in verification record (pattern \"\")");
    QTest::newRow("other build key") << QByteArray(good).replace("full-config", "fake-config")
                                     << QStringLiteral(
                                            "build key \"ZMT_Qt4.8.4 i386 linux g++-4 fake-config\" does not match "
                                            "the viewer's \"ZMT_Qt4.8.4 i386 linux g++-4 full-config\"");
}

void PluginLoaderTest::shouldCheckTheVerificationRecord()
{
    QFETCH(QByteArray, record);
    QFETCH(QString, problem);
    QCOMPARE(PluginLoader::CheckVerificationRecord(record), problem);
}

void PluginLoaderTest::shouldDeliverTheStreamingSignalToEveryWidget()
{
    ViewerLog log;
    PluginLoader loader(log);
    QVERIFY(loader.LoadFile(QStringLiteral(PKO_PLUGIN_FILE)));
    TabExtensionInterface* plugin = loader.Plugins().front()->tabExtension;

    ZMT::PkoAPI::Sim::SimCameraPtr camera = ZMT::PkoAPI::Sim::CreateModel("SIM-SYNCOUT");
    QVERIFY(camera);
    QCOMPARE(camera->Open(), int(ZMT::PkoAPI::PkoErrorSuccess));
    std::vector<FeaturePtr> list;
    QCOMPARE(camera->GetFeatures(list), int(ZMT::PkoAPI::PkoErrorSuccess));
    QSharedPointer<QVector<FeaturePtr>> features(new QVector<FeaturePtr>(list.begin(), list.end()));

    QWidget firstPage;
    QWidget secondPage;
    QCOMPARE(plugin->CreateTabWidget(features, &firstPage), 0);
    QCOMPARE(plugin->CreateTabWidget(features, &secondPage), 0);
    QLabel* firstHint = firstPage.findChild<QLabel*>(QStringLiteral("l_notAcquireHint"));
    QLabel* secondHint = secondPage.findChild<QLabel*>(QStringLiteral("l_notAcquireHint"));
    QVERIFY(firstHint != nullptr && secondHint != nullptr);
    QVERIFY(firstHint->isHidden() && secondHint->isHidden());

    QSignalSpy streaming(&loader, SIGNAL(streamingChanged(bool)));
    loader.SetStreaming(true);
    QCOMPARE(streaming.count(), 1);
    QVERIFY(!firstHint->isHidden());
    QVERIFY(!secondHint->isHidden());
    loader.SetStreaming(false);
    QVERIFY(firstHint->isHidden());
    QVERIFY(secondHint->isHidden());
    camera->Close();
}

void PluginLoaderTest::shouldRefuseATruncatedLibraryWithoutLoadingIt_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<QString>("reason");
    QTest::newRow("128 KiB") << qint64(128 * 1024) << "loadable segment";
    QTest::newRow("the ELF header only") << qint64(64) << "program headers";
    QTest::newRow("half the header") << qint64(32) << "not an ELF file";
}

void PluginLoaderTest::shouldRefuseATruncatedLibraryWithoutLoadingIt()
{
    QFETCH(qint64, bytes);
    QFETCH(QString, reason);
    const QString path = QDir(m_Folder->path()).filePath(QStringLiteral("libtruncated.so"));
    QVERIFY(CopyTruncated(QStringLiteral(PKO_PLUGIN_FILE), path, bytes));
    ViewerLog log;
    PluginLoader loader(log);
    QVERIFY(!loader.LoadFile(path));
    QVERIFY2(loader.LastRefusal().startsWith(path + QStringLiteral(": skipped, cannot be loaded (")),
             qPrintable(loader.LastRefusal()));
    QVERIFY2(loader.LastRefusal().contains(reason), qPrintable(loader.LastRefusal()));
    QVERIFY(loader.Plugins().empty());
}

void PluginLoaderTest::shouldRefuseACopyOfALoadedPluginAsAlreadyLoaded()
{
    const QDir folder(m_Folder->path());
    QVERIFY(CopyFile(QStringLiteral(PKO_PLUGIN_FILE), folder.filePath(QStringLiteral("libtabextensiontriggerio.so"))));
    QVERIFY(CopyFile(QStringLiteral(PKO_PLUGIN_FILE), folder.filePath(QStringLiteral("libtriggerio_copy.so"))));
    ViewerLog log;
    PluginLoader loader(log);
    QCOMPARE(loader.LoadDirectory(folder.path()), 1);
    QCOMPARE(loader.Plugins().size(), std::size_t(1));
    QCOMPARE(loader.LastRefusal(),
             folder.filePath(QStringLiteral("libtriggerio_copy.so: skipped, already loaded as ")) +
                 folder.filePath(QStringLiteral("libtabextensiontriggerio.so (the same library)")));
}

QTEST_MAIN(PluginLoaderTest)
#include "tst_viewer_pluginloader.moc"
