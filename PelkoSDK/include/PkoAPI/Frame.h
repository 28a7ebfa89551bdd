#ifndef PKOAPI_FRAME_H
#define PKOAPI_FRAME_H

#include <string>
#include <vector>

namespace ZMT {
namespace PkoAPI {

// One image of a camera as 8-bit grey, for live displays (Camera::GetLatestFrame).
// mono8 holds width * height bytes, row after row without padding; id counts
// the camera's delivered frames, so a display can tell a new frame from the
// one it has already shown. timestampNs is the camera's clock when the
// exposure started (0 where the camera does not say), exposureUs how long it
// exposed (0 where unknown), and trigger what started it: "Software", the
// name of the input line, or "" for a free-running frame or when unknown.
struct Frame {
    unsigned int width = 0;
    unsigned int height = 0;
    unsigned long long id = 0;
    std::vector<unsigned char> mono8;
    long long timestampNs = 0;
    double exposureUs = 0.0;
    std::string trigger;
};

}  // namespace PkoAPI
}  // namespace ZMT

#endif
