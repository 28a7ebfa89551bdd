#ifndef SETTINGSLOADJOB_H
#define SETTINGSLOADJOB_H

#include "FeatureLayout.h"
#include "LoadReport.h"
#include "SettingsDocument.h"
#include "SettingsLoader.h"

#include <PkoAPI/Camera.h>

#include <QThread>

#include <atomic>

// Loads a settings file into a camera on a thread of its own, so that the
// GUI thread only shows the progress: progressed() after each entry and
// loaded() with the report at the end, both queued to the job's owner.
class SettingsLoadJob : public QThread {
    Q_OBJECT

public:
    SettingsLoadJob(const ZMT::PkoAPI::CameraPtr& camera, const SettingsDocument& document,
                    const SettingsLoader::Options& options, QObject* parent = nullptr);
    // Cancels and waits for the thread: a load in progress stops before its
    // next write.
    ~SettingsLoadJob() override;

    // Stops the load before its next write (thread-safe); loaded() still
    // comes, with what was written.
    void Cancel() { m_Cancel = true; }

signals:
    void progressed(int done, int total);
    void loaded(const LoadReport& report);

protected:
    void run() override;

private:
    ZMT::PkoAPI::CameraPtr m_Camera;
    SettingsDocument m_Document;
    SettingsLoader::Options m_Options;
    std::atomic<bool> m_Cancel;
};

#endif  // SETTINGSLOADJOB_H
