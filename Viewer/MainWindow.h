#ifndef MAINWINDOW_H
#define MAINWINDOW_H

#include "FeatureTableModel.h"
#include "SettingsComparer.h"
#include "SettingsFile.h"
#include "SettingsSaver.h"
#include "ViewerLog.h"

#include <PkoAPI/Camera.h>

#include <QMainWindow>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QVector>

class FeaturesTab;
class LiveImageView;
class PluginLoader;
class QAction;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QTabWidget;
class QTimer;
class SettingsLoadDialog;

// The viewer's window: the open camera's name, state and frame counter, an
// Acquisition Start/Stop button, one tab per tab extension plug-in (filled by
// the plug-in's CreateTabWidget), the "Features" tab, the live image beside
// the tabs and a log panel. A camera that stops answering is reported once
// and left alone until another camera (or the same one again) is opened.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    // plugins and log must outlive the window. The window's streaming signal
    // is forwarded to every plug-in the loader accepted.
    MainWindow(PluginLoader& plugins, ViewerLog& log, QWidget* parent = nullptr);
    // Closes the camera (stopping its acquisition first).
    ~MainWindow() override;

    // Closes the current camera and opens camera: its features, one page per
    // plug-in (a plug-in that refuses the camera loses its page, and the
    // status bar says so) and the Features tab. Returns false, logs the
    // SDK's error and leaves the window without camera when opening fails.
    bool OpenCamera(const ZMT::PkoAPI::CameraPtr& camera);
    // OpenCamera for the SDK's camera of that ID; false (logged) for an
    // unknown ID.
    bool OpenCameraById(const QString& id);
    // Stops acquisition, removes the plug-in pages and closes the camera.
    // Does nothing without camera.
    void CloseCamera();

    ZMT::PkoAPI::CameraPtr Camera() const { return m_Camera; }
    bool IsStreaming() const { return m_Streaming; }
    // The open camera stopped answering (see Camera::IsConnectionLost).
    bool IsCameraLost() const { return m_Lost; }
    // The titles in the tab bar, left to right.
    QStringList TabTitles() const;
    QTabWidget* Tabs() const { return m_Tabs; }
    FeaturesTab* Features() const { return m_FeaturesTab; }
    LiveImageView* LiveView() const { return m_LiveView; }

    // Saves the open camera's settings to path. Returns false, and logs
    // why, without camera, when the camera is lost while saving (nothing is
    // written then) or when the file cannot be written.
    bool SaveSettings(const QString& path, SettingsFile::Format format, SettingsSaver::Scope scope);
    // Reads and checks the file, then loads it into the camera in a
    // SettingsLoadDialog (shown, window-modal) that reports how it goes.
    // The plug-in tabs and the Features tab are taken down while the load
    // runs and made anew from the camera when it has ended. A file with
    // errors is refused with a message, unless partial (write what passed
    // the check). Returns the dialog (it deletes itself when closed), or
    // null when nothing is loaded (no camera, unreadable file, refused).
    SettingsLoadDialog* LoadSettings(const QString& path, bool partial = false);
    // Compares the camera with the file. Shows the differences in a message
    // box when show is true; returns them. differences empty and false
    // returned when the file cannot be read or there is no camera.
    bool CompareWithFile(const QString& path, QVector<SettingsDifference>& differences, bool show = true);
    // Makes the plug-in tabs and the Features tab anew from the camera.
    void RefreshTabs();

public slots:
    // Starts acquisition when idle, stops it when acquiring, then emits
    // streamingChanged with the camera's new state. A refusal of the camera
    // is logged and leaves the state as it is.
    void ToggleAcquisition();
    // Lets the user pick another camera and opens it.
    void ChooseCamera();
    // Camera > Save Settings..., Load Settings..., Compare With File...
    void ChooseSettingsToSave();
    void ChooseSettingsToLoad();
    void ChooseFileToCompare();

signals:
    // The camera started (true) or stopped (false) acquiring.
    void streamingChanged(bool isStreaming);

private slots:
    void OnPoll();
    void OnLogMessage(ViewerLog::Level level, const QString& message);
    void OnSettingsLoaded();

private:
    void CreatePluginPages();
    void RemovePluginPages();
    void SetStreaming(bool isStreaming);
    void OnConnectionLost();
    void UpdateHeader();
    QString CameraId() const;

    PluginLoader& m_Plugins;
    ViewerLog& m_Log;
    QLabel* m_CameraLabel;
    QLabel* m_StateLabel;
    QLineEdit* m_FramesField;
    QPushButton* m_OpenButton;
    QPushButton* m_AcquisitionButton;
    QTabWidget* m_Tabs;
    FeaturesTab* m_FeaturesTab;
    LiveImageView* m_LiveView;
    QPlainTextEdit* m_LogView;
    QTimer* m_PollTimer;
    QAction* m_SaveSettingsAction;
    QAction* m_LoadSettingsAction;
    QAction* m_CompareAction;
    QPointer<SettingsLoadDialog> m_LoadDialog;

    ZMT::PkoAPI::CameraPtr m_Camera;
    FeatureTableModel::FeatureList m_Features;
    QVector<QPointer<QWidget>> m_PluginPages;
    bool m_Streaming;
    bool m_Lost;
};

#endif
