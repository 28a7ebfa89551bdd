#include "MainWindow.h"

#include "CameraListDialog.h"
#include "FeaturesTab.h"
#include "LiveImageView.h"
#include "PluginLoader.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/SimTypes.h>

#include <QAction>
#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QStatusBar>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>

#include <exception>
#include <string>
#include <vector>

using ZMT::PkoAPI::PkoErrorName;
using ZMT::PkoAPI::PkoErrorSuccess;

namespace {

const char* const kWriterName = "viewer";
const int kPollIntervalMs = 250;

QString ErrorText(int code)
{
    return QStringLiteral("%1 (%2)").arg(QLatin1String(PkoErrorName(code))).arg(code);
}

}  // namespace

MainWindow::MainWindow(PluginLoader& plugins, ViewerLog& log, QWidget* parent)
    : QMainWindow(parent),
      m_Plugins(plugins),
      m_Log(log),
      m_CameraLabel(new QLabel(this)),
      m_StateLabel(new QLabel(this)),
      m_FramesField(new QLineEdit(this)),
      m_OpenButton(new QPushButton(QStringLiteral("Open Camera\u2026"), this)),
      m_AcquisitionButton(new QPushButton(QStringLiteral("Start Acquisition"), this)),
      m_Tabs(new QTabWidget(this)),
      m_FeaturesTab(new FeaturesTab(log, this)),
      m_LiveView(new LiveImageView(this)),
      m_LogView(new QPlainTextEdit(this)),
      m_PollTimer(new QTimer(this)),
      m_Streaming(false),
      m_Lost(false)
{
    setObjectName(QStringLiteral("mainWindow"));
    setWindowTitle(QStringLiteral("PelkoViewer"));

    m_CameraLabel->setObjectName(QStringLiteral("cameraLabel"));
    m_CameraLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // A long camera name must not widen the window.
    m_CameraLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_CameraLabel->setMinimumWidth(120);
    m_StateLabel->setObjectName(QStringLiteral("stateLabel"));
    m_StateLabel->setMinimumWidth(110);
    m_FramesField->setObjectName(QStringLiteral("framesField"));
    m_FramesField->setReadOnly(true);
    m_FramesField->setAlignment(Qt::AlignRight);
    m_FramesField->setFixedWidth(90);
    m_FramesField->setToolTip(QStringLiteral("Frames the camera delivered since it was opened"));
    m_OpenButton->setObjectName(QStringLiteral("openCameraButton"));
    m_AcquisitionButton->setObjectName(QStringLiteral("acquisitionButton"));
    m_AcquisitionButton->setMinimumWidth(140);
    m_Tabs->setObjectName(QStringLiteral("tabs"));
    m_Tabs->addTab(m_FeaturesTab, QStringLiteral("Features"));
    m_LogView->setObjectName(QStringLiteral("logView"));
    m_LogView->setReadOnly(true);
    m_LogView->setMaximumBlockCount(2000);
    m_LogView->setPlaceholderText(QStringLiteral("Viewer messages"));

    QLabel* framesLabel = new QLabel(QStringLiteral("Frames:"), this);
    framesLabel->setBuddy(m_FramesField);
    QHBoxLayout* header = new QHBoxLayout;
    header->addWidget(m_CameraLabel, 1);
    header->addWidget(m_StateLabel);
    header->addSpacing(12);
    header->addWidget(framesLabel);
    header->addWidget(m_FramesField);
    header->addSpacing(12);
    header->addWidget(m_OpenButton);
    header->addWidget(m_AcquisitionButton);

    // The tabs scroll, so the image may take some of their width.
    QSplitter* imageSplitter = new QSplitter(Qt::Horizontal, this);
    imageSplitter->setObjectName(QStringLiteral("imageSplitter"));
    imageSplitter->addWidget(m_Tabs);
    imageSplitter->addWidget(m_LiveView);
    imageSplitter->setStretchFactor(0, 1);
    imageSplitter->setStretchFactor(1, 0);
    imageSplitter->setSizes({1000, 360});
    imageSplitter->setChildrenCollapsible(false);

    QSplitter* splitter = new QSplitter(Qt::Vertical, this);
    splitter->setObjectName(QStringLiteral("mainSplitter"));
    splitter->addWidget(imageSplitter);
    splitter->addWidget(m_LogView);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 0);
    splitter->setSizes({760, 90});
    splitter->setChildrenCollapsible(false);

    QWidget* central = new QWidget(this);
    QVBoxLayout* layout = new QVBoxLayout(central);
    layout->addLayout(header);
    layout->addWidget(splitter, 1);
    setCentralWidget(central);

    QMenu* cameraMenu = menuBar()->addMenu(QStringLiteral("&Camera"));
    QAction* openAction = cameraMenu->addAction(QStringLiteral("&Open Camera\u2026"), this, SLOT(ChooseCamera()));
    openAction->setShortcut(QKeySequence::Open);
    cameraMenu->addAction(QStringLiteral("Start/Stop &Acquisition"), this, SLOT(ToggleAcquisition()),
                          QKeySequence(Qt::CTRL + Qt::Key_Space));
    cameraMenu->addSeparator();
    QAction* quitAction = cameraMenu->addAction(QStringLiteral("&Quit"), this, SLOT(close()));
    quitAction->setShortcut(QKeySequence::Quit);

    connect(m_OpenButton, SIGNAL(clicked()), this, SLOT(ChooseCamera()));
    connect(m_AcquisitionButton, SIGNAL(clicked()), this, SLOT(ToggleAcquisition()));
    connect(m_PollTimer, SIGNAL(timeout()), this, SLOT(OnPoll()));
    connect(&m_Log, &ViewerLog::messageLogged, this, &MainWindow::OnLogMessage);
    // The plug-ins hear the loader's streaming signal; ours drives it.
    connect(this, SIGNAL(streamingChanged(bool)), &m_Plugins, SIGNAL(streamingChanged(bool)));

    // Whatever happened before the window existed (plug-in loading).
    for (const QString& line : m_Log.History()) {
        m_LogView->appendPlainText(line);
    }
    if (!m_Log.Problems().isEmpty()) {
        statusBar()->showMessage(m_Log.Problems().last());
    } else {
        statusBar()->showMessage(QStringLiteral("%1 tab plug-in(s) loaded").arg(m_Plugins.Plugins().size()));
    }
    m_PollTimer->setInterval(kPollIntervalMs);
    UpdateHeader();
    m_Tabs->setFocus();
    // Fits a 1280-pixel-wide screen with the live image beside the tabs.
    resize(1280, 900);
}

