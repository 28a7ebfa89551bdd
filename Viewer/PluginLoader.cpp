#include "PluginLoader.h"

#include "ElfCheck.h"
#include "ViewerLog.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLibrary>
#include <QLocale>
#include <QRegularExpression>
#include <QTranslator>

#include <algorithm>
#include <tuple>

const char* const PluginLoader::kExpectedPattern = "QT_PLUGIN_VERIFICATION_DATA";
const char* const PluginLoader::kExpectedVersion = "4.8.4";
const char* const PluginLoader::kExpectedBuildKey = "ZMT_Qt4.8.4 i386 linux g++-4 full-config";

namespace {

typedef const char* (*VerificationDataFunction)();
typedef QObject* (*InstanceFunction)();

// "4.8.4" -> (4, 8, 4); false for anything else.
bool ParseVersion(const QString& text, std::tuple<int, int, int>& version)
{
    static const QRegularExpression pattern(QStringLiteral("^(\\d+)\\.(\\d+)\\.(\\d+)$"));
    const QRegularExpressionMatch match = pattern.match(text);
    if (!match.hasMatch()) {
        return false;
    }
    version = std::make_tuple(match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt());
    return true;
}

// The SHA-256 of a file's contents, empty when it cannot be read.
QByteArray Digest(const QString& filePath)
{
    QFile file(filePath);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file)) {
        return QByteArray();
    }
    return hash.result();
}

}  // namespace

PluginLoader::PluginLoader(ViewerLog& log, QObject* parent) : QObject(parent), m_Log(log) {}

PluginLoader::~PluginLoader()
{
    for (const std::unique_ptr<Plugin>& plugin : m_Plugins) {
        if (plugin->translator) {
            QCoreApplication::removeTranslator(plugin->translator.get());
        }
        delete plugin->instance.data();
    }
    // The libraries are not unloaded: code of a plug-in may still be reached
    // at exit (static destructors, translators it installed).
}

QString PluginLoader::CheckVerificationRecord(const QByteArray& record)
{
    QString pattern;
    QString version;
    QString debug;
    QString buildKey;
    for (const QByteArray& line : record.split('\n')) {
        const int equals = line.indexOf('=');
        if (equals < 0) {
            continue;
        }
        const QByteArray key = line.left(equals);
        const QString value = QString::fromLatin1(line.mid(equals + 1));
        if (key == "pattern") {
            pattern = value;
        } else if (key == "version") {
            version = value;
        } else if (key == "debug") {
            debug = value;
        } else if (key == "buildkey") {
            buildKey = value;
        }
    }
    if (pattern != QLatin1String(kExpectedPattern)) {
        return QStringLiteral("no plug-in verification record (pattern \"%1\")").arg(pattern);
    }
    std::tuple<int, int, int> found;
    std::tuple<int, int, int> expected;
    ParseVersion(QLatin1String(kExpectedVersion), expected);
    if (!ParseVersion(version, found)) {
        return QStringLiteral("unreadable Qt version \"%1\" in the verification record").arg(version);
    }
    // Like Qt 4: same major version, not newer than the host.
    if (std::get<0>(found) != std::get<0>(expected) || found > expected) {
        return QStringLiteral("built for Qt %1, the viewer offers Qt %2").arg(version, QLatin1String(kExpectedVersion));
    }
    if (debug != QLatin1String("true") && debug != QLatin1String("false")) {
        return QStringLiteral("unreadable debug flag \"%1\" in the verification record").arg(debug);
    }
    if (buildKey != QLatin1String(kExpectedBuildKey)) {
        return QStringLiteral("build key \"%1\" does not match the viewer's \"%2\"")
            .arg(buildKey, QLatin1String(kExpectedBuildKey));
    }
    return QString();
}

int PluginLoader::LoadDirectory(const QString& folder)
{
    const QDir dir(folder);
    if (!dir.exists()) {
        m_Log.Problem(QStringLiteral("Plug-in folder %1 does not exist; no tab extensions loaded")
                          .arg(QDir::toNativeSeparators(dir.absolutePath())));
        return 0;
    }
    int accepted = 0;
    const QStringList entries = dir.entryList(QDir::Files, QDir::Name);
    for (const QString& entry : entries) {
        if (QLibrary::isLibrary(entry) && LoadFile(dir.absoluteFilePath(entry))) {
            ++accepted;
        }
    }
    return accepted;
}

