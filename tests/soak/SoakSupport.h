#ifndef SOAKSUPPORT_H
#define SOAKSUPPORT_H

// Shared by the soak programs: the process's resident size and the feature
// list a host hands to a tab. Header-only.

#include <PkoAPI/PkoAPI.h>

#include <QByteArray>
#include <QFile>
#include <QSharedPointer>
#include <QVector>

#include <vector>

namespace SoakSupport {

// Resident set size in KiB, from /proc; -1 when it cannot be read.
inline long ResidentKiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toLong();
    }
    return -1;
}

inline QSharedPointer<QVector<ZMT::PkoAPI::FeaturePtr>> FeaturesOf(const ZMT::PkoAPI::CameraPtr& camera)
{
    std::vector<ZMT::PkoAPI::FeaturePtr> features;
    camera->GetFeatures(features);
    return QSharedPointer<QVector<ZMT::PkoAPI::FeaturePtr>>(
        new QVector<ZMT::PkoAPI::FeaturePtr>(features.begin(), features.end()));
}

}  // namespace SoakSupport

#endif
