// Settings files in our JSON: whatever the bytes are, reading never crashes,
// never hangs and never leaks; a file that reads writes out as JSON that
// reads back to the same entries, with a line for each of them.

#include "SettingsJson.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), int(size));
    SettingsDocument document;
    QVector<SettingsProblem> problems;
    if (!SettingsJson::Read(bytes, QStringLiteral("fuzz.json"), document, problems)) {
        // A refused file names one problem and where it is.
        if (problems.size() != 1 || problems.first().line < 1)
            std::abort();
        return 0;
    }
    for (const SettingsProblem& problem : problems) {
        if (problem.line < 0)
            std::abort();
    }
    const QByteArray written = SettingsJson::Write(document);
    SettingsDocument again;
    QVector<SettingsProblem> againProblems;
    if (!SettingsJson::Read(written, QStringLiteral("again.json"), again, againProblems) || !againProblems.isEmpty() ||
        again.entries.size() != document.entries.size())
        std::abort();
    const QVector<int> lines = SettingsJson::FeatureLines(written);
    if (lines.size() != again.entries.size())
        std::abort();
    for (int i = 0; i < document.entries.size(); ++i) {
        if (again.entries.at(i).Key() != document.entries.at(i).Key() || again.entries.at(i).line != lines.at(i))
            std::abort();
    }
    return 0;
}
