#include "PngWriter.h"

#include "Display.h"

#include <png.h>

namespace Qor::Tivor::Tool {

std::string MakePng(const Canvas& canvas) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(canvas.GetWidth());
    image.height = static_cast<png_uint_32>(canvas.GetHeight());
    image.format = PNG_FORMAT_RGB;
    const unsigned char* const pixels = canvas.GetBytes().data();
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::string bytes(size, '\0');
    if (png_image_write_to_memory(&image, bytes.data(), &size, 0, pixels, 0, nullptr) == 0)
        Fail(std::string("The picture could not be made: ") + image.message);
    bytes.resize(size);
    return bytes;
}

} // namespace Qor::Tivor::Tool