MainWindow::~MainWindow()
{
    CloseCamera();
}

bool MainWindow::OpenCameraById(const QString& id)
{
    ZMT::PkoAPI::CameraPtr camera;
    const int result = ZMT::PkoAPI::PkoSystem::GetInstance().GetCameraByID(id.toLatin1().constData(), camera);
    if (result != PkoErrorSuccess || !camera) {
        m_Log.Problem(QStringLiteral("No camera with ID %1 (%2); known cameras: %3")
                          .arg(id, ErrorText(result), CameraListDialog::CameraIds().join(QStringLiteral(", "))));
        return false;
    }
    return OpenCamera(camera);
}

bool MainWindow::OpenCamera(const ZMT::PkoAPI::CameraPtr& camera)
{
    CloseCamera();
    if (!camera) {
        return false;
    }
    std::string id;
    camera->GetID(id);
    int result = camera->Open();
    if (result != PkoErrorSuccess) {
        m_Log.Problem(
            QStringLiteral("Could not open camera %1: %2").arg(QString::fromStdString(id), ErrorText(result)));
        UpdateHeader();
        return false;
    }
    std::vector<ZMT::PkoAPI::FeaturePtr> features;
    result = camera->GetFeatures(features);
    if (result != PkoErrorSuccess) {
        m_Log.Problem(QStringLiteral("Could not read the features of camera %1: %2")
                          .arg(QString::fromStdString(id), ErrorText(result)));
        camera->Close();
        UpdateHeader();
        return false;
    }
    m_Camera = camera;
    m_Features = FeatureTableModel::FeatureList::create();
    m_Features->reserve(static_cast<int>(features.size()));
    for (const ZMT::PkoAPI::FeaturePtr& feature : features) {
        m_Features->append(feature);
    }
    m_Log.Info(QStringLiteral("Opened camera %1 with %2 features").arg(CameraId()).arg(m_Features->size()));

    CreatePluginPages();
    m_FeaturesTab->SetFeatures(m_Features);
    if (!m_PluginPages.isEmpty()) {
        m_Tabs->setCurrentIndex(0);
    }
    // A tab made while the camera already acquires learns it only now.
    m_Streaming = false;
    if (m_Camera->IsAcquiring()) {
        SetStreaming(true);
    }
    m_PollTimer->start();
    m_LiveView->SetCamera(m_Camera);
    UpdateHeader();
    return true;
}

