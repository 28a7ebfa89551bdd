#include "FeatureTableModel.h"

#include "ViewerFeatureObserver.h"
#include "ViewerLog.h"

#include <PkoAPI/PkoCommonTypes.h>
#include <PkoAPI/Sim/SimTypes.h>

#include <QBrush>
#include <QFont>
#include <QPalette>

#include <string>
#include <vector>

using ZMT::PkoAPI::Feature;
using ZMT::PkoAPI::PkoErrorName;
using ZMT::PkoAPI::PkoErrorSuccess;

namespace {

const char* const kWriterName = "viewer";

QString ErrorText(int code)
{
    return QStringLiteral("%1 (%2)").arg(QLatin1String(PkoErrorName(code))).arg(code);
}

// Reads one text of a feature with the SDK's two-step protocol; "" on failure.
template <class Getter>
QString ReadText(Getter getter)
{
    unsigned int length = 0;
    if (getter(nullptr, length) != PkoErrorSuccess) {
        return QString();
    }
    std::string buffer(length + 1, '\0');
    unsigned int size = length + 1;
    if (getter(&buffer[0], size) != PkoErrorSuccess) {
        return QString();
    }
    buffer.resize(size);
    return QString::fromLatin1(buffer.c_str());
}

QString ValueText(Feature& feature, int dataType, bool& boolValue)
{
    switch (dataType) {
        case ZMT::PkoAPI::PkoFeatureDataInt: {
            long long value = 0;
            return feature.GetValue(value) == PkoErrorSuccess ? QString::number(value) : QString();
        }
        case ZMT::PkoAPI::PkoFeatureDataFloat: {
            double value = 0.0;
            return feature.GetValue(value) == PkoErrorSuccess ? QString::number(value, 'g', 6) : QString();
        }
        case ZMT::PkoAPI::PkoFeatureDataEnum:
        case ZMT::PkoAPI::PkoFeatureDataString:
            return ReadText([&feature](char* text, unsigned int& length) { return feature.GetValue(text, length); });
        case ZMT::PkoAPI::PkoFeatureDataBool: {
            bool value = false;
            if (feature.GetValue(value) != PkoErrorSuccess) {
                return QString();
            }
            boolValue = value;
            return value ? QStringLiteral("true") : QStringLiteral("false");
        }
        case ZMT::PkoAPI::PkoFeatureDataCommand:
            return QStringLiteral("Execute");
        case ZMT::PkoAPI::PkoFeatureDataRaw:
            return QStringLiteral("(raw data)");
        default:
            return QString();
    }
}

QStringList AvailableEntries(Feature& feature)
{
    unsigned int count = 0;
    if (feature.GetValues(nullptr, count) != PkoErrorSuccess || count == 0) {
        return QStringList();
    }
    std::vector<const char*> entries(count, nullptr);
    if (feature.GetValues(entries.data(), count) != PkoErrorSuccess) {
        return QStringList();
    }
    QStringList available;
    for (unsigned int i = 0; i < count && i < entries.size(); ++i) {
        bool isAvailable = false;
        if (entries[i] != nullptr && feature.IsValueAvailable(entries[i], isAvailable) == PkoErrorSuccess &&
            isAvailable) {
            available.append(QString::fromLatin1(entries[i]));
        }
    }
    return available;
}

}  // namespace

FeatureTableModel::FeatureTableModel(ViewerLog& log, QObject* parent)
    : QAbstractTableModel(parent), m_Log(log), m_Observer(new ViewerFeatureObserver(this))
{}

FeatureTableModel::~FeatureTableModel()
{
    Unobserve();
    m_Observer->Detach();
}

