#ifndef FEATURETABLEMODEL_H
#define FEATURETABLEMODEL_H

#include <PkoAPI/Feature.h>

#include <QAbstractTableModel>
#include <QSharedPointer>
#include <QStringList>
#include <QVector>

class ViewerFeatureObserver;
class ViewerLog;

// Every feature of the open camera with its type, current value and access,
// kept live through an SDK observer on each feature. Edits are written to the
// camera under the journal writer name "viewer".
class FeatureTableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    typedef QSharedPointer<QVector<ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature>>> FeatureList;

    enum Column { NameColumn, TypeColumn, ValueColumn, AccessColumn, ColumnCount };
    enum Role {
        DataTypeRole = Qt::UserRole + 1,  // PkoFeatureDataType as int
        EntriesRole,                      // QStringList of the entries available now (enumerations)
        ExecuteRole,                      // setData with this role runs a command feature
    };

    // log receives one problem line per failed write or command.
    explicit FeatureTableModel(ViewerLog& log, QObject* parent = nullptr);
    // Unregisters the observer from every feature.
    ~FeatureTableModel() override;

    // Shows features (may be null: empty table) and observes each of them.
    // A feature that refuses the observer is still listed but not live; the
    // refusal is logged.
    void SetFeatures(const FeatureList& features);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    // Writes the value (EditRole: text parsed by the feature's type;
    // CheckStateRole: booleans; ExecuteRole: runs a command). Returns false,
    // logs the SDK's error and leaves the row showing the camera's value when
    // the text does not parse or the camera refuses.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    // Row of the first feature with that exact name, -1 when none.
    int RowOf(const QString& name) const;
    // Re-reads the row of feature (called in the GUI thread for every SDK
    // notification). Unknown pointers are ignored.
    void OnFeatureChanged(const ZMT::PkoAPI::Feature* feature);

    // Type name as shown in the table ("Integer", "Enumeration", ...).
    static QString TypeName(int dataType);

private:
    struct Row {
        ZMT::PkoAPI::shared_ptr<ZMT::PkoAPI::Feature> feature;
        QString name;
        int dataType = 0;
        QString value;
        bool boolValue = false;
        bool writable = false;
        QStringList availableEntries;
    };

    void Refresh(Row& row);
    void Unobserve();
    bool Write(Row& row, const QVariant& value, int role);

    ViewerLog& m_Log;
    FeatureList m_Features;
    QVector<Row> m_Rows;
    ZMT::PkoAPI::shared_ptr<ViewerFeatureObserver> m_Observer;
};

#endif
