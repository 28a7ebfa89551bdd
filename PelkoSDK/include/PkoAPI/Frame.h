#ifndef PKOAPI_FRAME_H
#define PKOAPI_FRAME_H

#include <vector>

namespace ZMT {
namespace PkoAPI {

// One image of a camera as 8-bit grey, for live displays (Camera::GetLatestFrame).
// mono8 holds width * height bytes, row after row without padding; id counts
// the camera's delivered frames, so a display can tell a new frame from the
// one it has already shown.
struct Frame {
    unsigned int width = 0;
    unsigned int height = 0;
    unsigned long long id = 0;
    std::vector<unsigned char> mono8;
};

}  // namespace PkoAPI
}  // namespace ZMT

#endif