void FeatureTableModel::SetFeatures(const FeatureList& features)
{
    beginResetModel();
    Unobserve();
    m_Features = features;
    m_Rows.clear();
    if (m_Features) {
        m_Rows.reserve(m_Features->size());
        for (const ZMT::PkoAPI::shared_ptr<Feature>& feature : *m_Features) {
            if (!feature) {
                continue;
            }
            Row row;
            row.feature = feature;
            row.name =
                ReadText([&feature](char* text, unsigned int& length) { return feature->GetName(text, length); });
            ZMT::PkoAPI::PkoFeatureDataType dataType = ZMT::PkoAPI::PkoFeatureDataUnknown;
            if (feature->GetDataType(dataType) == PkoErrorSuccess) {
                row.dataType = dataType;
            }
            Refresh(row);
            m_Rows.append(row);
        }
    }
    endResetModel();
    for (const Row& row : qAsConst(m_Rows)) {
        const int result = row.feature->RegisterObserver(m_Observer);
        if (result != PkoErrorSuccess) {
            m_Log.Problem(tr("Feature %1 will not update live: registering the observer failed with %2")
                              .arg(row.name, ErrorText(result)));
        }
    }
}

void FeatureTableModel::Unobserve()
{
    for (const Row& row : qAsConst(m_Rows)) {
        row.feature->UnregisterObserver(m_Observer);
    }
}

int FeatureTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_Rows.size();
}

int FeatureTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant FeatureTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= m_Rows.size()) {
        return QVariant();
    }
    const Row& row = m_Rows.at(index.row());
    switch (role) {
        case DataTypeRole:
            return row.dataType;
        case EntriesRole:
            return row.availableEntries;
        case Qt::DisplayRole:
        case Qt::EditRole:
            switch (index.column()) {
                case NameColumn:
                    return row.name;
                case TypeColumn:
                    return TypeName(row.dataType);
                case ValueColumn:
                    return row.value;
                case AccessColumn:
                    return row.writable ? tr("read/write") : tr("read-only");
                default:
                    return QVariant();
            }
        case Qt::CheckStateRole:
            if (index.column() == ValueColumn && row.dataType == ZMT::PkoAPI::PkoFeatureDataBool) {
                return row.boolValue ? Qt::Checked : Qt::Unchecked;
            }
            return QVariant();
        case Qt::ForegroundRole:
            if (!row.writable && index.column() == ValueColumn) {
                return QBrush(QPalette().color(QPalette::Disabled, QPalette::Text));
            }
            return QVariant();
        case Qt::ToolTipRole:
            if (index.column() == ValueColumn && row.dataType == ZMT::PkoAPI::PkoFeatureDataEnum) {
                return tr("Available now: ") + row.availableEntries.join(QStringLiteral(", "));
            }
            return QVariant();
        default:
            return QVariant();
    }
}

QVariant FeatureTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return QAbstractTableModel::headerData(section, orientation, role);
    }
    switch (section) {
        case NameColumn:
            return tr("Feature");
        case TypeColumn:
            return tr("Type");
        case ValueColumn:
            return tr("Value");
        case AccessColumn:
            return tr("Access");
        default:
            return QVariant();
    }
}

Qt::ItemFlags FeatureTableModel::flags(const QModelIndex& index) const
{
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    if (!index.isValid() || index.column() != ValueColumn || index.row() >= m_Rows.size()) {
        return flags;
    }
    const Row& row = m_Rows.at(index.row());
    if (!row.writable) {
        return flags;
    }
    switch (row.dataType) {
        case ZMT::PkoAPI::PkoFeatureDataInt:
        case ZMT::PkoAPI::PkoFeatureDataFloat:
        case ZMT::PkoAPI::PkoFeatureDataEnum:
        case ZMT::PkoAPI::PkoFeatureDataString:
            return flags | Qt::ItemIsEditable;
        case ZMT::PkoAPI::PkoFeatureDataBool:
            return flags | Qt::ItemIsUserCheckable;
        default:
            return flags;
    }
}

bool FeatureTableModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || index.column() != ValueColumn || index.row() >= m_Rows.size()) {
        return false;
    }
    Row& row = m_Rows[index.row()];
    const bool written = Write(row, value, role);
    // Show what the camera holds now, whether the write went through or not.
    Refresh(row);
    emit dataChanged(this->index(index.row(), 0), this->index(index.row(), ColumnCount - 1));
    return written;
}

