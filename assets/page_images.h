#pragma once
#include <cstddef>
struct ImageBytes { const unsigned char* data; std::size_t size; };
ImageBytes SideImage();
ImageBytes ErrorIcon();
ImageBytes QuestionIcon();
