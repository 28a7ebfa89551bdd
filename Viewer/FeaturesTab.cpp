#include "FeaturesTab.h"

#include "FeatureValueDelegate.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QSortFilterProxyModel>
#include <QTableView>
#include <QVBoxLayout>

FeaturesTab::FeaturesTab(ViewerLog& log, QWidget* parent)
    : QWidget(parent),
      m_Model(new FeatureTableModel(log, this)),
      m_Proxy(new QSortFilterProxyModel(this)),
      m_Filter(new QLineEdit(this)),
      m_View(new QTableView(this))
{
    setObjectName(QStringLiteral("featuresTab"));
    m_Proxy->setSourceModel(m_Model);
    m_Proxy->setFilterKeyColumn(FeatureTableModel::NameColumn);
    m_Proxy->setFilterCaseSensitivity(Qt::CaseInsensitive);

    m_Filter->setObjectName(QStringLiteral("featureFilter"));
    m_Filter->setPlaceholderText(tr("Filter by feature name"));
    m_Filter->setClearButtonEnabled(true);
    connect(m_Filter, &QLineEdit::textChanged, this, &FeaturesTab::OnFilterChanged);

    m_View->setObjectName(QStringLiteral("featureTable"));
    m_View->setModel(m_Proxy);
    m_View->setItemDelegateForColumn(FeatureTableModel::ValueColumn, new FeatureValueDelegate(m_View));
    m_View->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_View->setSelectionMode(QAbstractItemView::SingleSelection);
    m_View->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::SelectedClicked |
                            QAbstractItemView::EditKeyPressed | QAbstractItemView::AnyKeyPressed);
    m_View->setAlternatingRowColors(true);
    m_View->verticalHeader()->setVisible(false);
    m_View->verticalHeader()->setDefaultSectionSize(m_View->fontMetrics().height() + 10);
    QHeaderView* header = m_View->horizontalHeader();
    header->setSectionResizeMode(FeatureTableModel::NameColumn, QHeaderView::ResizeToContents);
    header->setSectionResizeMode(FeatureTableModel::TypeColumn, QHeaderView::ResizeToContents);
    header->setSectionResizeMode(FeatureTableModel::ValueColumn, QHeaderView::Stretch);
    header->setSectionResizeMode(FeatureTableModel::AccessColumn, QHeaderView::ResizeToContents);

    QVBoxLayout* layout = new QVBoxLayout(this);
    layout->addWidget(m_Filter);
    layout->addWidget(m_View);
}

void FeaturesTab::SetFeatures(const FeatureTableModel::FeatureList& features)
{
    m_Model->SetFeatures(features);
}

void FeaturesTab::OnFilterChanged(const QString& text)
{
    m_Proxy->setFilterFixedString(text);
}