bool FeatureTableModel::Write(Row& row, const QVariant& value, int role)
{
    ZMT::PkoAPI::Sim::WriterScope scope(kWriterName);
    Feature& feature = *row.feature;
    int result = PkoErrorSuccess;
    QString shown = value.toString();
    if (role == ExecuteRole) {
        shown = QStringLiteral("(execute)");
        result = feature.RunCommand();
    } else if (role == Qt::CheckStateRole && row.dataType == ZMT::PkoAPI::PkoFeatureDataBool) {
        const bool checked = value.toInt() == Qt::Checked;
        shown = checked ? QStringLiteral("true") : QStringLiteral("false");
        result = feature.SetValue(checked);
    } else if (role == Qt::EditRole) {
        const QString text = value.toString().trimmed();
        bool parsed = true;
        switch (row.dataType) {
            case ZMT::PkoAPI::PkoFeatureDataInt: {
                const long long number = text.toLongLong(&parsed);
                if (parsed) {
                    result = feature.SetValue(number);
                }
                break;
            }
            case ZMT::PkoAPI::PkoFeatureDataFloat: {
                const double number = text.toDouble(&parsed);
                if (parsed) {
                    result = feature.SetValue(number);
                }
                break;
            }
            case ZMT::PkoAPI::PkoFeatureDataEnum:
            case ZMT::PkoAPI::PkoFeatureDataString:
                result = feature.SetValue(text.toLatin1().constData());
                break;
            case ZMT::PkoAPI::PkoFeatureDataBool:
                parsed = text == QLatin1String("true") || text == QLatin1String("false");
                if (parsed) {
                    result = feature.SetValue(text == QLatin1String("true"));
                }
                break;
            default:
                m_Log.Problem(tr("Feature %1 of type %2 cannot be edited").arg(row.name, TypeName(row.dataType)));
                return false;
        }
        if (!parsed) {
            m_Log.Problem(tr("\"%1\" is no value for %2 (%3)").arg(text, row.name, TypeName(row.dataType)));
            return false;
        }
    } else {
        return false;
    }
    if (result != PkoErrorSuccess) {
        m_Log.Problem(tr("Could not set %1 to \"%2\": %3").arg(row.name, shown, ErrorText(result)));
        return false;
    }
    m_Log.Info(QStringLiteral("%1 = %2").arg(row.name, shown));
    return true;
}

int FeatureTableModel::RowOf(const QString& name) const
{
    for (int i = 0; i < m_Rows.size(); ++i) {
        if (m_Rows.at(i).name == name) {
            return i;
        }
    }
    return -1;
}

void FeatureTableModel::OnFeatureChanged(const Feature* feature)
{
    for (int i = 0; i < m_Rows.size(); ++i) {
        if (m_Rows.at(i).feature.get() == feature) {
            Refresh(m_Rows[i]);
            emit dataChanged(index(i, 0), index(i, ColumnCount - 1));
        }
    }
}

void FeatureTableModel::Refresh(Row& row)
{
    Feature& feature = *row.feature;
    row.value = ValueText(feature, row.dataType, row.boolValue);
    bool writable = false;
    row.writable = feature.IsWritable(writable) == PkoErrorSuccess && writable;
    if (row.dataType == ZMT::PkoAPI::PkoFeatureDataEnum) {
        row.availableEntries = AvailableEntries(feature);
    }
}

QString FeatureTableModel::TypeName(int dataType)
{
    switch (dataType) {
        case ZMT::PkoAPI::PkoFeatureDataInt:
            return QStringLiteral("Integer");
        case ZMT::PkoAPI::PkoFeatureDataFloat:
            return QStringLiteral("Float");
        case ZMT::PkoAPI::PkoFeatureDataEnum:
            return QStringLiteral("Enumeration");
        case ZMT::PkoAPI::PkoFeatureDataString:
            return QStringLiteral("String");
        case ZMT::PkoAPI::PkoFeatureDataBool:
            return QStringLiteral("Boolean");
        case ZMT::PkoAPI::PkoFeatureDataCommand:
            return QStringLiteral("Command");
        case ZMT::PkoAPI::PkoFeatureDataRaw:
            return QStringLiteral("Raw");
        default:
            return QStringLiteral("Unknown");
    }
}