void MainWindow::CloseCamera()
{
    if (!m_Camera) {
        return;
    }
    m_PollTimer->stop();
    m_LiveView->SetCamera(ZMT::PkoAPI::CameraPtr());
    // A lost camera would only refuse.
    if (!m_Lost && m_Camera->IsAcquiring()) {
        ZMT::PkoAPI::Sim::WriterScope scope(kWriterName);
        const int result = m_Camera->StopAcquisition();
        if (result != PkoErrorSuccess) {
            m_Log.Problem(
                QStringLiteral("Could not stop acquisition of camera %1: %2").arg(CameraId(), ErrorText(result)));
        }
    }
    SetStreaming(false);
    // The plug-ins' widgets die with their pages.
    RemovePluginPages();
    m_FeaturesTab->SetFeatures(FeatureTableModel::FeatureList());
    m_Features.reset();
    const QString id = CameraId();
    const int result = m_Camera->Close();
    if (result != PkoErrorSuccess) {
        m_Log.Problem(QStringLiteral("Could not close camera %1: %2").arg(id, ErrorText(result)));
    }
    m_Camera.reset();
    m_Lost = false;
    UpdateHeader();
}

void MainWindow::CreatePluginPages()
{
    int position = 0;
    for (const std::unique_ptr<PluginLoader::Plugin>& plugin : m_Plugins.Plugins()) {
        if (plugin->instance.isNull()) {
            continue;
        }
        QWidget* page = new QWidget;
        page->setObjectName(QStringLiteral("pluginPage_") + plugin->baseName);
        const int index = m_Tabs->insertTab(position, page, plugin->baseName);
        int code = 0;
        QString failure;
        try {
            code = plugin->tabExtension->CreateTabWidget(m_Features, page);
        } catch (const std::exception& error) {
            failure = QStringLiteral("threw %1").arg(QString::fromLocal8Bit(error.what()));
        } catch (...) {
            failure = QStringLiteral("threw an exception");
        }
        if (code == 4) {
            failure = QStringLiteral("does not support the camera (code 4)");
        } else if (code != 0) {
            failure = QStringLiteral("failed with code %1").arg(code);
        }
        if (!failure.isEmpty()) {
            m_Tabs->removeTab(index);
            delete page;
            if (code == 4) {
                m_Log.Problem(QStringLiteral("Camera %1 does not support the %2 tab; tab removed")
                                  .arg(CameraId(), plugin->baseName));
            } else {
                m_Log.Problem(QStringLiteral("Plug-in %1 could not make its tab for camera %2: it %3; tab removed")
                                  .arg(plugin->filePath, CameraId(), failure));
            }
            continue;
        }
        if (!page->accessibleName().isEmpty()) {
            m_Tabs->setTabText(index, page->accessibleName());
        }
        m_PluginPages.append(page);
        ++position;
    }
}

void MainWindow::RemovePluginPages()
{
    for (const QPointer<QWidget>& page : qAsConst(m_PluginPages)) {
        if (!page.isNull()) {
            m_Tabs->removeTab(m_Tabs->indexOf(page));
            delete page.data();
        }
    }
    m_PluginPages.clear();
}

QStringList MainWindow::TabTitles() const
{
    QStringList titles;
    for (int i = 0; i < m_Tabs->count(); ++i) {
        titles.append(m_Tabs->tabText(i));
    }
    return titles;
}

void MainWindow::ToggleAcquisition()
{
    if (!m_Camera) {
        m_Log.Problem(QStringLiteral("No camera is open"));
        return;
    }
    if (m_Lost) {
        m_Log.Problem(QStringLiteral("Camera %1 was lost; open it again to retry").arg(CameraId()));
        return;
    }
    const bool start = !m_Camera->IsAcquiring();
    int result = PkoErrorSuccess;
    {
        ZMT::PkoAPI::Sim::WriterScope scope(kWriterName);
        result = start ? m_Camera->StartAcquisition() : m_Camera->StopAcquisition();
    }
    if (result != PkoErrorSuccess) {
        m_Log.Problem(
            QStringLiteral("Could not %1 acquisition of camera %2: %3")
                .arg(start ? QStringLiteral("start") : QStringLiteral("stop"), CameraId(), ErrorText(result)));
    } else {
        m_Log.Info(QStringLiteral("Acquisition %1").arg(start ? QStringLiteral("started") : QStringLiteral("stopped")));
    }
    SetStreaming(m_Camera->IsAcquiring());
    UpdateHeader();
}

