#ifndef PKOAPI_SRC_ARV_ARVFRAMECONVERTER_H
#define PKOAPI_SRC_ARV_ARVFRAMECONVERTER_H

#include <PkoAPI/Frame.h>

#include <arv.h>

namespace ZMT::PkoAPI::Arv {

// Turns a received image buffer into the 8-bit grey of Frame, cheaply:
// Mono8 and the other 8-bit formats (Bayer raw included) are copied, wider
// grey formats keep their high byte, packed RGB/BGR is averaged.
class ArvFrameConverter {
public:
    // False, with frame unchanged, when the buffer holds no usable image
    // (not a successful image buffer, unknown pixel layout, too short).
    // Throws std::bad_alloc when the pixels cannot be stored.
    static bool ToMono8(ArvBuffer* buffer, Frame& frame);
};

}  // namespace ZMT::PkoAPI::Arv

#endif
