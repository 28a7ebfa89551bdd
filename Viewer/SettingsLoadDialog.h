#ifndef SETTINGSLOADDIALOG_H
#define SETTINGSLOADDIALOG_H

#include "LoadReport.h"
#include "SettingsDocument.h"
#include "SettingsLoader.h"

#include <PkoAPI/Camera.h>

#include <QDialog>

#include <memory>

class QCheckBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QTableWidget;
class SettingsLoadJob;

// Loads a settings file into the camera and shows how it goes: a progress
// bar and Cancel while the load runs (off the GUI thread), then the report,
// one row per entry of the file, with a filter for "only problems". A
// cancelled load still reports what was written.
class SettingsLoadDialog : public QDialog {
    Q_OBJECT

public:
    enum Column { ResultColumn, FeatureColumn, FileColumn, CameraColumn, MessageColumn, ColumnCount };

    SettingsLoadDialog(const ZMT::PkoAPI::CameraPtr& camera, const SettingsDocument& document,
                       const SettingsLoader::Options& options, QWidget* parent = nullptr);
    ~SettingsLoadDialog() override;

    // Starts the load; finished() comes when it has ended.
    void Start();
    bool IsRunning() const;
    // The report, once the load has ended.
    const LoadReport& Report() const { return m_Report; }
    QTableWidget* Table() const { return m_Table; }

signals:
    // The load has ended (done, cancelled, stopped or camera lost).
    void loadFinished();

public slots:
    void Cancel();

private slots:
    void OnProgressed(int done, int total);
    void OnLoaded(const LoadReport& report);
    void OnOnlyProblemsChanged(bool onlyProblems);

protected:
    void reject() override;

private:
    void FillTable();

    std::unique_ptr<SettingsLoadJob> m_Job;
    LoadReport m_Report;
    QLabel* m_Status;
    QProgressBar* m_Progress;
    QTableWidget* m_Table;
    QCheckBox* m_OnlyProblems;
    QPushButton* m_CancelButton;
    QPushButton* m_CloseButton;
};

#endif  // SETTINGSLOADDIALOG_H
