// GenICam persistence text: whatever the bytes are, reading never crashes,
// never hangs and never leaks; a text that reads writes out as text that
// reads back to the same entries and values.

#include "GenicamText.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), int(size));
    SettingsDocument document;
    QVector<SettingsProblem> problems;
    if (!GenicamText::Read(bytes, QStringLiteral("fuzz.txt"), document, problems)) {
        if (problems.size() != 1 || problems.first().line < 1)
            std::abort();
        return 0;
    }
    const QByteArray written = GenicamText::Write(document);
    SettingsDocument again;
    QVector<SettingsProblem> againProblems;
    if (!GenicamText::Read(written, QStringLiteral("again.txt"), again, againProblems) ||
        again.entries.size() != document.entries.size())
        std::abort();
    for (int i = 0; i < document.entries.size(); ++i) {
        const SettingsEntry& before = document.entries.at(i);
        const SettingsEntry& after = again.entries.at(i);
        if (after.Key() != before.Key() || after.value != before.value)
            std::abort();
    }
    return 0;
}
