#include "support/png_file.h"

#include <png.h>

#include "support/failure.h"
#include "support/output_file.h"

namespace sorvo_tool {

void write_png(const std::string& path, const Pixels& pixels) {
    if (pixels.width > PNG_USER_WIDTH_MAX || pixels.height > PNG_USER_HEIGHT_MAX)
        throw Failure(Exit::cannot_write, path,
                      "would be " + std::to_string(pixels.width) + " x " +
                          std::to_string(pixels.height) + " pixels",
                      "limit " + std::to_string(PNG_USER_WIDTH_MAX),
                      "leave out --raw, which scales the picture");
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(pixels.width);
    image.height = static_cast<png_uint_32>(pixels.height);
    image.format = PNG_FORMAT_RGB;
    write_then_rename(path, [&](const std::string& temporary) {
        if (png_image_write_to_file(&image, temporary.c_str(), 0, pixels.data.data(), 0, nullptr) ==
            0)
            throw cannot_write(path, image.message);
    });
}

}  // namespace sorvo_tool
