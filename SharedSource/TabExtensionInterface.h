#ifndef TABEXTENSIONINTERFACE_H
#define TABEXTENSIONINTERFACE_H

// The interface between the viewer and its tab extension plug-ins. The viewer
// and every plug-in compile this same header, so the identifier below is the
// one both sides agree on.

#include <PkoAPI/Feature.h>

#include <QObject>
#include <QSharedPointer>
#include <QVector>
#include <QWidget>

class TabExtensionInterface : public QObject {
public:
    virtual ~TabExtensionInterface() {}

    // Fills tabPage (an empty page the host has added as a tab) with the
    // plug-in's widget for the camera whose features are given. Returns 0 on
    // success, otherwise the error code of the refusal (4: the camera does not
    // support this tab); the page then stays empty.
    virtual int CreateTabWidget(QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> features,
                                QWidget* tabPage) = 0;
    // Kept free for a later version of the interface; does nothing.
    virtual void ReservedOperation() = 0;
    // Connects the host's signal (SIGNAL() text of a signal with one bool
    // argument: is the camera streaming) on sender to the plug-in. Returns
    // what QObject::connect returned; false leaves the plug-in working.
    virtual bool ConnectStreamingSignal(QObject* sender, const char* signal) = 0;
};

#define TabExtensionInterface_iid "com.pelko.PelkoViewer.Plugin.TabExtensionInterface/1.0"
Q_DECLARE_INTERFACE(TabExtensionInterface, TabExtensionInterface_iid)

#endif
