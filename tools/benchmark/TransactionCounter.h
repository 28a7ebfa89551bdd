#ifndef TRANSACTIONCOUNTER_H
#define TRANSACTIONCOUNTER_H

#include "TransactionLog.h"

#include <QString>
#include <QStringList>

class FakeGvCamera;

// Counts the register transactions (GigE Vision read/write memory and
// register commands) a fake camera has handled, from the line it logs for
// each command before it acknowledges it. The camera must have been prepared
// with Prepare() before it was started.
class TransactionCounter {
public:
    // Makes the camera log every command it handles.
    static void Prepare(FakeGvCamera& camera);

    explicit TransactionCounter(const FakeGvCamera& camera);

    // Commands handled since the camera started.
    long long Count() const;
    // The write commands among them.
    long long Writes() const;
    // Every command handled since the camera started, with its address.
    TransactionLog Log() const;

    // Sends count read-register commands straight to the camera on
    // 127.0.0.1 and waits for each acknowledge, to check that Count() sees
    // exactly the transactions made. Returns the number acknowledged; error
    // says why when it is less than count.
    static int ReadDirectly(int count, QString& error);

private:
    const FakeGvCamera& m_Camera;
};

#endif  // TRANSACTIONCOUNTER_H
