#ifndef CAMERAPEER_H
#define CAMERAPEER_H

#include <QString>
#include <QStringList>
#include <QVector>

#include <arv.h>
#include <gio/gio.h>

// A second connection to the fake GigE Vision camera on 127.0.0.1, straight
// through Aravis and not through our SDK: what it reads is what the camera
// holds. Use it while the SDK's connection is closed: the fake camera ignores
// writes from anyone but the controlling connection, and taking control while
// another connection holds it costs seconds of retries. Opened per call and
// closed at once; the device is made directly, not through Aravis's global
// device list. Header-only, for the executables of this folder.
class CameraPeer {
public:
    // One value to read: feature at selectorEntry of selector (both empty
    // for a feature without selector).
    struct Probe {
        QString feature;
        QString selector;
        QString selectorEntry;
    };

    // The values over one connection, each as "Feature[entry]=value" (or
    // "Feature=value"); enumerations give their entry name, booleans
    // "true"/"false", integers decimal. The selection made for a value lives
    // in this connection only. A value that cannot be read shows as
    // "Feature[entry] failed: reason". Empty, with the reason in error, when
    // the camera cannot be opened.
    static QStringList Values(const QVector<Probe>& probes, QString& error)
    {
        error.clear();
        Device device(error);
        if (device.Get() == nullptr) {
            error = "cannot open 127.0.0.1: " + error;
            return QStringList();
        }
        ArvGc* genicam = arv_device_get_genicam(device.Get());
        QStringList values;
        for (const Probe& probe : probes) {
            QString value;
            QString failure;
            const QString key =
                probe.selectorEntry.isEmpty() ? probe.feature : probe.feature + "[" + probe.selectorEntry + "]";
            if (Read(genicam, probe.feature, probe.selector, probe.selectorEntry, value, failure))
                values << key + "=" + value;
            else
                values << key + " failed: " + failure;
        }
        return values;
    }

private:
    class Device {
    public:
        explicit Device(QString& error)
        {
            GInetAddress* loopback = g_inet_address_new_from_string("127.0.0.1");
            GError* failure = nullptr;
            m_Device = arv_gv_device_new(loopback, loopback, &failure);
            g_object_unref(loopback);
            if (failure != nullptr) {
                error = QString::fromUtf8(failure->message);
                g_error_free(failure);
            }
            if (m_Device != nullptr) {
                arv_device_set_range_check_policy(m_Device, ARV_RANGE_CHECK_POLICY_ENABLE);
                arv_device_set_access_check_policy(m_Device, ARV_ACCESS_CHECK_POLICY_ENABLE);
            }
        }
        ~Device()
        {
            if (m_Device != nullptr)
                g_object_unref(m_Device);
        }
        Device(const Device&) = delete;
        Device& operator=(const Device&) = delete;
        ArvDevice* Get() const { return m_Device; }

    private:
        ArvDevice* m_Device = nullptr;
    };

    // Takes the error of one Aravis call; true when there was one.
    static bool Failed(GError*& failure, const QString& what, QString& error)
    {
        if (failure == nullptr)
            return false;
        error = what + ": " + QString::fromUtf8(failure->message);
        g_error_free(failure);
        failure = nullptr;
        return true;
    }

    // Selects entry by writing its value to the selector's integer node
    // (named selector + "Value" in our descriptions): Aravis refuses entries
    // that are not available, and a test may need to read there anyway.
    static bool Select(ArvGc* genicam, const QString& selector, const QString& entry, QString& error)
    {
        ArvGcNode* node = arv_gc_get_node(genicam, selector.toLatin1().constData());
        ArvGcNode* index = arv_gc_get_node(genicam, (selector + "Value").toLatin1().constData());
        if (node == nullptr || !ARV_IS_GC_ENUMERATION(node) || index == nullptr || !ARV_IS_GC_INTEGER(index)) {
            error = "no selector " + selector;
            return false;
        }
        GError* failure = nullptr;
        for (const GSList* item = arv_gc_enumeration_get_entries(ARV_GC_ENUMERATION(node)); item != nullptr;
             item = item->next) {
            ArvGcEnumEntry* candidate = ARV_GC_ENUM_ENTRY(item->data);
            if (entry != QString::fromLatin1(arv_gc_feature_node_get_name(ARV_GC_FEATURE_NODE(candidate))))
                continue;
            const gint64 value = arv_gc_enum_entry_get_value(candidate, &failure);
            if (Failed(failure, selector + "=" + entry, error))
                return false;
            arv_gc_integer_set_value(ARV_GC_INTEGER(index), value, &failure);
            return !Failed(failure, selector + "=" + entry, error);
        }
        error = "no entry " + entry + " in " + selector;
        return false;
    }

    static bool Read(ArvGc* genicam, const QString& feature, const QString& selector, const QString& selectorEntry,
                     QString& value, QString& error)
    {
        if (!selector.isEmpty() && !Select(genicam, selector, selectorEntry, error))
            return false;
        ArvGcNode* node = arv_gc_get_node(genicam, feature.toLatin1().constData());
        if (node == nullptr) {
            error = "no feature " + feature;
            return false;
        }
        GError* failure = nullptr;
        if (ARV_IS_GC_ENUMERATION(node))
            value = QString::fromLatin1(arv_gc_enumeration_get_string_value(ARV_GC_ENUMERATION(node), &failure));
        else if (ARV_IS_GC_BOOLEAN(node))
            value = arv_gc_boolean_get_value(ARV_GC_BOOLEAN(node), &failure) ? "true" : "false";
        else if (ARV_IS_GC_INTEGER(node))
            value = QString::number(arv_gc_integer_get_value(ARV_GC_INTEGER(node), &failure));
        else
            error = feature + " is neither enumeration, boolean nor integer";
        if (Failed(failure, feature, error) || !error.isEmpty()) {
            value.clear();
            return false;
        }
        return true;
    }
};

#endif  // CAMERAPEER_H
