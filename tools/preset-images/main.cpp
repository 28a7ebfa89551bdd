// Writes the three preset pictures into the folder given as the argument
// (the repository's Images/). Run by hand when the pictures change; the
// normal build only compiles it.

#include "PresetImagePainter.h"

#include <QDir>
#include <QString>

#include <iostream>

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: " << argv[0] << " OUTPUT_FOLDER\n";
        return 2;
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    if (!folder.exists()) {
        std::cerr << "no such folder: " << argv[1] << "\n";
        return 1;
    }
    const PresetImagePainter::Preset presets[] = {PresetImagePainter::Preset::Edge, PresetImagePainter::Preset::Level,
                                                  PresetImagePainter::Preset::Bulk};
    for (PresetImagePainter::Preset preset : presets) {
        const QString path = folder.filePath(PresetImagePainter::FileName(preset));
        if (!PresetImagePainter::Paint(preset).save(path, "PNG")) {
            std::cerr << "could not write " << path.toLocal8Bit().constData() << "\n";
            return 1;
        }
        std::cout << path.toLocal8Bit().constData() << "\n";
    }
    return 0;
}
