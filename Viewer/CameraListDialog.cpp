#include "CameraListDialog.h"

#include <PkoAPI/PkoAPI.h>

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>

#include <string>
#include <vector>

namespace {

struct CameraEntry {
    QString id;
    QString name;
};

std::vector<CameraEntry> Cameras()
{
    std::vector<ZMT::PkoAPI::CameraPtr> cameras;
    std::vector<CameraEntry> entries;
    if (ZMT::PkoAPI::PkoSystem::GetInstance().GetCameras(cameras) != ZMT::PkoAPI::PkoErrorSuccess) {
        return entries;
    }
    for (const ZMT::PkoAPI::CameraPtr& camera : cameras) {
        std::string id;
        std::string name;
        if (!camera || camera->GetID(id) != ZMT::PkoAPI::PkoErrorSuccess) {
            continue;
        }
        camera->GetName(name);
        entries.push_back({QString::fromStdString(id), QString::fromStdString(name)});
    }
    return entries;
}

}  // namespace

CameraListDialog::CameraListDialog(const QString& currentId, QWidget* parent)
    : QDialog(parent), m_List(new QListWidget(this))
{
    setObjectName(QStringLiteral("cameraListDialog"));
    setWindowTitle(tr("Open Camera"));
    m_List->setObjectName(QStringLiteral("cameraList"));
    for (const CameraEntry& entry : Cameras()) {
        QListWidgetItem* item = new QListWidgetItem(QStringLiteral("%1  \u2014  %2").arg(entry.id, entry.name), m_List);
        item->setData(Qt::UserRole, entry.id);
        if (entry.id == currentId) {
            m_List->setCurrentItem(item);
        }
    }
    if (m_List->currentItem() == nullptr && m_List->count() > 0) {
        m_List->setCurrentRow(0);
    }

    QDialogButtonBox* buttons = new QDialogButtonBox(QDialogButtonBox::Open | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_List, &QListWidget::itemDoubleClicked, this, &QDialog::accept);

    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("Cameras the SDK can reach:"), this));
    layout->addWidget(m_List);
    layout->addWidget(buttons);
    resize(480, 300);
}

QString CameraListDialog::SelectedId() const
{
    const QListWidgetItem* item = m_List->currentItem();
    return item != nullptr ? item->data(Qt::UserRole).toString() : QString();
}

QStringList CameraListDialog::CameraLines()
{
    QStringList lines;
    for (const CameraEntry& entry : Cameras()) {
        lines.append(entry.id + QLatin1Char('\t') + entry.name);
    }
    return lines;
}

QStringList CameraListDialog::CameraIds()
{
    QStringList ids;
    for (const CameraEntry& entry : Cameras()) {
        ids.append(entry.id);
    }
    return ids;
}
