#ifndef WIRINGSELFTESTPANEL_H
#define WIRINGSELFTESTPANEL_H

#include <QWidget>

class FeatureManager;
class QLabel;
class QMessageBox;
class QProgressBar;
class QPushButton;
class QTableWidget;
class QTimer;
class WiringSelfTest;

// "Test wiring…": asks first (the outputs toggle; strobes and actuators may
// fire), refuses while the camera streams, steps the test with a timer so
// that the window stays responsive, can be cancelled, and shows which output
// reaches which input in a table.
class WiringSelfTestPanel : public QWidget {
    Q_OBJECT

public:
    WiringSelfTestPanel(FeatureManager* manager, QWidget* parent);

    WiringSelfTest* Test() const { return m_Test; }

public slots:
    void SetStreaming(bool streaming);

private slots:
    void OnTestWiringClicked();
    void OnConfirmationFinished(int result);
    void OnCancelClicked();
    void OnRestoreClicked();
    void OnTimerTimeout();
    void OnTestProgressChanged(int done, int total);
    void OnTestEnded();

private:
    void UpdateControls();

    WiringSelfTest* m_Test;
    QTimer* m_Timer;
    QPushButton* m_TestButton;
    QPushButton* m_CancelButton;
    QPushButton* m_RestoreButton;
    QProgressBar* m_Progress;
    QLabel* m_Status;
    QTableWidget* m_Table;
    QMessageBox* m_Confirmation = nullptr;
    bool m_Streaming = false;
};

#endif
