#include "SettingsLoadJob.h"

SettingsLoadJob::SettingsLoadJob(const ZMT::PkoAPI::CameraPtr& camera, const SettingsDocument& document,
                                 const SettingsLoader::Options& options, QObject* parent)
    : QThread(parent), m_Camera(camera), m_Document(document), m_Options(options), m_Cancel(false)
{
    qRegisterMetaType<LoadReport>("LoadReport");
}

SettingsLoadJob::~SettingsLoadJob()
{
    Cancel();
    wait();
}

void SettingsLoadJob::run()
{
    FeatureLayout layout;
    LoadReport report;
    const int code = layout.Build(m_Camera);
    if (code != ZMT::PkoAPI::PkoErrorSuccess) {
        report.status = LoadReport::Status::CameraLost;
        report.statusMessage = tr("The camera's features cannot be read (%1); nothing was written.")
                                   .arg(QString::fromLatin1(ZMT::PkoAPI::PkoErrorName(code)));
    } else {
        SettingsLoader loader(m_Camera, layout);
        loader.SetCancelFlag(&m_Cancel);
        loader.SetProgress([this](int done, int total) { emit progressed(done, total); });
        report = loader.Load(m_Document, m_Options);
    }
    emit loaded(report);
}
