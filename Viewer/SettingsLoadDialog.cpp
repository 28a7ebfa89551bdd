#include "SettingsLoadDialog.h"

#include "SettingsLoadJob.h"
#include "SettingsValue.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace {

QString OutcomeText(EntryResult::Outcome outcome)
{
    switch (outcome) {
        case EntryResult::Outcome::Applied:
            return SettingsLoadDialog::tr("applied");
        case EntryResult::Outcome::Adjusted:
            return SettingsLoadDialog::tr("adjusted");
        case EntryResult::Outcome::Refused:
            return SettingsLoadDialog::tr("refused");
        case EntryResult::Outcome::NotAvailable:
            return SettingsLoadDialog::tr("not available now");
        case EntryResult::Outcome::Skipped:
            return SettingsLoadDialog::tr("skipped");
        case EntryResult::Outcome::NotWritten:
            break;
    }
    return SettingsLoadDialog::tr("not written");
}

QColor OutcomeColour(EntryResult::Outcome outcome)
{
    switch (outcome) {
        case EntryResult::Outcome::Applied:
            return QColor(0x1a, 0x7f, 0x37);
        case EntryResult::Outcome::Adjusted:
            return QColor(0x9a, 0x67, 0x00);
        case EntryResult::Outcome::NotWritten:
        case EntryResult::Outcome::Skipped:
            return QColor(0x6e, 0x77, 0x81);
        default:
            return QColor(0xcf, 0x22, 0x2e);
    }
}

}  // namespace

SettingsLoadDialog::SettingsLoadDialog(const ZMT::PkoAPI::CameraPtr& camera, const SettingsDocument& document,
                                       const SettingsLoader::Options& options, QWidget* parent)
    : QDialog(parent),
      m_Job(new SettingsLoadJob(camera, document, options)),
      m_Status(new QLabel(this)),
      m_Progress(new QProgressBar(this)),
      m_Table(new QTableWidget(this)),
      m_OnlyProblems(new QCheckBox(tr("Only problems"), this)),
      m_CancelButton(new QPushButton(tr("Cancel"), this)),
      m_CloseButton(new QPushButton(tr("Close"), this))
{
    setObjectName(QStringLiteral("settingsLoadDialog"));
    setWindowTitle(tr("Load Settings \u2014 %1").arg(QFileInfo(document.fileName).fileName()));
    m_Status->setObjectName(QStringLiteral("loadStatus"));
    m_Status->setWordWrap(true);
    m_Status->setText(tr("Loading %1 into the camera\u2026").arg(document.fileName));
    m_Progress->setObjectName(QStringLiteral("loadProgress"));
    m_Progress->setRange(0, 0);
    m_Table->setObjectName(QStringLiteral("loadReport"));
    m_Table->setColumnCount(ColumnCount);
    m_Table->setHorizontalHeaderLabels({tr("Result"), tr("Feature"), tr("File"), tr("Camera"), tr("Message")});
    m_Table->horizontalHeader()->setStretchLastSection(true);
    m_Table->verticalHeader()->hide();
    m_Table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_Table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_OnlyProblems->setObjectName(QStringLiteral("onlyProblems"));
    m_OnlyProblems->setEnabled(false);
    m_CancelButton->setObjectName(QStringLiteral("cancelLoad"));
    m_CloseButton->setObjectName(QStringLiteral("closeLoad"));
    m_CloseButton->setEnabled(false);

    QHBoxLayout* buttons = new QHBoxLayout;
    buttons->addWidget(m_OnlyProblems);
    buttons->addStretch(1);
    buttons->addWidget(m_CancelButton);
    buttons->addWidget(m_CloseButton);
    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addWidget(m_Status);
    layout->addWidget(m_Progress);
    layout->addWidget(m_Table, 1);
    layout->addLayout(buttons);
    resize(820, 520);

    connect(m_Job.get(), SIGNAL(progressed(int, int)), this, SLOT(OnProgressed(int, int)));
    connect(m_Job.get(), SIGNAL(loaded(LoadReport)), this, SLOT(OnLoaded(LoadReport)));
    connect(m_OnlyProblems, SIGNAL(toggled(bool)), this, SLOT(OnOnlyProblemsChanged(bool)));
    connect(m_CancelButton, SIGNAL(clicked()), this, SLOT(Cancel()));
    connect(m_CloseButton, SIGNAL(clicked()), this, SLOT(accept()));
}

