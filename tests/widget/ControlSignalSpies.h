#ifndef CONTROLSIGNALSPIES_H
#define CONTROLSIGNALSPIES_H

#include <QCheckBox>
#include <QComboBox>
#include <QSignalSpy>
#include <QSpinBox>
#include <QWidget>

#include <memory>
#include <vector>

// Spies on the signals through which the controls of a tab report a change
// by the user: currentIndexChanged of every combo box, stateChanged of every
// check box, valueChanged of every spin box existing at construction.
// Controls deleted later keep the count they had.
class ControlSignalSpies {
public:
    // Cannot fail; a tab without controls gives no spies.
    explicit ControlSignalSpies(QWidget* tab)
    {
        for (QWidget* control : tab->findChildren<QWidget*>()) {
            const char* signal = nullptr;
            if (qobject_cast<QComboBox*>(control) != nullptr)
                signal = SIGNAL(currentIndexChanged(int));
            else if (qobject_cast<QCheckBox*>(control) != nullptr)
                signal = SIGNAL(stateChanged(int));
            else if (qobject_cast<QSpinBox*>(control) != nullptr)
                signal = SIGNAL(valueChanged(int));
            if (signal != nullptr)
                m_Spies.emplace_back(new QSignalSpy(control, signal));
        }
    }

    // Emissions seen on all controls together since construction.
    int Emitted() const
    {
        int emitted = 0;
        for (const std::unique_ptr<QSignalSpy>& spy : m_Spies)
            emitted += spy->count();
        return emitted;
    }

private:
    std::vector<std::unique_ptr<QSignalSpy>> m_Spies;
};

#endif
