#ifndef WIRINGSELFTEST_H
#define WIRINGSELFTEST_H

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVector>

class FeatureManager;

// Finds which output line is cabled to which input line: each output in turn
// is switched to a user output (with its inversion off) and toggled while
// every input is watched; then its source, inversion and user-output value
// are written back and read back. The test runs in short steps (Step) so
// that a timer can drive it without freezing the GUI; Cancel and any failed
// write restore the output under test at once. Every write goes through
// FeatureManager with selector round trips that put the selectors back.
class WiringSelfTest : public QObject {
    Q_OBJECT

public:
    enum class State { Idle, Running, Finished, Cancelled, Failed };

    // One output's finding; inputs empty: nothing follows it.
    struct Finding {
        QString output;
        bool tested = false;  // false: the output has no user output to drive it
        QStringList inputs;
        QVector<bool> inverted;  // per input: it follows the opposite level
    };

    WiringSelfTest(FeatureManager* manager, QObject* parent = nullptr);
    ~WiringSelfTest() override;

    // The host's word whether the camera streams; a running test is
    // cancelled when it starts.
    void SetAcquiring(bool acquiring);
    // False, with ErrorText, while the camera acquires, without output lines,
    // or while a test runs.
    bool Start();
    // Does the next short piece of work; false once the test has ended.
    bool Step();
    // Restores the output under test and ends the test.
    void Cancel();
    // Writes back what a failed restore left; true when nothing is left.
    bool RetryRestore();

    State CurrentState() const { return m_State; }
    bool IsRunning() const { return m_State == State::Running; }
    QString ErrorText() const { return m_Error; }
    int StepsDone() const { return m_StepsDone; }
    int StepsTotal() const;
    const QVector<Finding>& Findings() const { return m_Findings; }
    // "Line1 → Line0", "Line1 → Line0 (inverted)", "Line2 → (nothing)".
    QStringList ResultTexts() const;
    // "LineSource of Line1: ExposureActive" for each value not written back.
    QStringList Unrestored() const;

    // Writes of the user output per output: low, then this many changes.
    static constexpr int kToggles = 4;

signals:
    void Progress(int done, int total);
    void Ended();

private:
    // What an output had before the test touched it.
    struct Saved {
        QString output;
        QString source;
        bool inverted = false;
        QString userSource;  // the user output the test drives
        bool userValue = false;
        bool sourceDone = false, invertedDone = false, userValueDone = false;  // restored
    };

    bool IsCameraAcquiring() const;
    bool PrepareOutput();
    bool SampleInputs();
    bool RestoreSaved();
    void Finish(State state, const QString& error);
    QString ChooseUserSource(const QString& output, const QStringList& candidates) const;

    FeatureManager* m_FeatureManager;
    State m_State = State::Idle;
    QString m_Error;
    bool m_Acquiring = false;
    QStringList m_Outputs;
    QStringList m_Inputs;
    int m_OutputIndex = 0;
    int m_Phase = 0;  // 0: prepare; 1..kToggles + 1: sample, then write the next value or restore
    int m_StepsDone = 0;
    bool m_HaveSaved = false;
    Saved m_Saved;
    QVector<bool> m_Written;                // the user output's value at each sample
    QVector<QVector<bool>> m_InputSamples;  // per input, its level at each sample
    QVector<Finding> m_Findings;
};

#endif
