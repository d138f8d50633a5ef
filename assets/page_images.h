// assets: the program's own images (the side image of the wizard pages and the two
// message-box icons), drawn by assets/make_images.py at build time and compiled in as
// bytes. The bytes are constant and live as long as the program. Read-only; any thread.
#pragma once

#include <cstddef>

struct ImageBytes {
    const unsigned char* data;
    std::size_t size;
};

ImageBytes SideImage();     // Windows bitmap, 158 x 286, 8 bits per pixel with a palette
ImageBytes ErrorIcon();     // PNG, 125 x 125 RGBA, for error (critical) message boxes
ImageBytes QuestionIcon();  // PNG, 256 x 256 RGBA, for the Yes/No question box
