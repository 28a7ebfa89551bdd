#ifndef SETTINGSENTRY_H
#define SETTINGSENTRY_H

#include <PkoAPI/PkoCommonTypes.h>

#include <QString>
#include <QVariant>

// One value of a settings file: a feature's value, under one entry of the
// feature's selector when it has one.
//
// value holds qlonglong (integer), double (float), bool (boolean) or QString
// (enumeration, string). An entry read from GenICam persistence text holds
// the text as it stood in the file (fromText, type PkoFeatureDataUnknown)
// until SettingsChecker converts it by the camera's feature type.
struct SettingsEntry {
    QString feature;
    QString selector;       // empty: the feature is written without selecting anything
    QString selectorEntry;  // the selector's entry the value belongs to
    ZMT::PkoAPI::PkoFeatureDataType type = ZMT::PkoAPI::PkoFeatureDataUnknown;
    QVariant value;
    bool fromText = false;  // value is the file's text, to be read by the camera's type
    int line = 0;           // line of the file the entry came from; 0 when not read from a file

    bool IsSelected() const { return !selector.isEmpty(); }
    // "Width", or "TriggerMode@TriggerSelector=FrameStart" for a selected
    // feature: the form the command-line tool accepts.
    QString Key() const
    {
        return selector.isEmpty() ? feature : feature + QLatin1Char('@') + selector + QLatin1Char('=') + selectorEntry;
    }
};

#endif  // SETTINGSENTRY_H