SettingsLoadDialog::~SettingsLoadDialog() = default;

void SettingsLoadDialog::Start()
{
    m_Job->start();
}

bool SettingsLoadDialog::IsRunning() const
{
    return m_Job->isRunning() || !m_CloseButton->isEnabled();
}

void SettingsLoadDialog::Cancel()
{
    m_Job->Cancel();
    m_CancelButton->setEnabled(false);
    m_Status->setText(tr("Cancelling: the load stops before its next write\u2026"));
}

void SettingsLoadDialog::reject()
{
    // Closing while the load runs only cancels it: the report of what was
    // written must still be seen.
    if (IsRunning()) {
        Cancel();
        return;
    }
    QDialog::reject();
}

void SettingsLoadDialog::OnProgressed(int done, int total)
{
    m_Progress->setRange(0, total);
    m_Progress->setValue(done);
}

void SettingsLoadDialog::OnLoaded(const LoadReport& report)
{
    m_Job->wait();
    m_Report = report;
    m_Progress->setRange(0, 1);
    m_Progress->setValue(1);
    QString status;
    switch (report.status) {
        case LoadReport::Status::Done:
            status = report.AllApplied() ? tr("All settings applied.") : tr("Some settings were not applied.");
            break;
        case LoadReport::Status::FileRejected:
            status = tr("The file has errors; nothing was written.");
            break;
        case LoadReport::Status::BackupFailed:
            status = tr("The current values could not be kept; nothing was written.");
            break;
        case LoadReport::Status::Cancelled:
            status = tr("Cancelled; the table shows what was written.");
            break;
        case LoadReport::Status::Stopped:
            status = report.rolledBack ? tr("Stopped at the first error; the values written were put back.")
                                       : tr("Stopped at the first error.");
            break;
        case LoadReport::Status::CameraLost:
            status = tr("The camera stopped answering; the table shows what was written.");
            break;
    }
    m_Status->setText(QStringLiteral("<b>%1</b> %2").arg(status.toHtmlEscaped(), report.statusMessage.toHtmlEscaped()));
    FillTable();
    m_OnlyProblems->setEnabled(true);
    m_CancelButton->setEnabled(false);
    m_CloseButton->setEnabled(true);
    m_CloseButton->setDefault(true);
    emit loadFinished();
}

void SettingsLoadDialog::FillTable()
{
    m_Table->setRowCount(m_Report.results.size());
    for (int row = 0; row < m_Report.results.size(); ++row) {
        const EntryResult& result = m_Report.results.at(row);
        QTableWidgetItem* outcome = new QTableWidgetItem(OutcomeText(result.outcome));
        outcome->setForeground(OutcomeColour(result.outcome));
        outcome->setData(Qt::UserRole, int(result.outcome));
        m_Table->setItem(row, ResultColumn, outcome);
        m_Table->setItem(row, FeatureColumn, new QTableWidgetItem(result.entry.Key()));
        m_Table->setItem(row, FileColumn, new QTableWidgetItem(SettingsValue::ToText(result.entry.value)));
        m_Table->setItem(
            row, CameraColumn,
            new QTableWidgetItem(result.readBack.isValid() ? SettingsValue::ToText(result.readBack) : QString()));
        m_Table->setItem(row, MessageColumn, new QTableWidgetItem(result.message));
    }
    m_Table->resizeColumnsToContents();
    OnOnlyProblemsChanged(m_OnlyProblems->isChecked());
}

void SettingsLoadDialog::OnOnlyProblemsChanged(bool onlyProblems)
{
    for (int row = 0; row < m_Table->rowCount() && row < m_Report.results.size(); ++row)
        m_Table->setRowHidden(row, onlyProblems && !m_Report.results.at(row).IsProblem());
}