void MainWindow::ChooseCamera()
{
    CameraListDialog dialog(CameraId(), this);
    if (dialog.exec() != QDialog::Accepted || dialog.SelectedId().isEmpty()) {
        return;
    }
    OpenCameraById(dialog.SelectedId());
}

void MainWindow::OnPoll()
{
    if (!m_Camera || m_Lost) {
        return;
    }
    if (m_Camera->IsConnectionLost()) {
        OnConnectionLost();
        return;
    }
    if (!m_Camera->IsOpen()) {
        m_Log.Problem(QStringLiteral("Camera %1 is no longer open; it was closed or lost").arg(CameraId()));
        CloseCamera();
        return;
    }
    // The camera may stop by itself (after the frames of a multi-frame
    // acquisition) or be started by someone else.
    SetStreaming(m_Camera->IsAcquiring());
    UpdateHeader();
}

void MainWindow::OnConnectionLost()
{
    // Every further call would fail at once; one report is enough.
    m_Lost = true;
    m_PollTimer->stop();
    m_LiveView->Freeze();
    SetStreaming(false);
    m_Log.Problem(QStringLiteral("Camera %1 was lost").arg(CameraId()));
    UpdateHeader();
}

void MainWindow::OnLogMessage(ViewerLog::Level level, const QString& message)
{
    m_LogView->appendPlainText(ViewerLog::Format(level, message));
    if (level == ViewerLog::Level::Problem) {
        statusBar()->showMessage(message);
    }
}

void MainWindow::SetStreaming(bool isStreaming)
{
    if (isStreaming == m_Streaming) {
        return;
    }
    m_Streaming = isStreaming;
    emit streamingChanged(isStreaming);
}

void MainWindow::UpdateHeader()
{
    if (!m_Camera) {
        m_CameraLabel->setText(QStringLiteral("<b>No camera open</b>"));
        m_StateLabel->setText(QStringLiteral("\u25CB Closed"));
        m_FramesField->setText(QString());
        m_AcquisitionButton->setEnabled(false);
        m_AcquisitionButton->setText(QStringLiteral("Start Acquisition"));
        setWindowTitle(QStringLiteral("PelkoViewer"));
        return;
    }
    std::string name;
    std::string model;
    m_Camera->GetName(name);
    m_Camera->GetModel(model);
    // Names of the SDK's cameras usually carry the ID already.
    QString title = QString::fromStdString(name);
    if (!title.contains(CameraId())) {
        title += QStringLiteral(" (%1)").arg(CameraId());
    }
    m_CameraLabel->setText(QStringLiteral("<b>%1</b>").arg(title.toHtmlEscaped()));
    m_CameraLabel->setToolTip(QStringLiteral("ID %1, model %2").arg(CameraId(), QString::fromStdString(model)));
    m_StateLabel->setText(m_Streaming ? QStringLiteral("<span style=\"color:#1a7f37\">\u25CF</span> Acquiring")
                                      : QStringLiteral("<span style=\"color:#888888\">\u25CF</span> Idle"));
    m_FramesField->setText(QString::number(m_Camera->FramesDelivered()));
    if (m_Lost) {
        m_StateLabel->setText(QStringLiteral("<span style=\"color:#cf222e\">\u25CF</span> Lost"));
        m_AcquisitionButton->setEnabled(false);
        m_AcquisitionButton->setText(QStringLiteral("Start Acquisition"));
        setWindowTitle(QStringLiteral("PelkoViewer \u2014 %1 (lost)").arg(CameraId()));
        return;
    }
    m_AcquisitionButton->setEnabled(true);
    m_AcquisitionButton->setText(m_Streaming ? QStringLiteral("Stop Acquisition")
                                             : QStringLiteral("Start Acquisition"));
    setWindowTitle(QStringLiteral("PelkoViewer \u2014 %1").arg(CameraId()));
}

QString MainWindow::CameraId() const
{
    std::string id;
    if (m_Camera) {
        m_Camera->GetID(id);
    }
    return QString::fromStdString(id);
}
