#include "ArvFrameConverter.h"

#include <cstddef>
#include <vector>

namespace ZMT::PkoAPI::Arv {

bool ArvFrameConverter::ToMono8(ArvBuffer* buffer, Frame& frame)
{
    if (buffer == nullptr || arv_buffer_get_status(buffer) != ARV_BUFFER_STATUS_SUCCESS)
        return false;
    const ArvBufferPayloadType payload = arv_buffer_get_payload_type(buffer);
    if (payload != ARV_BUFFER_PAYLOAD_TYPE_IMAGE && payload != ARV_BUFFER_PAYLOAD_TYPE_EXTENDED_CHUNK_DATA &&
        payload != ARV_BUFFER_PAYLOAD_TYPE_CHUNK_DATA)
        return false;
    const gint width = arv_buffer_get_image_width(buffer);
    const gint height = arv_buffer_get_image_height(buffer);
    const ArvPixelFormat format = arv_buffer_get_image_pixel_format(buffer);
    size_t size = 0;
    const auto* data = static_cast<const unsigned char*>(arv_buffer_get_image_data(buffer, &size));
    if (data == nullptr || width <= 0 || height <= 0)
        return false;

    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const unsigned int bits = ARV_PIXEL_FORMAT_BIT_PER_PIXEL(format);
    const bool packedColour = format == ARV_PIXEL_FORMAT_RGB_8_PACKED || format == ARV_PIXEL_FORMAT_BGR_8_PACKED;
    std::vector<unsigned char> grey;
    if (bits == 8) {
        if (size < pixels)
            return false;
        grey.assign(data, data + pixels);
    } else if (bits == 16 && !packedColour) {
        // Little-endian 16-bit grey (Mono10/12/16 unpacked): keep the high byte
        // of the significant bits, which for Mono16 is the second byte.
        if (size < pixels * 2)
            return false;
        grey.resize(pixels);
        for (std::size_t i = 0; i < pixels; ++i)
            grey[i] = data[2 * i + 1];
    } else if (packedColour) {
        if (size < pixels * 3)
            return false;
        grey.resize(pixels);
        for (std::size_t i = 0; i < pixels; ++i)
            grey[i] = static_cast<unsigned char>((data[3 * i] + data[3 * i + 1] + data[3 * i + 2]) / 3);
    } else {
        return false;
    }
    frame.width = static_cast<unsigned int>(width);
    frame.height = static_cast<unsigned int>(height);
    frame.mono8.swap(grey);
    return true;
}

}  // namespace ZMT::PkoAPI::Arv
