#ifndef CAMERALISTDIALOG_H
#define CAMERALISTDIALOG_H

#include <QDialog>
#include <QString>
#include <QStringList>

class QListWidget;

// Lets the user pick one of the cameras the SDK reaches.
class CameraListDialog : public QDialog {
    Q_OBJECT

public:
    // Lists the SDK's cameras with currentId preselected.
    explicit CameraListDialog(const QString& currentId, QWidget* parent = nullptr);

    // The ID of the selected camera, "" when none is selected.
    QString SelectedId() const;

    // One line per camera, "ID<TAB>name", in the SDK's order (simulated
    // models first). Empty when the SDK lists no camera.
    static QStringList CameraLines();
    // The IDs alone, in the same order.
    static QStringList CameraIds();

private:
    QListWidget* m_List;
};

#endif