bool PluginLoader::LoadFile(const QString& filePath)
{
    const QString absolutePath = QFileInfo(filePath).absoluteFilePath();
    // Checked before the dynamic loader maps anything: a broken library
    // would take the viewer down inside dlopen.
    const QString elfProblem = ElfCheck::Problem(absolutePath);
    if (!elfProblem.isEmpty()) {
        return Refuse(nullptr, absolutePath, QStringLiteral("cannot be loaded (%1)").arg(elfProblem));
    }
    const QByteArray digest = Digest(absolutePath);
    for (const std::unique_ptr<Plugin>& plugin : m_Plugins) {
        if (!digest.isEmpty() && plugin->digest == digest) {
            // A copy under another name would add the same tab twice.
            return Refuse(nullptr, absolutePath,
                          QStringLiteral("already loaded as %1 (the same library)").arg(plugin->filePath));
        }
    }
    std::unique_ptr<QLibrary> library(new QLibrary(absolutePath));
    if (!library->load()) {
        return Refuse(library.get(), absolutePath, QStringLiteral("cannot be loaded (%1)").arg(library->errorString()));
    }
    const VerificationDataFunction verificationData =
        reinterpret_cast<VerificationDataFunction>(library->resolve("qt_plugin_query_verification_data"));
    if (verificationData == nullptr) {
        return Refuse(library.get(), absolutePath,
                      QStringLiteral("not a plug-in: no entry point qt_plugin_query_verification_data"));
    }
    const char* record = verificationData();
    const QString recordProblem = CheckVerificationRecord(QByteArray(record != nullptr ? record : ""));
    if (!recordProblem.isEmpty()) {
        return Refuse(library.get(), absolutePath, recordProblem);
    }
    const InstanceFunction instanceFunction =
        reinterpret_cast<InstanceFunction>(library->resolve("qt_plugin_instance"));
    if (instanceFunction == nullptr) {
        return Refuse(library.get(), absolutePath, QStringLiteral("not a plug-in: no entry point qt_plugin_instance"));
    }
    QObject* instance = instanceFunction();
    if (instance == nullptr) {
        return Refuse(library.get(), absolutePath, QStringLiteral("qt_plugin_instance returned no object"));
    }
    for (const std::unique_ptr<Plugin>& plugin : m_Plugins) {
        if (plugin->instance == instance) {
            // The same library under another name: it must stay loaded.
            return Refuse(nullptr, absolutePath, QStringLiteral("already loaded as %1").arg(plugin->filePath));
        }
    }
    TabExtensionInterface* tabExtension = qobject_cast<TabExtensionInterface*>(instance);
    if (tabExtension == nullptr) {
        delete instance;
        return Refuse(library.get(), absolutePath,
                      QStringLiteral("its plug-in object is no %1").arg(QLatin1String(TabExtensionInterface_iid)));
    }
    if (!tabExtension->ConnectStreamingSignal(this, SIGNAL(streamingChanged(bool)))) {
        m_Log.Problem(QStringLiteral("%1: refused the streaming signal; its tab will not follow the acquisition state")
                          .arg(absolutePath));
    }

    std::unique_ptr<Plugin> plugin(new Plugin);
    plugin->filePath = absolutePath;
    plugin->baseName = QFileInfo(absolutePath).completeBaseName();
    if (plugin->baseName.startsWith(QLatin1String("lib"))) {
        plugin->baseName.remove(0, 3);
    }
    plugin->digest = digest;
    plugin->instance = instance;
    plugin->tabExtension = tabExtension;
    plugin->library = std::move(library);
    // Installed before any tab is made, so that texts the plug-in translates
    // early (its tab title) come out in the user's language, too.
    plugin->translator = LoadTranslation(QFileInfo(absolutePath).absolutePath(), plugin->baseName);
    if (plugin->translator) {
        QCoreApplication::installTranslator(plugin->translator.get());
    }
    m_Log.Info(QStringLiteral("Loaded plug-in %1").arg(absolutePath));
    m_Plugins.push_back(std::move(plugin));
    return true;
}

void PluginLoader::SetStreaming(bool isStreaming)
{
    emit streamingChanged(isStreaming);
}

bool PluginLoader::Refuse(QLibrary* libraryToUnload, const QString& filePath, const QString& reason)
{
    if (libraryToUnload != nullptr && libraryToUnload->isLoaded()) {
        libraryToUnload->unload();
    }
    m_LastRefusal = QStringLiteral("%1: skipped, %2").arg(filePath, reason);
    m_Refusals.append(m_LastRefusal);
    m_Log.Problem(m_LastRefusal);
    return false;
}

std::unique_ptr<QTranslator> PluginLoader::LoadTranslation(const QString& folder, const QString& baseName)
{
    // The same file names the plug-ins themselves look for: full locale name
    // first, then the language alone.
    const QString locale = QLocale::system().name();
    std::unique_ptr<QTranslator> translator(new QTranslator);
    const QString stem = QDir(folder).filePath(baseName + QLatin1Char('_'));
    if (translator->load(stem + locale) || translator->load(stem + locale.left(2))) {
        return translator;
    }
    return nullptr;
}
