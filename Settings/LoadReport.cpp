#include "LoadReport.h"

QString EntryResult::OutcomeName(Outcome outcome)
{
    switch (outcome) {
        case Outcome::Applied:
            return QStringLiteral("applied");
        case Outcome::Adjusted:
            return QStringLiteral("adjusted");
        case Outcome::Refused:
            return QStringLiteral("refused");
        case Outcome::NotAvailable:
            return QStringLiteral("not available");
        case Outcome::Skipped:
            return QStringLiteral("skipped");
        case Outcome::NotWritten:
            break;
    }
    return QStringLiteral("not written");
}

int LoadReport::Count(EntryResult::Outcome outcome) const
{
    int count = 0;
    for (const EntryResult& result : results) {
        if (result.outcome == outcome)
            ++count;
    }
    return count;
}

bool LoadReport::AllApplied() const
{
    if (status != Status::Done || rolledBack)
        return false;
    for (const EntryResult& result : results) {
        if (result.outcome != EntryResult::Outcome::Applied && result.outcome != EntryResult::Outcome::Adjusted)
            return false;
    }
    return true;
}
