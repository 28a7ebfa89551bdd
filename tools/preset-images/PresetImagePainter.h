#ifndef PRESETIMAGEPAINTER_H
#define PRESETIMAGEPAINTER_H

#include <QImage>
#include <QString>

// Draws the pictures of the three trigger presets as timing sketches: the
// trigger signal on top, the camera's exposures below. Strokes are thick so
// that the sketch still reads when the picture shrinks to a 28-pixel icon.
class PresetImagePainter {
public:
    enum class Preset { Edge, Level, Bulk };

    // A 256 x 256 picture with a transparent background; cannot fail.
    static QImage Paint(Preset preset);
    // The file name the plug-in's resources expect for preset.
    static QString FileName(Preset preset);
};

#endif
