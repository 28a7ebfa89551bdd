#include "MainWindow.h"

#include "CameraListDialog.h"
#include "FeaturesTab.h"
#include "LiveImageView.h"
#include "PluginLoader.h"
#include "SettingsChecker.h"
#include "SettingsLoadDialog.h"
#include "SettingsValue.h"

#include <PkoAPI/PkoAPI.h>
#include <PkoAPI/Sim/SimTypes.h>

#include <QAction>
#include <QApplication>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
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
      m_OpenButton(new QPushButton(tr("Open Camera…"), this)),
      m_AcquisitionButton(new QPushButton(tr("Start Acquisition"), this)),
      m_Tabs(new QTabWidget(this)),
      m_FeaturesTab(new FeaturesTab(log, this)),
      m_LiveView(new LiveImageView(this)),
      m_LogView(new QPlainTextEdit(this)),
      m_PollTimer(new QTimer(this)),
      m_SaveSettingsAction(nullptr),
      m_LoadSettingsAction(nullptr),
      m_CompareAction(nullptr),
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
    m_FramesField->setToolTip(tr("Frames the camera delivered since it was opened"));
    m_OpenButton->setObjectName(QStringLiteral("openCameraButton"));
    m_AcquisitionButton->setObjectName(QStringLiteral("acquisitionButton"));
    m_AcquisitionButton->setMinimumWidth(140);
    m_Tabs->setObjectName(QStringLiteral("tabs"));
    m_Tabs->addTab(m_FeaturesTab, tr("Features"));
    m_LogView->setObjectName(QStringLiteral("logView"));
    m_LogView->setReadOnly(true);
    m_LogView->setMaximumBlockCount(2000);
    m_LogView->setPlaceholderText(tr("Viewer messages"));

    QLabel* framesLabel = new QLabel(tr("Frames:"), this);
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

    QMenu* cameraMenu = menuBar()->addMenu(tr("&Camera"));
    QAction* openAction = cameraMenu->addAction(tr("&Open Camera…"), this, SLOT(ChooseCamera()));
    openAction->setShortcut(QKeySequence::Open);
    cameraMenu->addAction(tr("Start/Stop &Acquisition"), this, SLOT(ToggleAcquisition()),
                          QKeySequence(Qt::CTRL + Qt::Key_Space));
    cameraMenu->addSeparator();
    m_SaveSettingsAction = cameraMenu->addAction(tr("&Save Settings…"), this, SLOT(ChooseSettingsToSave()));
    m_SaveSettingsAction->setObjectName(QStringLiteral("saveSettingsAction"));
    m_LoadSettingsAction = cameraMenu->addAction(tr("&Load Settings…"), this, SLOT(ChooseSettingsToLoad()));
    m_LoadSettingsAction->setObjectName(QStringLiteral("loadSettingsAction"));
    m_CompareAction = cameraMenu->addAction(tr("Compare &With File…"), this, SLOT(ChooseFileToCompare()));
    m_CompareAction->setObjectName(QStringLiteral("compareSettingsAction"));
    cameraMenu->addSeparator();
    QAction* quitAction = cameraMenu->addAction(tr("&Quit"), this, SLOT(close()));
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
        statusBar()->showMessage(tr("%1 tab plug-in(s) loaded").arg(m_Plugins.Plugins().size()));
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
        m_Log.Problem(tr("No camera with ID %1 (%2); known cameras: %3")
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
        std::string problem;
        camera->GetOpenProblem(problem);
        if (problem.empty()) {
            m_Log.Problem(tr("Could not open camera %1: %2").arg(QString::fromStdString(id), ErrorText(result)));
        } else {
            m_Log.Problem(tr("Could not open camera %1: %2: %3")
                              .arg(QString::fromStdString(id), ErrorText(result), QString::fromStdString(problem)));
        }
        UpdateHeader();
        return false;
    }
    std::vector<ZMT::PkoAPI::FeaturePtr> features;
    result = camera->GetFeatures(features);
    if (result != PkoErrorSuccess) {
        m_Log.Problem(
            tr("Could not read the features of camera %1: %2").arg(QString::fromStdString(id), ErrorText(result)));
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
    m_Log.Info(tr("Opened camera %1 with %2 features").arg(CameraId()).arg(m_Features->size()));

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
    // A load in progress is cancelled and waited for: it uses the camera.
    delete m_LoadDialog.data();
    m_PollTimer->stop();
    m_LiveView->SetCamera(ZMT::PkoAPI::CameraPtr());
    // A lost camera would only refuse.
    if (!m_Lost && m_Camera->IsAcquiring()) {
        ZMT::PkoAPI::Sim::WriterScope scope(kWriterName);
        const int result = m_Camera->StopAcquisition();
        if (result != PkoErrorSuccess) {
            m_Log.Problem(tr("Could not stop acquisition of camera %1: %2").arg(CameraId(), ErrorText(result)));
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
        m_Log.Problem(tr("Could not close camera %1: %2").arg(id, ErrorText(result)));
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
            failure = tr("threw %1").arg(QString::fromLocal8Bit(error.what()));
        } catch (...) {
            failure = tr("threw an exception");
        }
        if (code == 4) {
            failure = tr("does not support the camera (code 4)");
        } else if (code != 0) {
            failure = tr("failed with code %1").arg(code);
        }
        if (!failure.isEmpty()) {
            m_Tabs->removeTab(index);
            delete page;
            if (code == 4) {
                m_Log.Problem(
                    tr("Camera %1 does not support the %2 tab; tab removed").arg(CameraId(), plugin->baseName));
            } else {
                m_Log.Problem(tr("Plug-in %1 could not make its tab for camera %2: it %3; tab removed")
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
        m_Log.Problem(tr("No camera is open"));
        return;
    }
    if (m_Lost) {
        m_Log.Problem(tr("Camera %1 was lost; open it again to retry").arg(CameraId()));
        return;
    }
    const bool start = !m_Camera->IsAcquiring();
    int result = PkoErrorSuccess;
    {
        ZMT::PkoAPI::Sim::WriterScope scope(kWriterName);
        result = start ? m_Camera->StartAcquisition() : m_Camera->StopAcquisition();
    }
    if (result != PkoErrorSuccess) {
        m_Log.Problem((start ? tr("Could not start acquisition of camera %1: %2")
                             : tr("Could not stop acquisition of camera %1: %2"))
                          .arg(CameraId(), ErrorText(result)));
    } else {
        m_Log.Info(start ? tr("Acquisition started") : tr("Acquisition stopped"));
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
        m_Log.Problem(tr("Camera %1 is no longer open; it was closed or lost").arg(CameraId()));
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
    m_Log.Problem(tr("Camera %1 was lost").arg(CameraId()));
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
        m_CameraLabel->setText(tr("<b>No camera open</b>"));
        m_StateLabel->setText(tr("○ Closed"));
        m_FramesField->setText(QString());
        m_AcquisitionButton->setEnabled(false);
        m_AcquisitionButton->setText(tr("Start Acquisition"));
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
    m_CameraLabel->setToolTip(tr("ID %1, model %2").arg(CameraId(), QString::fromStdString(model)));
    m_StateLabel->setText(m_Streaming ? tr("<span style=\"color:#1a7f37\">●</span> Acquiring")
                                      : tr("<span style=\"color:#888888\">●</span> Idle"));
    m_FramesField->setText(QString::number(m_Camera->FramesDelivered()));
    if (m_Lost) {
        m_StateLabel->setText(tr("<span style=\"color:#cf222e\">●</span> Lost"));
        m_AcquisitionButton->setEnabled(false);
        m_AcquisitionButton->setText(tr("Start Acquisition"));
        setWindowTitle(tr("PelkoViewer — %1 (lost)").arg(CameraId()));
        return;
    }
    m_AcquisitionButton->setEnabled(true);
    m_AcquisitionButton->setText(m_Streaming ? tr("Stop Acquisition") : tr("Start Acquisition"));
    setWindowTitle(QStringLiteral("PelkoViewer \u2014 %1").arg(CameraId()));
}

void MainWindow::RefreshTabs()
{
    if (!m_Camera) {
        return;
    }
    RemovePluginPages();
    CreatePluginPages();
    m_FeaturesTab->SetFeatures(m_Features);
    if (!m_PluginPages.isEmpty()) {
        m_Tabs->setCurrentIndex(0);
    }
    // New tabs learn that the camera streams as they did on opening.
    if (m_Streaming) {
        emit streamingChanged(true);
    }
}

bool MainWindow::SaveSettings(const QString& path, SettingsFile::Format format, SettingsSaver::Scope scope)
{
    if (!m_Camera || m_Lost) {
        m_Log.Problem(tr("No camera is open"));
        return false;
    }
    FeatureLayout layout;
    int result = layout.Build(m_Camera);
    SettingsDocument document;
    QStringList notes;
    if (result == PkoErrorSuccess) {
        result = SettingsSaver::Save(m_Camera, layout, scope, document, notes);
    }
    for (const QString& note : notes) {
        m_Log.Info(note);
    }
    if (result != PkoErrorSuccess) {
        m_Log.Problem(tr("Could not save the settings of camera %1: %2; %3 not written")
                          .arg(CameraId(), ErrorText(result), path));
        return false;
    }
    QString error;
    if (!SettingsFile::Write(path, document, format, error)) {
        m_Log.Problem(tr("Could not save the settings: %1").arg(error));
        return false;
    }
    m_Log.Info(tr("Saved %1 values of camera %2 to %3").arg(document.entries.size()).arg(CameraId(), path));
    return true;
}

SettingsLoadDialog* MainWindow::LoadSettings(const QString& path, bool partial)
{
    if (!m_Camera || m_Lost) {
        m_Log.Problem(tr("No camera is open"));
        return nullptr;
    }
    if (m_LoadDialog) {
        m_Log.Problem(tr("A load of settings is running already"));
        return nullptr;
    }
    SettingsDocument document;
    QVector<SettingsProblem> problems;
    if (!SettingsFile::Read(path, document, problems)) {
        m_Log.Problem(tr("Could not load the settings: %1").arg(problems.value(0).ToText()));
        if (isVisible()) {
            QMessageBox::warning(this, tr("Load Settings"), problems.value(0).ToText());
        }
        return nullptr;
    }
    // The check reads only; what it finds decides whether to go on.
    FeatureLayout layout;
    layout.Build(m_Camera);
    SettingsDocument checked = document;
    std::string model;
    m_Camera->GetModel(model);
    problems += SettingsChecker::Check(checked, layout, QString::fromStdString(model)).problems;
    QStringList errors;
    for (const SettingsProblem& problem : problems) {
        if (problem.IsError()) {
            errors << problem.ToText();
        }
    }
    if (!errors.isEmpty() && !partial) {
        for (const QString& error : errors) {
            m_Log.Problem(error);
        }
        if (!isVisible()) {
            return nullptr;
        }
        QMessageBox question(QMessageBox::Warning, tr("Load Settings"),
                             tr("The file has %n error(s); nothing has been written.", nullptr, errors.size()),
                             QMessageBox::Cancel, this);
        question.setInformativeText(tr("Write the entries without errors?"));
        question.setDetailedText(errors.join(QLatin1Char('\n')));
        QPushButton* rest = question.addButton(tr("Load the Rest"), QMessageBox::AcceptRole);
        question.exec();
        if (question.clickedButton() != rest) {
            return nullptr;
        }
        partial = true;
    }

    SettingsLoader::Options options;
    options.partial = partial;
    // The tabs move selectors of their own as they refresh; they come back
    // made anew once the load has ended.
    RemovePluginPages();
    m_FeaturesTab->SetFeatures(FeatureTableModel::FeatureList());
    m_LoadDialog = new SettingsLoadDialog(m_Camera, document, options, this);
    m_LoadDialog->setAttribute(Qt::WA_DeleteOnClose);
    m_LoadDialog->setWindowModality(Qt::WindowModal);
    connect(m_LoadDialog, SIGNAL(loadFinished()), this, SLOT(OnSettingsLoaded()));
    m_Log.Info(tr("Loading %1 into camera %2").arg(path, CameraId()));
    m_LoadDialog->show();
    m_LoadDialog->Start();
    return m_LoadDialog;
}

void MainWindow::OnSettingsLoaded()
{
    if (m_LoadDialog) {
        m_Log.Info(m_LoadDialog->Report().statusMessage);
    }
    RefreshTabs();
}

bool MainWindow::CompareWithFile(const QString& path, QVector<SettingsDifference>& differences, bool show)
{
    differences.clear();
    if (!m_Camera || m_Lost) {
        m_Log.Problem(tr("No camera is open"));
        return false;
    }
    SettingsDocument document;
    QVector<SettingsProblem> problems;
    if (!SettingsFile::Read(path, document, problems)) {
        m_Log.Problem(tr("Could not compare with the file: %1").arg(problems.value(0).ToText()));
        if (show) {
            QMessageBox::warning(this, tr("Compare With File"), problems.value(0).ToText());
        }
        return false;
    }
    FeatureLayout layout;
    layout.Build(m_Camera);
    int equal = 0;
    const int result = SettingsComparer::Compare(m_Camera, layout, document, differences, equal, problems);
    if (result != PkoErrorSuccess) {
        m_Log.Problem(tr("Could not compare camera %1 with %2: %3").arg(CameraId(), path, ErrorText(result)));
        return false;
    }
    QStringList lines;
    for (const SettingsDifference& difference : differences) {
        if (difference.kind == SettingsDifference::Kind::Different) {
            lines << tr("%1: camera %2, file %3")
                         .arg(difference.entry.Key(), SettingsValue::ToText(difference.cameraValue),
                              SettingsValue::ToText(difference.entry.value));
        } else {
            lines << tr("%1: %2").arg(difference.entry.Key(), difference.message);
        }
    }
    const QString summary = differences.isEmpty()
                                ? tr("The camera holds every value of %1 (%2 values).").arg(path).arg(equal)
                                : tr("%n value(s) of the camera differ from %1", nullptr, differences.size()).arg(path);
    m_Log.Info(summary);
    for (const QString& line : lines) {
        m_Log.Info(line);
    }
    if (show) {
        QMessageBox box(differences.isEmpty() ? QMessageBox::Information : QMessageBox::Warning,
                        tr("Compare With File"), summary, QMessageBox::Ok, this);
        if (!lines.isEmpty()) {
            box.setInformativeText(lines.mid(0, 12).join(QLatin1Char('\n')) +
                                   (lines.size() > 12 ? QStringLiteral("\n…") : QString()));
            box.setDetailedText(lines.join(QLatin1Char('\n')));
        }
        box.exec();
    }
    return true;
}

void MainWindow::ChooseSettingsToSave()
{
    if (!m_Camera) {
        m_Log.Problem(tr("No camera is open"));
        return;
    }
    const QString json = tr("Settings (*.json)");
    const QString text = tr("GenICam persistence text (*.txt *.pfs)");
    const QString triggerIo = tr("Only trigger and I/O, settings (*.json)");
    QString filter = json;
    QString path =
        QFileDialog::getSaveFileName(this, tr("Save Settings"), CameraId() + QStringLiteral(".json"),
                                     QStringList({json, triggerIo, text}).join(QStringLiteral(";;")), &filter);
    if (path.isEmpty()) {
        return;
    }
    SaveSettings(path, filter == text ? SettingsFile::Format::GenicamText : SettingsFile::Format::Json,
                 filter == triggerIo ? SettingsSaver::Scope::TriggerIo : SettingsSaver::Scope::All);
}

void MainWindow::ChooseSettingsToLoad()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Load Settings"), QString(),
                                                      tr("Settings (*.json *.txt *.pfs);;All files (*)"));
    if (!path.isEmpty()) {
        LoadSettings(path);
    }
}

void MainWindow::ChooseFileToCompare()
{
    const QString path = QFileDialog::getOpenFileName(this, tr("Compare With File"), QString(),
                                                      tr("Settings (*.json *.txt *.pfs);;All files (*)"));
    QVector<SettingsDifference> differences;
    if (!path.isEmpty()) {
        CompareWithFile(path, differences);
    }
}

QString MainWindow::CameraId() const
{
    std::string id;
    if (m_Camera) {
        m_Camera->GetID(id);
    }
    return QString::fromStdString(id);
}
