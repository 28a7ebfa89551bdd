#ifndef SETTINGSLOADER_H
#define SETTINGSLOADER_H

#include "FeatureLayout.h"
#include "LoadReport.h"
#include "SettingsDocument.h"
#include "SettingsFile.h"

#include <PkoAPI/Camera.h>

#include <QString>

#include <atomic>
#include <functional>

class SelectorCursor;
struct SettingsCheck;

// Writes a settings file to a camera with verification.
//
// A load checks the whole file first (SettingsChecker); with any error
// nothing is written unless a partial load is asked for, which writes the
// entries that passed. Then it keeps the current value of everything the
// file touches (in the report, and in a file when asked) before the first
// write. Then it writes each entry in the file's order and reads it back
// (applied / adjusted / refused / not available now). A write the camera
// refuses as not writable or not valid now is tried again after the other
// entries, since it may depend on them (a value writable only in some
// mode), unless the load is to stop at the first failure. Selectors are
// moved through SelectorCursor and left where the file puts them (or where
// they were). On request a failure stops the load, and the kept values of
// everything written are written back and verified.
//
// Load blocks the calling thread; it may run on any thread (the SDK is
// thread-safe), but nobody else should move the camera's selectors
// meanwhile. One load at a time per loader.
class SettingsLoader {
public:
    struct Options {
        bool stopOnError = false;      // stop at the first refused or unavailable entry
        bool rollbackOnError = false;  // ... and write the kept values back (implies stopOnError)
        bool partial = false;          // write the entries that passed the check despite errors
        QString backupPath;            // where the kept values go before the first write; empty: memory only
        SettingsFile::Format backupFormat = SettingsFile::Format::Json;
    };
    // Called after each entry written, on the loading thread: entries done
    // and to do in the first pass over the file.
    typedef std::function<void(int done, int total)> Progress;

    // camera and layout must outlive the loader; layout describes camera.
    SettingsLoader(const ZMT::PkoAPI::CameraPtr& camera, const FeatureLayout& layout);

    void SetProgress(const Progress& progress) { m_Progress = progress; }
    // While *cancel is true the load stops before the next write; the
    // flag must outlive the loads.
    void SetCancelFlag(const std::atomic<bool>* cancel) { m_Cancel = cancel; }

    // Never throws. The report's status says how far it got (see
    // LoadReport::Status); on every status but FileRejected and
    // BackupFailed the results say exactly what was written, and backup
    // holds the values kept before the first write.
    LoadReport Load(const SettingsDocument& document, const Options& options);

private:
    int Keep(const SettingsDocument& document, const SettingsCheck& check, SelectorCursor& cursor, LoadReport& report);
    int WriteOne(const SettingsEntry& entry, const QVariant& value, SelectorCursor& cursor, EntryResult& result);
    void Rollback(SelectorCursor& cursor, LoadReport& report);
    bool Cancelled() const { return m_Cancel != nullptr && m_Cancel->load(); }
    bool Lost(int code) const;
    QString CameraText(bool id) const;

    ZMT::PkoAPI::CameraPtr m_Camera;
    const FeatureLayout& m_Layout;
    Progress m_Progress;
    const std::atomic<bool>* m_Cancel = nullptr;
};

#endif  // SETTINGSLOADER_H
