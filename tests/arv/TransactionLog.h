#ifndef TRANSACTIONLOG_H
#define TRANSACTIONLOG_H

#include <QMap>
#include <QPair>
#include <QRegularExpression>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

#include <algorithm>

// The register transactions in the log of a fake GigE Vision camera started
// with ARV_DEBUG=device:2 (FakeGvCamera::SetEnvironment), which writes one
// line per read/write memory or register command before it answers it.
// Header-only, for the executables of this folder and the benchmark.
class TransactionLog {
public:
    struct Transaction {
        bool write = false;
        quint64 address = 0;
    };

    // The control channel privilege register, which Aravis's heartbeat reads
    // about once a second whatever the application does.
    static const quint64 kHeartbeatAddress = 0x0a00;

    explicit TransactionLog(const QString& log)
    {
        static const QRegularExpression line(QStringLiteral("\\] (Read|Write) (memory|register) command (\\d+)"));
        QRegularExpressionMatchIterator found = line.globalMatch(log);
        while (found.hasNext()) {
            const QRegularExpressionMatch match = found.next();
            Transaction transaction;
            transaction.write = match.captured(1) == QLatin1String("Write");
            transaction.address = match.captured(3).toULongLong();
            m_Transactions.append(transaction);
        }
    }

    int Count() const { return m_Transactions.size(); }
    // Transactions from index from on: those added since a log of the same
    // camera had from.
    TransactionLog Since(int from) const
    {
        TransactionLog later(QString{});
        later.m_Transactions = m_Transactions.mid(from);
        return later;
    }
    int Writes() const
    {
        int writes = 0;
        for (const Transaction& transaction : m_Transactions)
            writes += transaction.write ? 1 : 0;
        return writes;
    }
    int DistinctAddresses() const
    {
        QSet<quint64> addresses;
        for (const Transaction& transaction : m_Transactions)
            addresses.insert(transaction.address);
        return addresses.size();
    }
    // "address×count" of the most read addresses, busiest first.
    QString Busiest(int count) const
    {
        QMap<quint64, int> reads;
        for (const Transaction& transaction : m_Transactions)
            ++reads[transaction.address];
        QVector<QPair<int, quint64>> ranked;
        for (auto it = reads.cbegin(); it != reads.cend(); ++it)
            ranked.append(qMakePair(it.value(), it.key()));
        std::sort(ranked.begin(), ranked.end(),
                  [](const QPair<int, quint64>& a, const QPair<int, quint64>& b) { return a.first > b.first; });
        QStringList shown;
        for (int i = 0; i < ranked.size() && i < count; ++i)
            shown << QStringLiteral("0x%1×%2").arg(ranked[i].second, 0, 16).arg(ranked[i].first);
        return shown.join(QLatin1Char(' '));
    }
    // Without the heartbeat's reads.
    int CountBesidesHeartbeat() const
    {
        int count = 0;
        for (const Transaction& transaction : m_Transactions)
            count += transaction.address == kHeartbeatAddress ? 0 : 1;
        return count;
    }

private:
    QVector<Transaction> m_Transactions;
};

#endif  // TRANSACTIONLOG_H
