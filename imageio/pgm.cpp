#include <cstdio>
#include <string>

#include "imageio/imageio.h"
#include "imageio/imageio_p.h"

void kfWritePgm(const kcPelBuffer_const<unsigned char>& image, const std::string& path) {
  kfWriteImageFile_(path, [&](std::FILE* f) {
    if (std::fprintf(f, "P5\n%ld %ld\n255\n", image.width(), image.height()) < 0) return false;
    const auto width = static_cast<std::size_t>(image.width());
    for (long y = 0; y < image.height(); ++y)
      if (std::fwrite(image.row(y), 1, width, f) != width) return false;
    return true;
  });
}
