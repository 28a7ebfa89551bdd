#ifndef SETTINGSSAVER_H
#define SETTINGSSAVER_H

#include "FeatureLayout.h"
#include "SettingsDocument.h"

#include <PkoAPI/Camera.h>

#include <QString>
#include <QStringList>

// Reads a camera's settings into a SettingsDocument.
class SettingsSaver {
public:
    enum class Scope {
        All,        // every feature that is readable and writable now
        TriggerIo,  // the features the Trigger IO tab watches, with their selectors
    };

    // "all" / "trigger-io"
    static QString ScopeName(Scope scope);
    static bool ScopeFromName(const QString& name, Scope& scope);
    // The features the Trigger IO tab watches (its list, names as it has them).
    static const QStringList& TriggerIoFeatures();

    // Reads every integer, float, boolean, enumeration and string feature of
    // scope that is writable and readable now, in FeatureLayout's write
    // order: a selector's own value, then its selected features under each
    // entry that can be chosen now. Selectors are moved for that and put
    // back (the only writes made). A feature that cannot be read is left out
    // with a note in notes. Returns PkoErrorSuccess, or the code with which
    // the camera stopped answering; document then holds what was read
    // before. document's header is filled from the camera.
    static int Save(const ZMT::PkoAPI::CameraPtr& camera, const FeatureLayout& layout, Scope scope,
                    SettingsDocument& document, QStringList& notes);
};

#endif  // SETTINGSSAVER_H
