#include "WiringSelfTestPanel.h"

#include "WiringSelfTest.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace {

// Between two steps the cable and the camera's inputs settle.
constexpr int kStepIntervalMs = 20;

}  // namespace

WiringSelfTestPanel::WiringSelfTestPanel(FeatureManager* manager, QWidget* parent)
    : QWidget(parent), m_Test(new WiringSelfTest(manager, this)), m_Timer(new QTimer(this))
{
    setObjectName("w_WiringSelfTest");
    m_Timer->setInterval(kStepIntervalMs);

    m_TestButton = new QPushButton(tr("Test wiring…"), this);
    m_TestButton->setObjectName("pb_TestWiring");
    m_CancelButton = new QPushButton(tr("Cancel"), this);
    m_CancelButton->setObjectName("pb_CancelWiringTest");
    m_RestoreButton = new QPushButton(tr("Restore outputs"), this);
    m_RestoreButton->setObjectName("pb_RestoreOutputs");
    m_Progress = new QProgressBar(this);
    m_Progress->setObjectName("pgb_WiringTest");
    m_Progress->setRange(0, 1);
    m_Progress->setValue(0);
    m_Status = new QLabel(this);
    m_Status->setObjectName("l_WiringStatus");
    m_Status->setWordWrap(true);
    m_Table = new QTableWidget(0, 1, this);
    m_Table->setObjectName("tw_WiringResult");
    m_Table->setHorizontalHeaderLabels({tr("Output → input")});
    m_Table->horizontalHeader()->setStretchLastSection(true);
    m_Table->verticalHeader()->hide();
    m_Table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    // The table takes the height its neighbours leave; it scrolls.
    m_Table->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored);
    m_Table->setMinimumHeight(60);

    QHBoxLayout* buttons = new QHBoxLayout;
    buttons->addWidget(m_TestButton);
    buttons->addWidget(m_CancelButton);
    buttons->addWidget(m_RestoreButton);
    buttons->addWidget(m_Progress, 1);
    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addLayout(buttons);
    layout->addWidget(m_Status);
    layout->addWidget(m_Table, 1);

    connect(m_TestButton, SIGNAL(clicked()), this, SLOT(OnTestWiringClicked()));
    connect(m_CancelButton, SIGNAL(clicked()), this, SLOT(OnCancelClicked()));
    connect(m_RestoreButton, SIGNAL(clicked()), this, SLOT(OnRestoreClicked()));
    connect(m_Timer, SIGNAL(timeout()), this, SLOT(OnTimerTimeout()));
    connect(m_Test, SIGNAL(Progress(int, int)), this, SLOT(OnTestProgressChanged(int, int)));
    connect(m_Test, SIGNAL(Ended()), this, SLOT(OnTestEnded()));
    UpdateControls();
}

void WiringSelfTestPanel::SetStreaming(bool streaming)
{
    m_Streaming = streaming;
    m_Test->SetAcquiring(streaming);
    if (streaming && m_Confirmation != nullptr)
        m_Confirmation->reject();
    // Says why the button is off, unless a result is shown.
    const QString acquiring = tr("The camera acquires: stop the acquisition before testing the wiring.");
    if (streaming && !m_Test->IsRunning() && m_Status->text().isEmpty())
        m_Status->setText(acquiring);
    else if (!streaming && m_Status->text() == acquiring)
        m_Status->clear();
    UpdateControls();
}

void WiringSelfTestPanel::OnTestWiringClicked()
{
    if (m_Test->IsRunning() || m_Confirmation != nullptr)
        return;
    if (m_Streaming) {
        m_Status->setText(tr("The camera acquires: stop the acquisition before testing the wiring."));
        return;
    }
    // Window-modal without a loop of its own: the camera's notifications go on.
    m_Confirmation = new QMessageBox(QMessageBox::Warning, tr("Test wiring"),
                                     tr("The test switches every output line to a user output and toggles it "
                                        "several times. Strobes, lights and actuators connected to the outputs may "
                                        "fire. The outputs' settings are restored afterwards.\n\nStart the test?"),
                                     QMessageBox::Yes | QMessageBox::Cancel, this);
    m_Confirmation->setObjectName("msg_ConfirmWiringTest");
    m_Confirmation->setDefaultButton(QMessageBox::Cancel);
    m_Confirmation->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_Confirmation, SIGNAL(finished(int)), this, SLOT(OnConfirmationFinished(int)));
    m_Confirmation->open();
    UpdateControls();
}

void WiringSelfTestPanel::OnConfirmationFinished(int result)
{
    m_Confirmation = nullptr;
    if (result == QMessageBox::Yes) {
        m_Table->setRowCount(0);
        if (m_Test->Start()) {
            m_Status->setText(tr("Testing the wiring…"));
            m_Timer->start();
        } else {
            m_Status->setText(m_Test->ErrorText());
        }
    }
    UpdateControls();
}

void WiringSelfTestPanel::OnCancelClicked()
{
    m_Timer->stop();
    m_Test->Cancel();
    UpdateControls();
}

void WiringSelfTestPanel::OnRestoreClicked()
{
    if (m_Test->RetryRestore())
        m_Status->setText(tr("The outputs were restored."));
    else
        m_Status->setText(tr("Still not restored: %1").arg(m_Test->Unrestored().join(", ")));
    UpdateControls();
}

void WiringSelfTestPanel::OnTimerTimeout()
{
    if (!m_Test->Step())
        m_Timer->stop();
}

void WiringSelfTestPanel::OnTestProgressChanged(int done, int total)
{
    m_Progress->setRange(0, qMax(1, total));
    m_Progress->setValue(done);
}

void WiringSelfTestPanel::OnTestEnded()
{
    m_Timer->stop();
    const QStringList results = m_Test->ResultTexts();
    m_Table->setRowCount(results.size());
    for (int row = 0; row < results.size(); ++row)
        m_Table->setItem(row, 0, new QTableWidgetItem(results.at(row)));
    QString status = m_Test->CurrentState() == WiringSelfTest::State::Finished ? tr("The wiring test is done.")
                                                                               : m_Test->ErrorText();
    const QStringList left = m_Test->Unrestored();
    if (!left.isEmpty())
        status += "\n" + tr("Not restored: %1").arg(left.join(", "));
    m_Status->setText(status);
    UpdateControls();
}

void WiringSelfTestPanel::UpdateControls()
{
    const bool running = m_Test->IsRunning();
    m_TestButton->setEnabled(!running && !m_Streaming && m_Confirmation == nullptr);
    m_CancelButton->setEnabled(running);
    m_RestoreButton->setVisible(!m_Test->Unrestored().isEmpty());
}
