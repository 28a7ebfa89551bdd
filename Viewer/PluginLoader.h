#ifndef PLUGINLOADER_H
#define PLUGINLOADER_H

#include "TabExtensionInterface.h"

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QString>

#include <memory>
#include <vector>

class QLibrary;
class QTranslator;
class ViewerLog;

// Loads tab extension plug-ins the way a Qt 4 host does: by hand, through
// QLibrary and the two exported entry points, checking the verification
// record before the plug-in object is taken. Owns the plug-in objects it
// accepted (they are deleted with the loader) and keeps their libraries
// loaded for the life of the process. Refused libraries are unloaded again.
class PluginLoader : public QObject {
    Q_OBJECT

public:
    // What the viewer expects of a plug-in's verification record.
    static const char* const kExpectedPattern;
    static const char* const kExpectedVersion;
    static const char* const kExpectedBuildKey;

    struct Plugin {
        QString filePath;   // absolute path of the library
        QString baseName;   // "tabextensiontriggerio" for libtabextensiontriggerio.so
        QByteArray digest;  // of the file's contents: a copy under another name is the same plug-in
        QPointer<QObject> instance;
        TabExtensionInterface* tabExtension = nullptr;
        std::unique_ptr<QLibrary> library;
        std::unique_ptr<QTranslator> translator;  // null when no translation was found
    };

    // log receives one problem line per refused library.
    explicit PluginLoader(ViewerLog& log, QObject* parent = nullptr);
    // Deletes the plug-in objects and removes their translations; the
    // libraries stay loaded.
    ~PluginLoader() override;

    // Tries every library file (by QLibrary::isLibrary) in folder, in name
    // order. Returns how many were accepted; an unreadable folder gives 0 and
    // a problem line. Refused files are reported and skipped.
    int LoadDirectory(const QString& folder);
    // Loads one library. Returns true when it was accepted as a tab extension
    // plug-in. On refusal returns false, writes "<file>: <reason>" as a
    // problem line, stores it for LastRefusal() and unloads the library.
    // A file that is no complete shared library, or a copy of one already
    // accepted, is refused before it is loaded at all.
    bool LoadFile(const QString& filePath);

    // Checks the text of a verification record. Returns "" when the viewer
    // accepts it, otherwise the reason in words.
    static QString CheckVerificationRecord(const QByteArray& record);

    const std::vector<std::unique_ptr<Plugin>>& Plugins() const { return m_Plugins; }
    // The message of the last refusal ("" when none happened yet).
    QString LastRefusal() const { return m_LastRefusal; }
    // Every refusal message so far, oldest first.
    QStringList Refusals() const { return m_Refusals; }

public slots:
    // Emits streamingChanged(isStreaming), which every accepted plug-in was
    // connected to. Cannot fail.
    void SetStreaming(bool isStreaming);

signals:
    // The viewer's streaming signal as the plug-ins receive it.
    void streamingChanged(bool isStreaming);

private:
    // Reports the refusal; unloads libraryToUnload when given. Returns false.
    bool Refuse(QLibrary* libraryToUnload, const QString& filePath, const QString& reason);
    std::unique_ptr<QTranslator> LoadTranslation(const QString& folder, const QString& baseName);

    ViewerLog& m_Log;
    std::vector<std::unique_ptr<Plugin>> m_Plugins;
    QString m_LastRefusal;
    QStringList m_Refusals;
};

#endif
